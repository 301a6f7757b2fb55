#include "Fixtures/StagedFiles.h"

#include "Files/Stopped.h"

namespace reelkeep {

void StagedFiles::holdCopy(int number)
{
    const std::lock_guard lock(stage->mutex);
    stage->held = number;
    stage->begun = 0;
}

void StagedFiles::releaseCopy()
{
    const std::lock_guard lock(stage->mutex);
    stage->held = -1;
    stage->moved.notify_all();
}

void StagedFiles::holdAnalyses()
{
    const std::lock_guard lock(stage->mutex);
    stage->areAnalysesHeld = true;
}

void StagedFiles::releaseAnalyses()
{
    const std::lock_guard lock(stage->mutex);
    stage->areAnalysesHeld = false;
    stage->moved.notify_all();
}

void StagedFiles::regularFiles(const Location& root, const NameFilter& wanted, const FoundFile& found,
                               const std::stop_token& stop) const
{
    {
        std::unique_lock lock(stage->mutex);
        if (!stage->moved.wait(lock, stop, [&] { return !stage->areAnalysesHeld; }))
            throw Stopped();
    }
    MemoryFileManager::regularFiles(root, wanted, found, stop);
}

void StagedFiles::copyItem(const Location& source, const Location& target, const std::stop_token& stop)
{
    {
        std::unique_lock lock(stage->mutex);
        const int number = stage->begun++;
        if (!stage->moved.wait(lock, stop, [&] { return stage->held != number; }))
            throw Stopped();
    }
    MemoryFileManager::copyItem(source, target, stop);
}

} // namespace reelkeep
