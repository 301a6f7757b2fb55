#include "Files/FileError.h"
#include "Fixtures/FaultDisk.h"
#include "Fixtures/LongRuns.h"
#include "Fixtures/MountedDisk.h"
#include "Fixtures/Processes.h"
#include "Fixtures/RealFiles.h"
#include "VideoSyncService.h"

#include <cerrno>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace reelkeep {
namespace {

constexpr int videosOnTheCard = 300;

/// 300 videos in 30 folders, 20 of them subfolders of the other ten, and as many other files.
void fillWithVideos(const Location& card)
{
    for (int i = 0; i < videosOnTheCard; ++i) {
        const int part = i / 10 % 3;
        const std::string folder =
            "DCIM/" + std::to_string(100 + i / 30) + "CANON" + (part == 0 ? "" : "/PART" + std::to_string(part));
        LinuxFileManager().createDirectory(card.appending(folder));
        const std::string name = card.path() + "/" + folder + "/MVI_" + std::to_string(1000 + i);
        std::ofstream(name + ".MOV") << "video " << i;
        std::ofstream(name + ".THM") << "picture " << i;
    }
}

enum class Outcome { complete, error, shortList };

Outcome scan(const Location& card, std::size_t complete = videosOnTheCard)
{
    try {
        return VideoSyncService::scanVideoFiles(card, LinuxFileManager()).size() == complete ? Outcome::complete
                                                                                             : Outcome::shortList;
    } catch (const FileError&) {
        return Outcome::error;
    }
}

class FailingDiskScan : public testing::TestWithParam<const char*> {
protected:
    static constexpr int mebibytes = 320; // xfs needs at least 300

    void SetUp() override
    {
        if (!FaultDisk::isPossible())
            GTEST_SKIP() << "SKIPPED: a disk that fails needs root, FUSE and loop devices";
    }
};

TEST_P(FailingDiskScan, givesTheWholeListOrAnErrorIfReadsFailFromAnyMoment)
{
    FaultDisk below(mebibytes);
    MountedDisk card(GetParam(), below);
    fillWithVideos(card.location());
    card.takeOut();
    card.putIn(); // with nothing cached
    const std::uint64_t readsBefore = below.control().reads;
    ASSERT_EQ(scan(card.location()), Outcome::complete);
    const std::uint64_t reads = below.control().reads - readsBefore;

    int complete = 0;
    int errors = 0;
    int shortLists = 0;
    const auto step = reads / static_cast<std::uint64_t>(rounds(12, 1 << 20)) + 1;
    for (std::uint64_t moment = 1; moment <= reads; moment += step) {
        card.takeOut();
        card.putIn();
        below.failReadsFrom(moment, EIO);
        const Outcome outcome = scan(card.location());
        below.heal();
        complete += outcome == Outcome::complete ? 1 : 0;
        errors += outcome == Outcome::error ? 1 : 0;
        shortLists += outcome == Outcome::shortList ? 1 : 0;
    }
    std::printf("%d reads in a scan; all failed from each of %d moments on: %d complete lists, %d errors, %d short\n",
                static_cast<int>(reads), complete + errors + shortLists, complete, errors, shortLists);
    EXPECT_EQ(shortLists, 0);
    EXPECT_GE(errors, 5) << "too few of the reads matter for the test to prove anything";
}

/// The number of open files is limited, and a walk keeps the parents of the folder that it reads open.
TEST(FailingDiskFewDescriptors, givesTheWholeListOrAnError)
{
    constexpr int depth = 40;
    const TemporaryFolder card;
    std::string deep;
    for (int level = 0; level < depth; ++level) {
        card.file(deep + "a/clip.mov");
        card.file(deep + "z/clip.mov");
        deep += "m/";
    }
    int complete = 0;
    int errors = 0;
    for (rlim_t allowed = 6; allowed <= 60; ++allowed) {
        const pid_t process = ::fork();
        ASSERT_GE(process, 0);
        if (process == 0) {
            const struct rlimit limit = {.rlim_cur = allowed, .rlim_max = allowed};
            ::setrlimit(RLIMIT_NOFILE, &limit);
            ::_exit(static_cast<int>(scan(card.location(), 2 * depth)));
        }
        const int status = finish(process);
        ASSERT_TRUE(WIFEXITED(status));
        const auto outcome = static_cast<Outcome>(WEXITSTATUS(status));
        EXPECT_NE(outcome, Outcome::shortList) << allowed << " descriptors";
        complete += outcome == Outcome::complete ? 1 : 0;
        errors += outcome == Outcome::error ? 1 : 0;
    }
    std::printf("with 6 to 60 descriptors: %d complete lists, %d errors\n", complete, errors);
    EXPECT_GT(complete, 0);
    EXPECT_GT(errors, 0);
}

INSTANTIATE_TEST_SUITE_P(OnA, FailingDiskScan, testing::Values("ext4", "exfat", "ntfs", "xfs", "btrfs"),
                         [](const auto& tested) { return std::string(tested.param); });

} // namespace
} // namespace reelkeep
