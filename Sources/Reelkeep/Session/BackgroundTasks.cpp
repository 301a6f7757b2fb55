#include "BackgroundTasks.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

namespace reelkeep {

namespace {

/// Long enough for a copy to a slow disk to come back from its system call and remove its hidden file, short enough for
/// the program to end within a second.
constexpr std::chrono::milliseconds patience{750};

} // namespace

/// Shared with the threads, since an abandoned job outlives the BackgroundTasks that started it.
struct BackgroundTasks::Running {
    std::stop_source stopSource;
    std::mutex mutex;
    std::condition_variable oneEnded;
    int count = 0;

    void begin()
    {
        const std::lock_guard lock(mutex);
        ++count;
    }

    void end()
    {
        const std::lock_guard lock(mutex);
        --count;
        oneEnded.notify_all();
    }
};

BackgroundTasks::BackgroundTasks() : running(std::make_shared<Running>()) {}

void BackgroundTasks::stop()
{
    running->stopSource.request_stop();
    std::unique_lock lock(running->mutex);
    running->oneEnded.wait_for(lock, patience, [this] { return running->count == 0; });
}

void BackgroundTasks::run(Job job)
{
    running->begin();
    try {
        std::thread([job = std::move(job), shared = running]() mutable {
            std::exchange(job, nullptr)(shared->stopSource.get_token()); // Destroyed before it counts as ended.
            shared->end();
        }).detach();
    } catch (...) {
        running->end();
        throw;
    }
}

} // namespace reelkeep
