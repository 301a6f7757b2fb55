#include "CopyJob.h"
#include "Files/LinuxFileManager.h"
#include "Fixtures/CopyRuns.h"
#include "Fixtures/LongRuns.h"
#include "Fixtures/MountedDisk.h"
#include "Fixtures/Processes.h"
#include "VideoSyncService.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <sys/wait.h>
#include <thread>

namespace reelkeep {
namespace {

using Clock = std::chrono::steady_clock;

/// A copy of fifty videos in a separate process, killed at random moments.
class KilledCopyTest : public testing::TestWithParam<const char*> {
protected:
    static constexpr int videos = 50;

    void SetUp() override
    {
        for (int i = 0; i < videos; ++i)
            card.file("DCIM/" + std::to_string(100 + i / 10) + "/MVI_" + std::to_string(i) + ".MOV",
                      contentOfLength(1000 + std::size_t(i) * 20'000, unsigned(i)));
        if (std::string(GetParam()) == "here")
            return;
        if (!MountedDisk::isPossible())
            GTEST_SKIP() << "SKIPPED: mounting file systems needs root, FUSE and loop devices";
        disk = std::make_unique<MountedDisk>(GetParam());
    }

    Location freshFolder(int number) const
    {
        const Location base = disk ? disk->location() : folder.location();
        const Location made = base.appending("disk" + std::to_string(number));
        LinuxFileManager().createDirectory(made);
        return made;
    }
    pid_t startCopy(const Location& target) const { return start({COPY_PROBE, card.location().path(), target.path()}); }
    /// A kill may leave complete videos, the hidden files of copies under way, and on some disks the reservation of one
    /// of them.
    void expectNoHarm(const Location& target) const
    {
        for (const std::string& path : everythingBelow(target)) {
            const Location found = target.appending(path);
            const bool isHidden = path.find("/.MVI_") != std::string::npos;
            const bool isVideo =
                !isHidden && S_ISREG(attributesOf(found).st_mode) && LinuxFileManager().fileExists(found);
            EXPECT_TRUE(!isVideo || contentOf(found) == contentOf(card / path)) << path;
        }
    }

    /// If videos are published by link, a kill may leave the hidden name beside the final one. As the video is not
    /// missing it is never copied again, so the hidden name is not in the way.
    static void removeSecondNames(const Location& target)
    {
        for (const std::string& path : everythingBelow(target)) {
            const Location found = target.appending(path);
            const struct stat status = attributesOf(found);
            if (path.find(".reelkeep-copia") != std::string::npos && S_ISREG(status.st_mode) && status.st_nlink == 2)
                std::filesystem::remove(found.path());
        }
    }

    TemporaryFolder card{"/dev/shm"};
    TemporaryFolder folder;
    std::unique_ptr<MountedDisk> disk;
};

TEST_P(KilledCopyTest, leavesNoHalfVideoAndTheNextRunCompletes)
{
    const auto before = Clock::now();
    ASSERT_EQ(finish(startCopy(freshFolder(0))), 0);
    auto wholeTime = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - before).count();
    std::mt19937 random(20240501);
    int inMidCopy = 0;
    const int kills =
        rounds(std::string(GetParam()) == "here" ? 30 : 10, std::string(GetParam()) == "here" ? 500 : 100);
    for (int number = 1; inMidCopy < kills && number <= 20 * kills && !HasFailure(); ++number) {
        const Location target = freshFolder(number);
        const pid_t copy = startCopy(target);
        const auto moment = std::chrono::microseconds(std::uniform_int_distribution<long>(0, wholeTime)(random));
        std::this_thread::sleep_for(moment); // the kill comes at a random moment
        ::kill(copy, SIGKILL);
        if (WIFSIGNALED(finish(copy)))
            ++inMidCopy;
        else // the machine is faster than during the first copy
            wholeTime -= wholeTime / 4;
        expectNoHarm(target);
        EXPECT_EQ(failureOfCopy(card.location(), target), "none");
        EXPECT_TRUE(missing(card.location(), target).empty());
        removeSecondNames(target);
        expectOnlyWholeVideos(card.location(), target);
        std::filesystem::remove_all(target.path());
    }
    std::printf("%d kills in mid-run\n", inMidCopy);
    EXPECT_EQ(inMidCopy, kills);
}

INSTANTIATE_TEST_SUITE_P(On, KilledCopyTest, testing::Values("here", "ntfs", "exfat"),
                         [](const auto& tested) { return std::string(tested.param); });

} // namespace
} // namespace reelkeep
