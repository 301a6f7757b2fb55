#pragma once

#include "Files/LinuxFileManager.h"

#include <utility>
#include <vector>

namespace reelkeep {

/// Walks with a given number of threads on any disk.
class FixedWalkers : public LinuxFileManager {
public:
    explicit FixedWalkers(unsigned count) : walkers(count) {}

    Disk diskHolding(const Location&) const override { return {.id = {}, .walkers = walkers}; }

private:
    unsigned walkers;
};

/// Everything that a walk finds.
inline std::vector<FileManager::Entry> entriesBelow(const Location& root, const FileManager::NameFilter& wanted,
                                                    const FileManager& files = LinuxFileManager(),
                                                    const std::stop_token& stop = {})
{
    std::vector<FileManager::Entry> entries;
    files.regularFiles(
        root, wanted, [&](FileManager::Entry entry) { entries.push_back(std::move(entry)); }, stop);
    return entries;
}

} // namespace reelkeep
