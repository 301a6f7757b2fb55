#pragma once

#include <functional>
#include <memory>

class QObject;

namespace reelkeep {

/// The way back to the interface thread: a handle, copied into workers, to the mailbox of one object that lives there.
/// Jobs run first in, first out as long as that object exists; after that, waiting and later jobs are dropped.
class MainThread {
public:
    using Job = std::function<void()>;

    /// Opens a mailbox that lives as long as `owner`. On the interface thread. Throws std::system_error if no file
    /// descriptor is left for it.
    explicit MainThread(QObject* owner);

    /// Queues `job` for the interface thread, after all jobs posted before it. From any thread; does not wait.
    /// A job that is dropped is destroyed on the thread that posted it or on the interface thread.
    void post(Job job) const;

    /// Stops the program if called on any thread but the interface thread.
    static void checkIsCurrent();

private:
    class Mailbox;
    std::shared_ptr<Mailbox> mailbox;
};

} // namespace reelkeep
