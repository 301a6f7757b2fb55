#include "Fixtures/RecordingFileManager.h"

#include <utility>

namespace reelkeep {

std::vector<std::string> RecordingFileManager::calls() const
{
    const std::lock_guard guard(mutex);
    return recorded;
}

void RecordingFileManager::failAt(std::size_t number, const FileError& error)
{
    const std::lock_guard guard(mutex);
    failures.insert_or_assign(number, error);
}

void RecordingFileManager::blockAt(std::size_t number)
{
    const std::lock_guard guard(mutex);
    blockedNumber = number;
}

void RecordingFileManager::waitUntilBlocked() const
{
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return isBlocked; });
}

void RecordingFileManager::release()
{
    const std::lock_guard guard(mutex);
    blockedNumber = 0;
    changed.notify_all();
}

void RecordingFileManager::record(std::string call, const std::stop_token& stop) const
{
    std::unique_lock lock(mutex);
    recorded.push_back(std::move(call));
    const std::size_t number = recorded.size();
    if (number == blockedNumber) {
        isBlocked = true;
        changed.notify_all();
        changed.wait(lock, stop, [&] { return blockedNumber != number; });
        isBlocked = false;
        if (stop.stop_requested())
            throw Stopped();
    }
    const auto failure = failures.find(number);
    if (failure != failures.end())
        throw FileError(failure->second);
}

void RecordingFileManager::regularFiles(const Location& root, const NameFilter& wanted, const FoundFile& found,
                                        const std::stop_token& stop) const
{
    record("regularFiles " + root.path(), stop);
    FileManager::regularFiles(root, wanted, found, stop);
}

void RecordingFileManager::createDirectory(const Location& folder) const
{
    record("createDirectory " + folder.path());
    FileManager::createDirectory(folder);
}

bool RecordingFileManager::fileExists(const Location& place) const
{
    record("fileExists " + place.path());
    return FileManager::fileExists(place);
}

void RecordingFileManager::copyItem(const Location& source, const Location& target, const std::stop_token& stop) const
{
    record("copyItem " + source.path() + " -> " + target.path(), stop);
    FileManager::copyItem(source, target, stop);
}

void RecordingFileManager::readAhead(const Location& source) const
{
    record("readAhead " + source.path());
    FileManager::readAhead(source);
}

} // namespace reelkeep
