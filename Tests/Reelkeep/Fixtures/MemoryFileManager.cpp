#include "Fixtures/MemoryFileManager.h"

#include <cerrno>
#include <stdexcept>

namespace reelkeep {

namespace {

bool isBelow(const std::string& path, const std::string& root)
{
    return path.compare(0, root.size() + 1, root + "/") == 0;
}

} // namespace

void MemoryFileManager::add(const std::string& path, std::int64_t size)
{
    const std::lock_guard lock(mutex);
    sizes[path] = size;
}

void MemoryFileManager::remove(const std::string& path)
{
    const std::lock_guard lock(mutex);
    sizes.erase(path);
}

bool MemoryFileManager::has(const std::string& path) const
{
    const std::lock_guard lock(mutex);
    return sizes.count(path) != 0;
}

void MemoryFileManager::failBelow(const std::string& path, const std::string& text)
{
    const std::lock_guard lock(mutex);
    broken[path] = text;
}

void MemoryFileManager::close()
{
    const std::lock_guard lock(mutex);
    gate = Gate::closed;
}

void MemoryFileManager::hang()
{
    const std::lock_guard lock(mutex);
    gate = Gate::hanging;
}

void MemoryFileManager::open()
{
    const std::lock_guard lock(mutex);
    gate = Gate::open;
    gateMoved.notify_all();
}

int MemoryFileManager::waitingCount() const
{
    const std::lock_guard lock(mutex);
    return waiting;
}

int MemoryFileManager::stoppedCount() const
{
    const std::lock_guard lock(mutex);
    return stopped;
}

std::vector<std::string> MemoryFileManager::walkedRoots() const
{
    const std::lock_guard lock(mutex);
    return walked;
}

void MemoryFileManager::regularFiles(const Location& root, const NameFilter& wanted, const FoundFile& found,
                                     const std::stop_token& stop) const
{
    std::unique_lock lock(mutex);
    walked.push_back(root.path());
    passGate(lock, stop);
    failIfBroken(root.path());
    for (const auto& file : sizes) {
        const Location url(file.first);
        if (isBelow(file.first, root.path()) && wanted(url.lastPathComponent()))
            found({.url = url, .size = file.second, .contentModificationDate = std::nullopt});
    }
}

void MemoryFileManager::createDirectory(const Location& folder) const
{
    const std::lock_guard lock(mutex);
    failIfBroken(folder.path());
}

bool MemoryFileManager::fileExists(const Location& place) const
{
    const std::lock_guard lock(mutex);
    return sizes.count(place.path()) != 0;
}

void MemoryFileManager::copyItem(const Location& source, const Location& target, const std::stop_token& stop) const
{
    std::unique_lock lock(mutex);
    passGate(lock, stop);
    failIfBroken(target.path());
    const auto found = sizes.find(source.path());
    if (found == sizes.end())
        throw FileError(source.path(), ENOENT);
    sizes[target.path()] = found->second;
}

void MemoryFileManager::passGate(std::unique_lock<std::mutex>& lock, const std::stop_token& stop) const
{
    ++waiting;
    const auto isOpen = [this] { return gate == Gate::open; };
    const bool passed =
        gate == Gate::hanging ? (gateMoved.wait(lock, isOpen), true) : gateMoved.wait(lock, stop, isOpen);
    --waiting;
    if (passed)
        return;
    ++stopped;
    throw Stopped();
}

void MemoryFileManager::failIfBroken(const std::string& path) const
{
    for (const auto& place : broken) {
        if (path == place.first || isBelow(path, place.first))
            throw FileError(path, EIO, place.second);
    }
}

} // namespace reelkeep
