#pragma once

#include "Fixtures/MemoryFileManager.h"

namespace reelkeep {

/// Files in memory on which copies and analyses can be held in the middle.
class StagedFiles : public MemoryFileManager {
public:
    /// The copy with this number, counted from 0, waits until `releaseCopy`.
    void holdCopy(int number);
    void releaseCopy();
    /// Analyses that begin later wait until `releaseAnalyses`.
    void holdAnalyses();
    void releaseAnalyses();

    void regularFiles(const Location& root, const NameFilter& wanted, const FoundFile& found,
                      const std::stop_token& stop) const override;

protected:
    void copyItem(const Location& source, const Location& target, const std::stop_token& stop) override;

private:
    struct Stage {
        std::mutex mutex;
        std::condition_variable_any moved;
        int begun = 0;
        int held = -1;
        bool areAnalysesHeld = false;
    };

    const std::unique_ptr<Stage> stage = std::make_unique<Stage>();
};

} // namespace reelkeep
