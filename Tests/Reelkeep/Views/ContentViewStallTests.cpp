#include "Fixtures/WindowTest.h"

#include <QScrollBar>
#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <iostream>
#include <thread>

namespace reelkeep {
namespace {

constexpr int videoCount = 1'000'000;

constexpr double allowedStall = 16; // milliseconds: one frame

/// Ticks once a millisecond on the interface thread, which also handles input. Whatever delays a tick stalls the
/// window. The thread's CPU time separates the window's own work from the load of the machine.
class Watchdog {
public:
    Watchdog()
    {
        timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&timer, &QTimer::timeout, &timer, [this] { tick(); });
        timer.start(1);
        last = now();
    }
    double longestStall() const { return longest.byClock; }
    double longestWork() const { return longest.byWork; }

private:
    struct Moment {
        double byClock;
        double byWork;
    };
    static double milliseconds(clockid_t clock)
    {
        timespec time{};
        clock_gettime(clock, &time);
        return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
    }
    static Moment now() { return {milliseconds(CLOCK_MONOTONIC), milliseconds(CLOCK_THREAD_CPUTIME_ID)}; }
    void tick()
    {
        const Moment here = now();
        longest.byClock = std::max(longest.byClock, here.byClock - last.byClock - 1);
        longest.byWork = std::max(longest.byWork, here.byWork - last.byWork);
        last = here;
    }

    QTimer timer;
    Moment last{};
    Moment longest{};
};

/// A disk that takes a limited number of files per second.
class PacedFiles : public StagedFiles {
public:
    void copyItem(const Location& source, const Location& target, const std::stop_token& stop) override
    {
        next = std::max(next, std::chrono::steady_clock::now()) + pause;
        std::this_thread::sleep_until(next);
        StagedFiles::copyItem(source, target, stop);
    }

    std::chrono::microseconds pause{0};

private:
    std::chrono::steady_clock::time_point next;
};

class ContentViewStall : public WindowTest {
protected:
    ContentViewStall() : WindowTest(std::make_shared<PacedFiles>()) {}
    void SetUp() override
    {
        fill("/card", "/disk", videoCount, 0);
        chooseCamera("/card");
        chooseDestination("/disk");
    }
    void expectFluent(const char* what, const std::function<void()>& work)
    {
        settle();
        const Watchdog watchdog;
        work();
        settle();
        EXPECT_LE(watchdog.longestWork(), allowedStall) << what;
        std::cout << what << ": the longest stall was " << watchdog.longestStall() << " ms, of which the window's own "
                  << watchdog.longestWork() << " ms\n";
    }
    PacedFiles& disk() { return static_cast<PacedFiles&>(*files); }
};

TEST_F(ContentViewStall, isShortWhenManyVideosAreFoundAndPending)
{
    expectFluent("first analysis", [this] { analyse(); });
    ASSERT_EQ(list()->rowCount(), videoCount);
    expectFluent("second analysis, equal", [this] { analyse(); });
    files->add("/card/DCIM/new.MOV");
    expectFluent("third analysis, other results", [this] { analyse(); });
    EXPECT_EQ(list()->rowCount(), videoCount + 1);
}

TEST_F(ContentViewStall, isShortWhileTheListScrolls)
{
    analyse();
    expectFluent("wheel over the list", [this] {
        for (int turn = 0; turn < 200; ++turn) {
            turnWheel(*list()->viewport(), {100, 100}, -1);
            letEventsPass();
        }
    });
    expectFluent("thumb of the list", [this] {
        for (int step = 0; step < 100; ++step) {
            list()->verticalScrollBar()->setValue(step * 49'000);
            letEventsPass();
        }
    });
    resize(1148, 700);
    expectFluent("wheel over the window", [this] {
        for (int turn = 0; turn < 100; ++turn) {
            turnWheel(*content, {100, 300}, turn < 50 ? -1 : 1);
            letEventsPass();
        }
    });
}

TEST_F(ContentViewStall, isShortDuringFiveThousandReportsASecond)
{
    analyse();
    disk().pause = std::chrono::microseconds(200);
    expectFluent("5,000 reports a second", [this] {
        press(copyLabel);
        ASSERT_TRUE(waitUntil([this] { return session().progressValue() >= 0.008; }));
    });
    EXPECT_TRUE(status().startsWith(QStringLiteral("Copiando ")));
}

TEST_F(ContentViewStall, isShortDuringReportsWithoutPause)
{
    analyse();
    expectFluent("reports without pause, and the analysis after them", [this] {
        press(copyLabel);
        ASSERT_TRUE(becomesIdle());
    });
    EXPECT_EQ(list(), nullptr);
}

TEST_F(ContentViewStall, isShortWhenTheWindowIsResized)
{
    analyse();
    expectFluent("resizing", [this] {
        for (int width = 480; width < 1400; width += 23)
            resize(width, 700);
    });
}

} // namespace
} // namespace reelkeep
