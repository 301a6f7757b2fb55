#include "Files/Stopped.h"
#include "Fixtures/CopyRuns.h"
#include "Fixtures/FaultDisk.h"
#include "Fixtures/LongRuns.h"
#include "Fixtures/MountedDisk.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <random>
#include <thread>
#include <tuple>

namespace reelkeep {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// A healthy but slow disk: its file system, and its speed in megabytes per second.
class SlowDisk : public testing::TestWithParam<std::tuple<const char*, int>> {
protected:
    void SetUp() override
    {
        if (!FaultDisk::isPossible())
            GTEST_SKIP() << "SKIPPED: a slow disk needs root, FUSE and loop devices";
        for (unsigned i = 0; i < 6; ++i)
            card.file("DCIM/" + std::to_string(i) + ".MOV", contentOfLength(std::size_t(100'000) << i * 2U, i));
    }

    TemporaryFolder card{"/dev/shm"};
};

/// The window gives its workers three quarters of a second before it ends the program under them.
TEST_P(SlowDisk, stopsSoonAndLeavesNothingHidden)
{
    constexpr milliseconds patience(750);
    FaultDisk below(400);
    MountedDisk disk(std::get<0>(GetParam()), below);
    std::mt19937 random(20240501);
    milliseconds longest{};
    int late = 0;
    const int stops = rounds(1, 20);
    for (int round = 0; round < stops; ++round) {
        below.control().bytesPerSecond = static_cast<std::uint64_t>(std::get<1>(GetParam())) * 1'000'000;
        std::stop_source stop;
        Clock::time_point end;
        std::thread copy([&] {
            EXPECT_THROW(copyMissing(card.location(), disk.location(), stop.get_token()), Stopped);
            end = Clock::now();
        });
        // The stop comes at a random moment.
        std::this_thread::sleep_for(milliseconds(std::uniform_int_distribution<>(50, 2000)(random)));
        const auto begin = Clock::now();
        stop.request_stop();
        copy.join();
        longest = std::max(longest, std::chrono::duration_cast<milliseconds>(end - begin));
        late += end - begin > patience ? 1 : 0;
        below.heal();
        expectOnlyWholeVideos(card.location(), disk.location());
        std::filesystem::remove_all(disk.location().appending("DCIM").path());
    }
    std::printf("%d stops, %d of them late, the slowest after %d ms\n", stops, late, static_cast<int>(longest.count()));
    EXPECT_EQ(late, 0);
}

std::string nameOf(const testing::TestParamInfo<std::tuple<const char*, int>>& tested)
{
    return std::string(std::get<0>(tested.param)) + "At" + std::to_string(std::get<1>(tested.param)) + "MBs";
}

INSTANTIATE_TEST_SUITE_P(ThroughADriver, SlowDisk,
                         testing::Combine(testing::Values("exfat", "ntfs"), testing::Values(5, 20, 50)), nameOf);
INSTANTIATE_TEST_SUITE_P(OfTheKernel, SlowDisk,
                         testing::Combine(testing::Values("ext4", "xfs", "btrfs"), testing::Values(5)), nameOf);

} // namespace
} // namespace reelkeep
