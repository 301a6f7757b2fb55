#pragma once

#include "Files/FileIdentity.h"
#include "Files/TemporaryFile.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace reelkeep {

/// Copies that are complete under their hidden names, in the order of the run. They get their final names together,
/// since a file system syncs many files at once about as fast as one.
class CopyGroup {
public:
    using Clock = std::chrono::steady_clock;

    /// `hash` is that of the source; absent for a clone, whose blocks are the source's own.
    void add(std::unique_ptr<TemporaryFile> file, std::optional<std::uint64_t> hash, std::int64_t size);

    bool isEmpty() const { return copies.empty(); }
    std::size_t count() const { return copies.size(); }
    std::int64_t bytes() const { return totalBytes; }
    std::int64_t unsyncedBytes() const { return totalUnsynced; }
    /// When the first copy was added.
    Clock::time_point began() const { return beginning; }
    bool hasSpareName() const { return isAnySpare; }
    /// Whether one of the copies is that hidden file, or has that hidden place in any spelling.
    bool contains(const std::optional<FileIdentity>& file, const std::string& caselessPlace) const;

    /// Syncs the copies, reads them back and gives them their names, up to the first that fails, whose error it then
    /// throws. Throws Stopped.
    void complete(const std::stop_token& stop);
    /// How long the first sync took, which writes most of the unsynced bytes.
    Clock::duration syncDuration() const { return syncing; }

private:
    struct Copy {
        std::unique_ptr<TemporaryFile> file;
        std::optional<std::uint64_t> hash;
        FileIdentity identity;
        std::string caselessPlace;
    };

    std::size_t readers() const;

    std::vector<Copy> copies;
    std::int64_t totalBytes = 0;
    std::int64_t largestSize = 0;
    std::int64_t totalUnsynced = 0;
    bool isAnySpare = false;
    Clock::time_point beginning;
    Clock::duration syncing{};
};

} // namespace reelkeep
