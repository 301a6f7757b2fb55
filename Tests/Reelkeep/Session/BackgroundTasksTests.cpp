#include "BackgroundTasks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <thread>

namespace reelkeep {
namespace {

/// A job that ends when it is stopped.
void waitForStop(const std::stop_token& stop)
{
    std::promise<void> stopped;
    const std::stop_callback tell(stop, [&] { stopped.set_value(); });
    stopped.get_future().wait();
}

TEST(BackgroundTasks, runsAJobOnANewThread)
{
    std::promise<std::thread::id> ranOn;
    BackgroundTasks tasks;
    tasks.run([&](const std::stop_token&) { ranOn.set_value(std::this_thread::get_id()); });
    EXPECT_NE(ranOn.get_future().get(), std::this_thread::get_id());
}

TEST(BackgroundTasks, runsAllJobsAtOnce)
{
    std::promise<void> one;
    std::promise<void> other;
    BackgroundTasks tasks;
    tasks.run([&](const std::stop_token&) {
        one.set_value();
        other.get_future().wait();
    });
    tasks.run([&](const std::stop_token&) { other.set_value(); });
    one.get_future().wait();
}

TEST(BackgroundTasks, stopsItsJobsAndWaitsForThem)
{
    std::atomic<int> ended = 0;
    {
        BackgroundTasks tasks;
        for (int i = 0; i < 2; ++i) {
            tasks.run([&](const std::stop_token& stop) {
                waitForStop(stop);
                ++ended;
            });
        }
        EXPECT_EQ(ended, 0);
    }
    EXPECT_EQ(ended, 2);
}

TEST(BackgroundTasks, waitsNoLongerThanItsJobsNeed)
{
    using Clock = std::chrono::steady_clock;
    Clock::duration shortest = Clock::duration::max(); // of several, since a busy machine may delay one
    for (int attempt = 0; attempt < 5; ++attempt) {
        BackgroundTasks tasks;
        tasks.run([](const std::stop_token& stop) {
            waitForStop(stop);
            std::this_thread::sleep_for(std::chrono::milliseconds(20)); // so that it ends during the wait
        });
        const auto began = Clock::now();
        tasks.stop();
        shortest = std::min(shortest, Clock::now() - began);
    }
    EXPECT_LT(shortest, std::chrono::milliseconds(500));
}

TEST(BackgroundTasks, stopsJobsThatStartLaterToo)
{
    std::promise<bool> told;
    BackgroundTasks tasks;
    tasks.stop();
    tasks.run([&](const std::stop_token& stop) { told.set_value(stop.stop_requested()); });
    EXPECT_TRUE(told.get_future().get());
}

TEST(BackgroundTasks, abandonsAJobThatHangs)
{
    const auto release = std::make_shared<std::promise<void>>();
    const auto ended = std::make_shared<std::promise<void>>();
    const auto start = std::chrono::steady_clock::now();
    {
        BackgroundTasks tasks;
        tasks.run([release, ended](const std::stop_token&) {
            release->get_future().wait();
            ended->set_value();
        });
    }
    const auto waited = std::chrono::steady_clock::now() - start;
    EXPECT_GE(waited, std::chrono::milliseconds(400));
    EXPECT_LT(waited, std::chrono::seconds(5));
    release->set_value(); // The job still ends well after its owner is gone.
    ended->get_future().wait();
}

TEST(BackgroundTasks, destroysAJobOnTheThreadOnWhichItRan)
{
    struct TellsItsThread {
        std::promise<std::thread::id>* destroyedOn;
        ~TellsItsThread() { destroyedOn->set_value(std::this_thread::get_id()); }
    };
    std::promise<std::thread::id> ranOn;
    std::promise<std::thread::id> destroyedOn;
    BackgroundTasks tasks;
    auto held = std::make_shared<TellsItsThread>();
    held->destroyedOn = &destroyedOn;
    tasks.run(
        [&ranOn, held = std::move(held)](const std::stop_token&) { ranOn.set_value(std::this_thread::get_id()); });
    EXPECT_EQ(destroyedOn.get_future().get(), ranOn.get_future().get());
}

} // namespace
} // namespace reelkeep
