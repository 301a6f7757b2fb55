#include "Fixtures/CopyRuns.h"
#include "Fixtures/FaultDisk.h"
#include "Fixtures/LongRuns.h"
#include "Fixtures/MountedDisk.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace reelkeep {
namespace {

namespace fs = std::filesystem;
using Lie = FaultDiskControl::Lie;

/// A disk that accepts everything and stores, or returns, something else.
class LyingDisk : public testing::TestWithParam<const char*> {
protected:
    static constexpr const char* mark = "reelkeep";
    static constexpr std::size_t blockSize = 4096;

    void SetUp() override
    {
        if (!FaultDisk::isPossible())
            GTEST_SKIP() << "SKIPPED: a disk that lies needs root, FUSE and loop devices";
    }

    /// Every block of a video begins with the mark, and none ends before its middle, where a bit may flip.
    static std::string markedContent(std::size_t blocks, unsigned seed)
    {
        std::string content = contentOfLength(blocks * blockSize - 1000, seed);
        for (std::size_t at = 0; at < content.size(); at += blockSize)
            content.replace(at, std::strlen(mark), mark);
        return content;
    }
    /// The bytes differ in each round: dropping a block whose old bytes are the same would be no lie.
    void fillCard(unsigned round) const
    {
        const std::size_t blocks[] = {1, 2, 20, 1, 300, 2400, 3, 50};
        unsigned number = 0;
        for (const std::size_t count : blocks) {
            card.file("DCIM/" + std::to_string(number) + ".mov", markedContent(count, 100 * round + number));
            ++number;
        }
    }
    static constexpr unsigned blocksOnCard = 1 + 2 + 20 + 1 + 300 + 2400 + 3 + 50;

    static void plan(FaultDisk& disk, Lie lie, std::uint64_t from)
    {
        std::uint64_t number = 0;
        std::memcpy(&number, mark, sizeof number);
        disk.control().marked = 0;
        disk.control().lie = lie;
        disk.control().lieFrom = from;
        disk.control().lieCount = 1;
        disk.control().lieMark = number;
    }

    TemporaryFolder card{"/dev/shm"};
};

TEST_P(LyingDisk, isNoticedBeforeTheVideoGetsItsName)
{
    FaultDisk below(320);
    MountedDisk disk(GetParam(), below);
    std::mt19937 random(20240601);
    const bool hasChecksums = std::string(GetParam()) == "btrfs"; // the file system itself finds the difference
    const int lies = rounds(hasChecksums ? 4 : 10, hasChecksums ? 100 : 500);
    for (int round = 0; round < lies && !HasFailure(); ++round) {
        const Lie lie = round % 3 == 0 ? Lie::flipsABit : round % 3 == 1 ? Lie::dropsTheData : Lie::returnsOtherData;
        SCOPED_TRACE(std::to_string(round) + ", lie " + std::to_string(lie));
        fillCard(static_cast<unsigned>(round));
        plan(below, lie, std::uniform_int_distribution<unsigned>(1, blocksOnCard)(random));
        const std::string failure = failureOfCopy(card.location(), disk.location());
        EXPECT_GE(below.control().marked, below.control().lieFrom);
        below.heal();
        const std::string difference = ": lo escrito en el disco no es igual a lo leido.";
        const bool isFound = failure.find(difference) != std::string::npos;
        EXPECT_TRUE(isFound || (hasChecksums && failure != "none")) << failure;
        EXPECT_FALSE(fs::exists(failure.substr(0, failure.find(": ")))) << failure;
        expectOnlyWholeVideos(card.location(), disk.location());
        EXPECT_EQ(failureOfCopy(card.location(), disk.location()), "none");
        EXPECT_TRUE(missing(card.location(), disk.location()).empty());
        fs::remove_all(disk.location().appending("DCIM").path());
    }
    std::printf("%d lies\n", lies);
}

INSTANTIATE_TEST_SUITE_P(On, LyingDisk, testing::Values("ext4", "xfs", "btrfs"),
                         [](const auto& tested) { return std::string(tested.param); });

/// A stick that claims more space than it has: data written beyond its end overwrites its beginning.
TEST(LyingDiskFakeStick, isNoticedBeforeItIsFull)
{
    if (!FaultDisk::isPossible())
        GTEST_SKIP() << "SKIPPED: a disk that lies needs root, FUSE and loop devices";
    const TemporaryFolder card("/dev/shm");
    for (unsigned number = 0; number < 30; ++number)
        card.file(std::to_string(100 + number) + ".mov", contentOfLength(3U << 20U, number));
    FaultDisk below(128);
    const MountedDisk disk("ext4", below);
    below.control().capacity = 40U << 20U;
    EXPECT_NE(failureOfCopy(card.location(), disk.location()), "none");
}

} // namespace
} // namespace reelkeep
