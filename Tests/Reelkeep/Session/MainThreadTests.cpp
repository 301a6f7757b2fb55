#include "MainThread.h"

#include "Fixtures/EventLoop.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QThread>
#include <QTimer>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <numeric>
#include <thread>
#include <vector>

namespace reelkeep {
namespace {

std::vector<int> upTo(int count)
{
    std::vector<int> numbers(static_cast<std::size_t>(count));
    std::iota(numbers.begin(), numbers.end(), 0);
    return numbers;
}

TEST(MainThread, runsJobsInTheOrderInWhichTheyWerePosted)
{
    constexpr int count = 20'000;
    QObject owner;
    const MainThread mainThread(&owner);
    std::vector<int> ran;
    std::thread worker([&] {
        for (int i = 0; i < count; ++i)
            mainThread.post([&ran, i] { ran.push_back(i); });
    });
    EXPECT_TRUE(waitUntil([&] { return ran.size() == count; }));
    worker.join();
    EXPECT_EQ(ran, upTo(count));
}

TEST(MainThread, runsAJobInTheNextTurnOfTheEventLoop)
{
    QObject owner;
    const MainThread mainThread(&owner);
    bool hasRun = false;
    mainThread.post([&] { hasRun = true; });
    QCoreApplication::processEvents();
    EXPECT_TRUE(hasRun);
}

TEST(MainThread, losesNoJobThatSeveralThreadsPost)
{
    constexpr int count = 2'000;
    QObject owner;
    const MainThread mainThread(&owner);
    std::vector<std::vector<int>> ran(4);
    std::vector<std::thread> workers;
    for (std::vector<int>& ofOneThread : ran) {
        workers.emplace_back([&mainThread, &ofOneThread] {
            for (int i = 0; i < count; ++i)
                mainThread.post([&ofOneThread, i] { ofOneThread.push_back(i); });
        });
    }
    for (const std::vector<int>& ofOneThread : ran) {
        EXPECT_TRUE(waitUntil([&] { return ofOneThread.size() == count; }));
        EXPECT_EQ(ofOneThread, upTo(count));
    }
    for (std::thread& worker : workers)
        worker.join();
}

TEST(MainThread, runsJobsOnTheInterfaceThread)
{
    QObject owner;
    const MainThread mainThread(&owner);
    QThread* ranOn = nullptr;
    std::thread([&] { mainThread.post([&] { ranOn = QThread::currentThread(); }); }).join();
    EXPECT_EQ(ranOn, nullptr); // Not before the event loop runs.
    EXPECT_TRUE(waitUntil([&] { return ranOn != nullptr; }));
    EXPECT_EQ(ranOn, QCoreApplication::instance()->thread());
}

TEST(MainThread, runsAJobThatAJobPostsAfterThoseThatWereWaiting)
{
    QObject owner;
    const MainThread mainThread(&owner);
    std::vector<int> ran;
    mainThread.post([&] {
        mainThread.post([&] { ran.push_back(2); });
        ran.push_back(0);
    });
    mainThread.post([&] { ran.push_back(1); });
    EXPECT_TRUE(waitUntil([&] { return ran.size() == 3; }));
    EXPECT_EQ(ran, upTo(3));
}

TEST(MainThread, letsTheEventLoopRunDuringABurst)
{
    constexpr int count = 1'000;
    QObject owner;
    const MainThread mainThread(&owner);
    int done = 0;
    int turnsDuringTheBurst = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] { turnsDuringTheBurst += done > 0 && done < count ? 1 : 0; });
    timer.start(0);
    for (int i = 0; i < count; ++i) {
        mainThread.post([&] {
            const auto end = std::chrono::steady_clock::now() + std::chrono::microseconds(100);
            while (std::chrono::steady_clock::now() < end) {
            }
            ++done;
        });
    }
    EXPECT_TRUE(waitUntil([&] { return done == count; }));
    // A tenth of a second of work, in slices of a few milliseconds.
    EXPECT_GE(turnsDuringTheBurst, 10);
}

