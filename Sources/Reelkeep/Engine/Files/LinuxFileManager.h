#pragma once

#include "Files/FileManager.h"

namespace reelkeep {

/// The file systems of this machine, by system calls. It holds no state and no open files between calls.
class LinuxFileManager : public FileManager {
public:
    void regularFiles(const Location& root, const NameFilter& wanted, const FoundFile& found,
                      const std::stop_token& stop) const override;
    Disk diskHolding(const Location& place) const override;
    void createDirectory(const Location& folder) override;
    bool fileExists(const Location& place) const override;
    std::unique_ptr<CopyRun> beginCopying(const std::stop_token& stop) override;
};

} // namespace reelkeep
