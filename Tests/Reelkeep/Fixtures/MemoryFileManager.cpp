#include "Fixtures/MemoryFileManager.h"

#include "Files/FileError.h"
#include "Files/Stopped.h"

#include <cerrno>
#include <new>
#include <stdexcept>
#include <utility>

namespace reelkeep {

namespace {

bool isBelow(const std::string& path, const std::string& root)
{
    return path.compare(0, root.size() + 1, root + "/") == 0;
}

} // namespace

void MemoryFileManager::add(const std::string& path, std::int64_t size)
{
    const std::lock_guard lock(disk->mutex);
    disk->sizes[path] = size;
}

void MemoryFileManager::remove(const std::string& path)
{
    const std::lock_guard lock(disk->mutex);
    disk->sizes.erase(path);
}

bool MemoryFileManager::has(const std::string& path) const
{
    const std::lock_guard lock(disk->mutex);
    return disk->sizes.count(path) != 0;
}

void MemoryFileManager::failBelow(const std::string& path, const std::string& text)
{
    const std::lock_guard lock(disk->mutex);
    disk->broken[path] = text;
}

void MemoryFileManager::exhaustMemory()
{
    const std::lock_guard lock(disk->mutex);
    disk->isMemoryExhausted = true;
}

void MemoryFileManager::close()
{
    const std::lock_guard lock(disk->mutex);
    disk->gate = Gate::closed;
}

void MemoryFileManager::hang()
{
    const std::lock_guard lock(disk->mutex);
    disk->gate = Gate::hanging;
}

void MemoryFileManager::open()
{
    const std::lock_guard lock(disk->mutex);
    disk->gate = Gate::open;
    disk->gateMoved.notify_all();
}

int MemoryFileManager::waitingCount() const
{
    const std::lock_guard lock(disk->mutex);
    return disk->waiting;
}

int MemoryFileManager::stoppedCount() const
{
    const std::lock_guard lock(disk->mutex);
    return disk->stopped;
}

std::vector<std::string> MemoryFileManager::walkedRoots() const
{
    const std::lock_guard lock(disk->mutex);
    return disk->walked;
}

void MemoryFileManager::regularFiles(const Location& root, const NameFilter& wanted, const FoundFile& found,
                                     const std::stop_token& stop) const
{
    std::unique_lock lock(disk->mutex);
    disk->walked.push_back(root.path());
    passGate(lock, stop);
    failIfBroken(root.path());
    for (const auto& file : disk->sizes) {
        const Location url(file.first);
        if (isBelow(file.first, root.path()) && wanted(url.lastPathComponent()))
            found({.url = url, .size = file.second, .contentModificationDate = std::nullopt});
    }
}

void MemoryFileManager::createDirectory(const Location& folder)
{
    const std::lock_guard lock(disk->mutex);
    failIfBroken(folder.path());
}

bool MemoryFileManager::fileExists(const Location& place) const
{
    const std::lock_guard lock(disk->mutex);
    return disk->sizes.count(place.path()) != 0;
}

std::unique_ptr<CopyRun> MemoryFileManager::beginCopying(const std::stop_token& stop)
{
    class Run : public CopyRun {
    public:
        Run(MemoryFileManager& fileManager, std::stop_token stopToken) : files(fileManager), stop(std::move(stopToken))
        {
        }
        void completeCopiesTo(const Location&) override {}
        void copyItem(const Location& source, const Location& target) override { files.copyItem(source, target, stop); }
        void readAhead(const Location&) override {}
        void finish() override {}

    private:
        MemoryFileManager& files;
        std::stop_token stop;
    };
    return std::make_unique<Run>(*this, stop);
}

void MemoryFileManager::copyItem(const Location& source, const Location& target, const std::stop_token& stop)
{
    std::unique_lock lock(disk->mutex);
    passGate(lock, stop);
    failIfBroken(target.path());
    const auto found = disk->sizes.find(source.path());
    if (found == disk->sizes.end())
        throw FileError(source.path(), ENOENT);
    disk->sizes[target.path()] = found->second;
}

void MemoryFileManager::passGate(std::unique_lock<std::mutex>& lock, const std::stop_token& stop) const
{
    ++disk->waiting;
    const auto isOpen = [this] { return disk->gate == Gate::open; };
    const bool passed = disk->gate == Gate::hanging ? (disk->gateMoved.wait(lock, isOpen), true)
                                                    : disk->gateMoved.wait(lock, stop, isOpen);
    --disk->waiting;
    if (passed)
        return;
    ++disk->stopped;
    throw Stopped();
}

void MemoryFileManager::failIfBroken(const std::string& path) const
{
    if (disk->isMemoryExhausted)
        throw std::bad_alloc();
    for (const auto& place : disk->broken) {
        if (path == place.first || isBelow(path, place.first))
            throw FileError(path, EIO, place.second);
    }
}

} // namespace reelkeep
