#include "Model/SteppedFiles.h"

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
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, patience, [&] {
        const auto found = calls.find(worker);
        return found != calls.end() && !found->second.going && found->second.text == call;
    });
}

std::optional<std::thread::id> SteppedFiles::waitForNewWorker(const std::vector<std::thread::id>& known,
                                                              const std::string& call) const
{
    std::unique_lock lock(mutex);
    std::optional<std::thread::id> worker;
    changed.wait_for(lock, patience, [&] {
        for (const auto& [id, inHand] : calls) {
            if (!inHand.going && inHand.text == call && std::find(known.begin(), known.end(), id) == known.end())
                worker = id;
        }
        return worker.has_value();
    });
    return worker;
}

void SteppedFiles::resume(std::thread::id worker, Going going)
{
    const std::lock_guard lock(mutex);
    calls.at(worker).going = going;
    changed.notify_all();
}

std::size_t SteppedFiles::callCount() const
{
    const std::lock_guard lock(mutex);
    return calls.size();
}

void SteppedFiles::waitForTurn(const std::string& text, const Location& failing, const std::stop_token& stop) const
{
    std::unique_lock lock(mutex);
    const std::thread::id self = std::this_thread::get_id();
    calls[self] = {text, std::nullopt};
    changed.notify_all();
    changed.wait(lock, stop, [&] { return calls[self].going.has_value(); });
    const std::optional<Going> going = calls[self].going;
    calls.erase(self);
    changed.notify_all();
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

void SteppedFiles::copyItem(const Location& source, const Location& target, const std::stop_token& stop) const
{
    waitForTurn("copy " + source.path() + " -> " + target.path(), target, stop);
    MemoryFileManager::copyItem(source, target, stop);
}

} // namespace reelkeep
