#pragma once

#include <functional>
#include <memory>

class QObject;

namespace reelkeep {

/// The way back to the interface thread: a handle, to be copied into workers, to the mailbox of one object that lives
/// there. Jobs run first in first out while that object lives; once it is gone, those that wait and those still to
/// come are dropped, unrun.
class MainThread {
public:
    using Job = std::function<void()>;

    /// Opens a mailbox that lives as long as `owner`. On the interface thread. Throws std::system_error where the
    /// system has no descriptor left for it.
    explicit MainThread(QObject* owner);

    /// Has `job` run on the interface thread, after all that were posted before it. From any thread; does not wait.
    /// A job that is dropped is destroyed on the thread that posted it or on the interface thread.
    void post(Job job) const;

    /// Stops the program when called on any other thread than the interface thread.
    static void checkIsCurrent();

private:
    class Mailbox;
    std::shared_ptr<Mailbox> mailbox;
};

} // namespace reelkeep
