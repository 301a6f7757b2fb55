#pragma once

#include <functional>
#include <memory>
#include <stop_token>

namespace reelkeep {

/// Runs long work outside the interface thread. Each job starts immediately on its own thread.
///
/// The destructor tells the jobs to stop and waits for them, but not for long: a job that hangs in a system call on a
/// dead disk is abandoned. So a job must own everything it uses, and must not throw.
class BackgroundTasks {
public:
    using Job = std::function<void(const std::stop_token&)>;

    BackgroundTasks();
    BackgroundTasks(const BackgroundTasks&) = delete;
    BackgroundTasks& operator=(const BackgroundTasks&) = delete;
    ~BackgroundTasks() { stop(); }

    /// Starts `job` and returns. The job is also destroyed on its own thread. Throws std::system_error if no thread can
    /// be started.
    void run(Job job);

    /// Tells the running jobs, and any that start later, to stop. Returns once all have ended, or after three quarters
    /// of a second.
    void stop();

private:
    struct Running;
    std::shared_ptr<Running> running;
};

} // namespace reelkeep
