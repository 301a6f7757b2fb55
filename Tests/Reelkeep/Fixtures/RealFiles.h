#pragma once

#include "CopyJob.h"
#include "Files/LinuxFileManager.h"

namespace reelkeep {

/// A run of one copy on the real file system; throws as `CopyRun` does.
inline void copyFile(const Location& source, const Location& target, const std::stop_token& stop = {})
{
    const auto copies = LinuxFileManager().beginCopying(stop);
    copies->copyItem(source, target);
    copies->finish();
}

/// Runs a copy job on the real file system.
inline CopySummary runOnRealFiles(
    const CopyJob& job, const CopyJob::ProgressSink& progress = [](const CopyProgress&) {},
    const std::stop_token& stop = {})
{
    LinuxFileManager files;
    return job.run(files, progress, stop);
}

} // namespace reelkeep
