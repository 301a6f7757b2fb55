#include "Files/TransferPace.h"

#include <gtest/gtest.h>

namespace reelkeep {
namespace {

using std::chrono::milliseconds;

constexpr std::int64_t largest = 32 << 20;
constexpr milliseconds target(200);

/// A disk that takes the time `fixed` for every portion, and more for each byte.
struct Disk {
    milliseconds fixed;
    double megabytesPerSecond;

    TransferPace::Duration timeFor(std::int64_t bytes) const
    {
        return fixed + std::chrono::nanoseconds(static_cast<std::int64_t>(double(bytes) * 1000 / megabytesPerSecond));
    }
    /// Writes so many portions. Returns the longest time that any of them took, the first excepted.
    TransferPace::Duration write(TransferPace& pace, int portions) const
    {
        TransferPace::Duration longest{};
        for (int i = 0; i < portions; ++i) {
            const std::int64_t bytes = pace.portion();
            pace.took(bytes, timeFor(bytes));
            if (i > 0)
                longest = std::max(longest, timeFor(bytes));
        }
        return longest;
    }
};

TEST(TransferPaceTest, beginsSmallAndReachesTheLargestAfterAFewPortionsOnAFastDisk)
{
    TransferPace pace(largest, target);
    EXPECT_EQ(pace.portion(), TransferPace::first);
    Disk{milliseconds(1), 500}.write(pace, 4);
    EXPECT_EQ(pace.portion(), largest);
}

TEST(TransferPaceTest, keepsEachPortionShortOnASlowDisk)
{
    for (const double speed : {2.0, 5.0, 20.0, 50.0}) {
        TransferPace pace(largest, target);
        EXPECT_LE(Disk({milliseconds(0), speed}).write(pace, 50), milliseconds(210)) << speed;
        EXPECT_GE(Disk({milliseconds(0), speed}).timeFor(pace.portion()), milliseconds(120)) << speed;
    }
}

TEST(TransferPaceTest, doesNotShrinkPortionsIfEverySyncTakesLong)
{
    for (const int fixed : {30, 60, 100, 150, 300}) {
        TransferPace pace(largest, target);
        const Disk disk{milliseconds(fixed), 100};
        disk.write(pace, 20);
        EXPECT_GE(pace.portion(), fixed > 200 ? 8 << 20 : 16 << 20) << fixed;
        EXPECT_LE(disk.timeFor(pace.portion()), milliseconds(fixed + 320)) << fixed;
    }
}

TEST(TransferPaceTest, followsADiskThatBecomesSlow)
{
    TransferPace pace(largest, target);
    Disk{milliseconds(2), 200}.write(pace, 10);
    const Disk slow{milliseconds(2), 5};
    slow.write(pace, 3);
    EXPECT_LE(slow.timeFor(pace.portion()), milliseconds(410));
    slow.write(pace, 3);
    EXPECT_LE(slow.timeFor(pace.portion()), milliseconds(250));
}

TEST(TransferPaceTest, staysWithinItsBoundsWhateverTheClockReports)
{
    for (const auto duration : {std::chrono::nanoseconds(0), std::chrono::nanoseconds(std::chrono::hours(1))}) {
        TransferPace pace(largest, target);
        for (int i = 0; i < 100; ++i) {
            pace.took(pace.portion(), duration);
            EXPECT_GE(pace.portion(), TransferPace::smallest);
            EXPECT_LE(pace.portion(), largest);
            EXPECT_EQ(pace.portion() % 4096, 0);
        }
    }
}

TEST(TransferPaceTest, learnsNothingFromTheLastBytesOfAVideo)
{
    TransferPace pace(largest, target);
    pace.took(1000, std::chrono::seconds(1));
    EXPECT_EQ(pace.portion(), TransferPace::first);
}

} // namespace
} // namespace reelkeep
