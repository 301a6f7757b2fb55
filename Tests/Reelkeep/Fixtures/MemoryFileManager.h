#pragma once

#include "Files/FileManager.h"

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace reelkeep {

/// Files held in memory, by path, with the failures of real disks. Thread-safe.
class MemoryFileManager : public FileManager {
public:
    void add(const std::string& path, std::int64_t size = 100);
    void remove(const std::string& path);
    bool has(const std::string& path) const;

    /// From now on everything below `path` fails with that text.
    void failBelow(const std::string& path, const std::string& text);
    /// From now on walks and copies run out of memory.
    void exhaustMemory();

    /// From now on walks and copies wait until `open`, or throw Stopped if they are stopped.
    void close();
    /// The same, but ignoring stop requests, like a system call on a dead disk.
    void hang();
    void open();
    /// How many walks and copies are waiting.
    int waitingCount() const;
    /// How many were stopped while they waited.
    int stoppedCount() const;
    /// The roots that were walked, in order.
    std::vector<std::string> walkedRoots() const;

    void regularFiles(const Location& root, const NameFilter& wanted, const FoundFile& found,
                      const std::stop_token& stop) const override;
    /// They are all on one disk, so that roots are walked one after the other.
    Disk diskHolding(const Location&) const override { return {}; }
    void createDirectory(const Location& folder) override;
    bool fileExists(const Location& place) const override;
    /// Its copies end at once, each through `copyItem`.
    std::unique_ptr<CopyRun> beginCopying(const std::stop_token& stop) override;

protected:
    virtual void copyItem(const Location& source, const Location& target, const std::stop_token& stop);

private:
    enum class Gate { open, closed, hanging };

    struct Contents {
        std::mutex mutex;
        std::condition_variable_any gateMoved;
        std::map<std::string, std::int64_t> sizes;
        std::map<std::string, std::string> broken;
        std::vector<std::string> walked;
        bool isMemoryExhausted = false;
        Gate gate = Gate::open;
        int waiting = 0;
        int stopped = 0;
    };

    void passGate(std::unique_lock<std::mutex>& lock, const std::stop_token& stop) const;
    void failIfBroken(const std::string& path) const;

    const std::unique_ptr<Contents> disk = std::make_unique<Contents>();
};

} // namespace reelkeep
