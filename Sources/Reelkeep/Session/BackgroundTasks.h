#pragma once

#include <functional>
#include <memory>
#include <stop_token>

namespace reelkeep {

/// Runs long work away from the interface thread, every job at once on a thread of its own.
///
/// Its end tells the jobs to stop and waits for them, but not for long: a job that hangs in a system call on a dead
/// disk is left to itself. A job therefore holds by value whatever it works with, and lets no exception out.
class BackgroundTasks {
public:
    using Job = std::function<void(const std::stop_token&)>;

    BackgroundTasks();
    BackgroundTasks(const BackgroundTasks&) = delete;
    BackgroundTasks& operator=(const BackgroundTasks&) = delete;
    ~BackgroundTasks() { stop(); }

    /// Starts `job` and returns. The job is destroyed on its own thread too. Throws std::system_error where the
    /// system has no thread left.
    void run(Job job);

    /// Tells the running jobs, and those that are started later, to stop, and returns once all have ended, half a
    /// second later at the latest.
    void stop();

private:
    struct Running;
    std::shared_ptr<Running> running;
};

} // namespace reelkeep
