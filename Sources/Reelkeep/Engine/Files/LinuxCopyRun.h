#pragma once

#include "Files/CopyGroup.h"
#include "Files/FileManager.h"
#include "Files/SourceFile.h"
#include "Files/TemporaryFile.h"
#include "Files/TransferPace.h"

#include <cstdint>
#include <exception>
#include <functional>
#include <future>
#include <memory>
#include <stop_token>
#include <string>

namespace reelkeep {

/// While one group of copies is written, the one before it is completed on another thread. There is never a third.
class LinuxCopyRun : public CopyRun {
public:
    explicit LinuxCopyRun(const std::stop_token& stop);
    ~LinuxCopyRun() override;

    void completeCopiesTo(const Location& target) override;
    void copyItem(const Location& source, const Location& target) override;
    void readAhead(const Location& source) override;
    void finish() override;

private:
    void write(const Location& source, const Location& target);
    bool isIdle() const { return growing->isEmpty() && !completing; }
    bool isDueBefore(std::int64_t nextSize) const;
    bool isFull() const;
    void beginCompletion(std::launch where);
    void awaitCompletion();
    void throwIfFailed() const;

    std::stop_source end; ///< Stops the run; also if a group fails, since the next one is then useless.
    std::stop_callback<std::function<void()>> forwarding;
    ChunkBuffer buffer;
    TransferPace reading;
    WritingPace writing;
    TransferPace syncing; ///< How much may wait for its sync.
    std::unique_ptr<CopyGroup> growing;
    std::unique_ptr<CopyGroup> completing;
    std::future<void> completion; ///< Of `completing`.
    std::exception_ptr failure;
};

} // namespace reelkeep
