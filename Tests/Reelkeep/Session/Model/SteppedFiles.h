#pragma once

#include "Fixtures/MemoryFileManager.h"

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace reelkeep {

/// Files in memory on which every walk and every copy waits until the test lets it go on. Each worker thread has one
/// call in hand at most, so the test decides in which order overlapping runs get on, and what fails.
class SteppedFiles : public MemoryFileManager {
public:
    /// How a call goes on. The failures are of the kinds that a worker may meet.
    enum class Going { well, intoDiskError, intoOtherError, outOfMemory };

    /// The text of the failures that have one.
    static constexpr const char* diskReason = "se ha roto";
    static constexpr const char* otherText = "algo raro";

    /// Waits, without letting an event pass, until `worker` has `call` in hand: "walk /card", "copy /card/a -> /A/a".
    bool waitForCall(std::thread::id worker, const std::string& call) const;
    /// The same for a worker that is none of `known`.
    std::optional<std::thread::id> waitForNewWorker(const std::vector<std::thread::id>& known,
                                                    const std::string& call) const;
    void resume(std::thread::id worker, Going going);
    /// How many calls are in hand.
    std::size_t callCount() const;

    void regularFiles(const Location& root, const NameFilter& wanted, const FoundFile& found,
                      const std::stop_token& stop) const override;

protected:
    void copyItem(const Location& source, const Location& target, const std::stop_token& stop) override;

private:
    struct Call {
        std::string text;
        std::optional<Going> going;
    };

    /// `failing` is the path that a disk error names.
    void waitForTurn(const std::string& text, const Location& failing, const std::stop_token& stop) const;

    struct Steps {
        std::mutex mutex;
        std::condition_variable_any changed;
        std::map<std::thread::id, Call> calls;
    };
    const std::unique_ptr<Steps> steps = std::make_unique<Steps>();
};

} // namespace reelkeep
