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

/// Files in memory on which every walk and every copy waits until the test lets it continue. Each worker thread
/// executes one call at a time, so the test decides in which order overlapping runs advance, and what fails.
class SteppedFiles : public MemoryFileManager {
public:
    /// How a call continues. The failures are those that a worker may meet.
    enum class Going { well, intoDiskError, intoOtherError, outOfMemory };

    /// The text of the failures that have one.
    static constexpr const char* diskReason = "se ha roto";
    static constexpr const char* otherText = "algo raro";

    /// Waits, without handling events, until `worker` executes `call`: "walk /card", "copy /card/a -> /A/a".
    bool waitForCall(std::thread::id worker, const std::string& call) const;
    /// The same for a worker that is not among `known`.
    std::optional<std::thread::id> waitForNewWorker(const std::vector<std::thread::id>& known,
                                                    const std::string& call) const;
    void resume(std::thread::id worker, Going going);
    /// How many calls are being executed.
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

    /// `failing` is the path in the text of a disk error.
    void waitForTurn(const std::string& text, const Location& failing, const std::stop_token& stop) const;

    struct Steps {
        std::mutex mutex;
        std::condition_variable_any changed;
        std::map<std::thread::id, Call> calls;
    };
    const std::unique_ptr<Steps> steps = std::make_unique<Steps>();
};

} // namespace reelkeep
