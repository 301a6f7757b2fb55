#pragma once

#include "Files/FileManager.h"

#include <condition_variable>
#include <cstddef>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace reelkeep {

/// The real file manager, watched: it records every call in order, and lets calls fail or wait at will.
/// Calls are counted from 1. Any thread may use it.
class RecordingFileManager : public FileManager {
public:
    /// For example "copyItem /card/CLIP.MOV -> /disk/CLIP.MOV"; a walk is "regularFiles /card".
    std::vector<std::string> calls() const;

    /// From now on the `number`-th call does nothing and throws this error.
    void failAt(std::size_t number, const FileError& error);
    /// From now on the `number`-th call waits, before it does anything, until it is released or its stop token asks.
    void blockAt(std::size_t number);
    /// Returns once that call has come and waits.
    void waitUntilBlocked() const;
    void release();

    void regularFiles(const Location& root, const NameFilter& wanted, const FoundFile& found,
                      const std::stop_token& stop = {}) const override;
    void createDirectory(const Location& folder) const override;
    bool fileExists(const Location& place) const override;
    void copyItem(const Location& source, const Location& target, const std::stop_token& stop = {}) const override;
    void readAhead(const Location& source) const override;

private:
    void record(std::string call, const std::stop_token& stop = {}) const;

    mutable std::mutex mutex;
    mutable std::condition_variable_any changed;
    mutable std::vector<std::string> recorded;
    std::map<std::size_t, FileError> failures;
    std::size_t blockedNumber = 0;
    mutable bool isBlocked = false;
};

} // namespace reelkeep
