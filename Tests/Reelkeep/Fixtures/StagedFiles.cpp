#include "Fixtures/StagedFiles.h"

namespace reelkeep {

void StagedFiles::holdCopy(int number)
{
    const std::lock_guard lock(mutex);
    held = number;
    begun = 0;
}

void StagedFiles::releaseCopy()
{
    const std::lock_guard lock(mutex);
    held = -1;
    moved.notify_all();
}

void StagedFiles::holdAnalyses()
{
    const std::lock_guard lock(mutex);
    areAnalysesHeld = true;
}

void StagedFiles::releaseAnalyses()
{
    const std::lock_guard lock(mutex);
    areAnalysesHeld = false;
    moved.notify_all();
}

void StagedFiles::regularFiles(const Location& root, const NameFilter& wanted, const FoundFile& found,
                               const std::stop_token& stop) const
{
    {
        std::unique_lock lock(mutex);
        if (!moved.wait(lock, stop, [&] { return !areAnalysesHeld; }))
            throw Stopped();
    }
    MemoryFileManager::regularFiles(root, wanted, found, stop);
}

void StagedFiles::copyItem(const Location& source, const Location& target, const std::stop_token& stop) const
{
    {
        std::unique_lock lock(mutex);
        const int number = begun++;
        if (!moved.wait(lock, stop, [&] { return held != number; }))
            throw Stopped();
    }
    MemoryFileManager::copyItem(source, target, stop);
}

} // namespace reelkeep