TEST(MainThread, goesOnRunningJobsWhileAJobRunsANestedEventLoop)
{
    QObject owner;
    const MainThread mainThread(&owner);
    std::vector<int> ran;
    mainThread.post([&] {
        ran.push_back(0);
        EXPECT_TRUE(waitUntil([&] { return ran.size() == 3; }));
    });
    mainThread.post([&] { ran.push_back(1); });
    mainThread.post([&] { ran.push_back(2); });
    EXPECT_TRUE(waitUntil([&] { return ran.size() == 3; }));
    EXPECT_EQ(ran, upTo(3));
}

TEST(MainThread, dropsWaitingJobsWhenItsOwnerEnds)
{
    auto owner = std::make_unique<QObject>();
    const MainThread mainThread(owner.get());
    auto held = std::make_shared<int>();
    const std::weak_ptr<int> ofTheJob = held;
    bool ran = false;
    mainThread.post([&ran, held = std::move(held)] { ran = true; });
    EXPECT_FALSE(ofTheJob.expired());
    owner.reset();
    EXPECT_TRUE(ofTheJob.expired());
    letEventsPass();
    EXPECT_FALSE(ran);
}

TEST(MainThread, dropsJobsThatArriveAfterItsOwnerEnded)
{
    auto owner = std::make_unique<QObject>();
    const MainThread mainThread(owner.get());
    owner.reset();
    auto held = std::make_shared<int>();
    const std::weak_ptr<int> ofTheJob = held;
    mainThread.post([held = std::move(held)] { FAIL(); });
    EXPECT_TRUE(ofTheJob.expired());
    letEventsPass();
}

TEST(MainThread, dropsJobsAfterOneThatEndsItsOwner)
{
    auto owner = std::make_unique<QObject>();
    const MainThread mainThread(owner.get());
    bool isLastRun = false;
    mainThread.post([&] { owner.reset(); });
    mainThread.post([&] { isLastRun = true; });
    EXPECT_TRUE(waitUntil([&] { return !owner; }));
    letEventsPass();
    EXPECT_FALSE(isLastRun);
}

TEST(MainThread, allowsADroppedJobToPost)
{
    auto owner = std::make_unique<QObject>();
    const MainThread mainThread(owner.get());
    const auto postsWhenDestroyed = [&mainThread] {
        return std::shared_ptr<void>(nullptr, [mainThread](void*) { mainThread.post([] { FAIL(); }); });
    };
    mainThread.post([held = postsWhenDestroyed()] {});
    owner.reset();
    mainThread.post([held = postsWhenDestroyed()] {});
    letEventsPass();
}

TEST(MainThread, survivesAnOwnerThatEndsWhileWorkersPost)
{
    auto owner = std::make_unique<QObject>();
    auto* ownerAddress = owner.get();
    const MainThread mainThread(owner.get());
    std::atomic<bool> isOver = false;
    int ran = 0;
    std::vector<std::thread> workers;
    for (int i = 0; i < 2; ++i) {
        workers.emplace_back([&, mainThread] {
            while (!isOver)
                mainThread.post([&ran, ownerAddress] { ran += ownerAddress->children().empty() ? 0 : 1; });
        });
    }
    EXPECT_TRUE(waitUntil([&] { return ran >= 100; }));
    owner.reset();
    const int ranBefore = ran;
    letEventsPass();
    isOver = true;
    for (std::thread& worker : workers)
        worker.join();
    letEventsPass();
    EXPECT_EQ(ran, ranBefore);
}

TEST(MainThread, isCurrentOnTheThreadOfTheApplication)
{
    MainThread::checkIsCurrent();
}

TEST(MainThreadDeathTest, stopsTheProgramOnAnyOtherThread)
{
    EXPECT_DEATH(std::thread([] { MainThread::checkIsCurrent(); }).join(), "called outside the interface thread\n");
}

} // namespace
} // namespace reelkeep
