#include "Model/SteppedFiles.h"

#include "Files/FileError.h"
#include "Files/Stopped.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <new>
#include <stdexcept>

namespace reelkeep {

namespace {

constexpr std::chrono::seconds patience{30};

} // namespace

bool SteppedFiles::waitForCall(std::thread::id worker, const std::string& call) const
{
    std::unique_lock lock(steps->mutex);
    return steps->changed.wait_for(lock, patience, [&] {
        const auto found = steps->calls.find(worker);
        return found != steps->calls.end() && !found->second.going && found->second.text == call;
    });
}

std::optional<std::thread::id> SteppedFiles::waitForNewWorker(const std::vector<std::thread::id>& known,
                                                              const std::string& call) const
{
    std::unique_lock lock(steps->mutex);
    std::optional<std::thread::id> worker;
    steps->changed.wait_for(lock, patience, [&] {
        for (const auto& [id, inHand] : steps->calls) {
            if (!inHand.going && inHand.text == call && std::find(known.begin(), known.end(), id) == known.end())
                worker = id;
        }
        return worker.has_value();
    });
    return worker;
}

void SteppedFiles::resume(std::thread::id worker, Going going)
{
    const std::lock_guard lock(steps->mutex);
    steps->calls.at(worker).going = going;
    steps->changed.notify_all();
}

std::size_t SteppedFiles::callCount() const
{
    const std::lock_guard lock(steps->mutex);
    return steps->calls.size();
}

void SteppedFiles::waitForTurn(const std::string& text, const Location& failing, const std::stop_token& stop) const
{
    std::unique_lock lock(steps->mutex);
    const std::thread::id self = std::this_thread::get_id();
    steps->calls[self] = {text, std::nullopt};
    steps->changed.notify_all();
    steps->changed.wait(lock, stop, [&] { return steps->calls[self].going.has_value(); });
    const std::optional<Going> going = steps->calls[self].going;
    steps->calls.erase(self);
    steps->changed.notify_all();
    if (!going)
        throw Stopped();
    switch (*going) {
    case Going::well:
        return;
    case Going::intoDiskError:
        throw FileError(failing.path(), EIO, diskReason);
    case Going::intoOtherError:
        throw std::runtime_error(otherText);
    case Going::outOfMemory:
        throw std::bad_alloc();
    }
}

void SteppedFiles::regularFiles(const Location& root, const NameFilter& wanted, const FoundFile& found,
                                const std::stop_token& stop) const
{
    waitForTurn("walk " + root.path(), root, stop);
    MemoryFileManager::regularFiles(root, wanted, found, stop);
}

void SteppedFiles::copyItem(const Location& source, const Location& target, const std::stop_token& stop)
{
    waitForTurn("copy " + source.path() + " -> " + target.path(), target, stop);
    MemoryFileManager::copyItem(source, target, stop);
}

} // namespace reelkeep
