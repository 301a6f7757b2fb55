#pragma once

#include "Files/FileError.h"
#include "Files/LinuxFileManager.h"

#include <condition_variable>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace reelkeep {

/// The real file manager, observed: records every call in order, and makes calls fail or wait.
/// Calls are counted from 1. Thread-safe.
class RecordingFileManager : public LinuxFileManager {
public:
    /// For example "copyItem /card/CLIP.MOV -> /disk/CLIP.MOV"; a walk is "regularFiles /card".
    std::vector<std::string> calls() const;

    /// From now on the `number`-th call does nothing and throws this error.
    void failAt(std::size_t number, const FileError& error);
    /// From now on the `number`-th call waits, before it does anything, until it is released or stopped.
    void blockAt(std::size_t number);
    /// Returns once that call is waiting.
    void waitUntilBlocked() const;
    void release();

    void regularFiles(const Location& root, const NameFilter& wanted, const FoundFile& found,
                      const std::stop_token& stop) const override;
    void createDirectory(const Location& folder) override;
    bool fileExists(const Location& place) const override;
    std::unique_ptr<CopyRun> beginCopying(const std::stop_token& stop) override;

private:
    struct Watch {
        std::mutex mutex;
        std::condition_variable_any changed;
        std::vector<std::string> calls;
        std::map<std::size_t, FileError> failures;
        std::size_t blockedNumber = 0;
        bool isBlocked = false;
    };

    void record(std::string call, const std::stop_token& stop = {}) const;

    const std::unique_ptr<Watch> watch = std::make_unique<Watch>();
};

} // namespace reelkeep
