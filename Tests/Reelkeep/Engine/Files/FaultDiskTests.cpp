#include "Fixtures/AfterThisProcess.h"
#include "Fixtures/CopyRuns.h"
#include "Fixtures/FaultDisk.h"
#include "Fixtures/MountedDisk.h"
#include "Fixtures/PrivateView.h"
#include "Fixtures/Processes.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <thread>
#include <unistd.h>

namespace reelkeep {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

/// Whether any process is in this mount namespace.
bool hasProcesses(const std::string& view)
{
    std::error_code failure;
    for (const fs::directory_entry& process : fs::directory_iterator("/proc"))
        if (fs::read_symlink(process.path() / "ns/mnt", failure) == view && !failure)
            return true;
    return false;
}

/// Whether a loop device is attached to a file in this folder.
bool hasLoopDevice(const std::string& folder)
{
    for (const fs::directory_entry& device : fs::directory_iterator("/sys/block")) {
        std::string file;
        std::ifstream backing(device.path() / "loop/backing_file");
        if (std::getline(backing, file) && file.compare(0, folder.size(), folder) == 0)
            return true;
    }
    return false;
}

/// Tests of the fixture itself.
class FaultDiskTest : public testing::Test {
protected:
    void SetUp() override
    {
        if (!FaultDisk::isPossible())
            GTEST_SKIP() << "SKIPPED: a disk that fails needs root, FUSE and loop devices";
    }
    static void makeVideo(const TemporaryFolder& card) { card.file("x.mov", contentOfLength(12U << 20U, 3)); }
};

TEST_F(FaultDiskTest, keepsWhatWasWrittenAndCountsRequests)
{
    const TemporaryFolder card("/dev/shm");
    makeVideo(card);
    FaultDisk below(64);
    MountedDisk disk("ext4", below);
    copyMissing(card.location(), disk.location());
    EXPECT_GT(below.control().writes, 12U);
    EXPECT_GT(below.control().flushes, 0U);
    disk.takeOut();
    disk.putIn();
    const std::uint64_t reads = below.control().reads;
    expectOnlyWholeVideos(card.location(), disk.location());
    EXPECT_GE(below.control().reads, reads + 12);
}

TEST_F(FaultDiskTest, failsWritesFromOneOnUntilItIsHealed)
{
    const TemporaryFolder card("/dev/shm");
    makeVideo(card);
    for (const int errorNumber : {EIO, ENOSPC}) {
        FaultDisk below(64);
        MountedDisk disk("exfat", below);
        below.failWritesFrom(3, errorNumber);
        EXPECT_NE(failureOfCopy(card.location(), disk.location()), "none");
        below.heal();
        EXPECT_EQ(failureOfCopy(card.location(), disk.location()), "none");
        expectOnlyWholeVideos(card.location(), disk.location());
    }
}

TEST_F(FaultDiskTest, answersAsSlowlyAsItShould)
{
    FaultDisk below(64);
    const auto timeOfReading = [&] {
        const auto before = Clock::now();
        std::vector<char> bytes(1 << 20);
        std::ifstream(below.file().path()).read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return Clock::now() - before;
    };
    below.control().bytesPerSecond = 5 << 20;
    EXPECT_GE(timeOfReading(), std::chrono::milliseconds(195));
    below.heal();
    below.control().delayMicroseconds = 100'000;
    EXPECT_GE(timeOfReading(), std::chrono::milliseconds(100));
    below.heal();
    below.control().isHanging = 1;
    const std::uint64_t reads = below.control().reads;
    std::atomic<bool> isRead = false;
    std::thread reader([&] {
        timeOfReading();
        isRead = true;
    });
    waitUntil([&] { return below.control().reads > reads; });
    EXPECT_FALSE(isRead);
    below.heal();
    reader.join();
}

TEST_F(FaultDiskTest, liesAsPlanned)
{
    using Lie = FaultDiskControl::Lie;
    const std::string honest = contentOfLength(64U << 10U, 9);
    FaultDisk below(1);
    const auto written = [&](std::uint64_t lie) {
        std::ofstream(below.image().path(), std::ios::in | std::ios::out) << std::string(1 << 20, 'o');
        below.control().lie = lie;
        below.control().lieFrom = below.control().writes + 1;
        below.control().lieCount = 1;
        std::ofstream(below.file().path(), std::ios::in | std::ios::out) << honest << std::flush;
        return contentOf(below.image()).substr(0, honest.size());
    };
    const auto differences = [&](const std::string& stored) {
        int count = 0;
        for (std::size_t i = 0; i < honest.size(); ++i)
            count += stored[i] != honest[i] ? 1 : 0;
        return count;
    };
    EXPECT_EQ(differences(written(Lie::honest)), 0);
    EXPECT_EQ(differences(written(Lie::flipsABit)), 1);
    EXPECT_GT(differences(written(Lie::dropsTheData)), 3000);
    below.heal();
    below.control().capacity = 32 << 10;
    EXPECT_EQ(written(Lie::honest).substr(0, 32U << 10U), honest.substr(32U << 10U)) << "it wraps around";
    EXPECT_EQ(contentOf(below.file()).substr(0, 32U << 10U), contentOf(below.file()).substr(32U << 10U, 32U << 10U));
}

/// Copies to a disk that hangs, in private mounts. Writes the mount namespace and the folder of the disk's image to
/// `report`.
[[noreturn]] void hangUnder(const char* kind, const Location& folder)
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    // Its files in memory must be in `folder`, since it will be killed and cannot remove them.
    if (!takePrivateView() || ::mount(folder.path().c_str(), "/dev/shm", nullptr, MS_BIND, nullptr) != 0)
        ::_exit(1);
    const TemporaryFolder card("/dev/shm");
    card.file("x.mov", contentOfLength(12U << 20U, 3));
    FaultDisk below(320);
    MountedDisk disk(kind, below);
    const auto requests = [&] { return below.control().reads + below.control().writes; };
    const std::uint64_t before = requests();
    below.control().isHanging = 1;
    std::thread copy([&] { failureOfCopy(card.location(), disk.location()); });
    waitUntil([&] { return requests() > before; });
    std::ofstream("/dev/shm/report") << fs::read_symlink("/proc/self/ns/mnt").string() << '\n'
                                     << below.image().deletingLastPathComponent().path() << '\n';
    copy.join(); // never returns
    ::_exit(1);
}

/// Neither the driver, the mount nor the loop device of a file system that waits for a hanging disk is left.
TEST_F(FaultDiskTest, leavesNothingBehindWhenTheTestIsKilled)
{
    for (const char* kind : {"ntfs", "exfat", "ext4", "xfs", "btrfs"}) {
        const TemporaryFolder folder("/dev/shm");
        const pid_t test = ::fork();
        ASSERT_GE(test, 0);
        if (test == 0)
            hangUnder(kind, folder.location());
        std::string view;
        std::string place;
        EXPECT_TRUE(waitUntil([&] {
            std::ifstream report((folder / "report").path());
            return std::getline(report, view) && std::getline(report, place);
        })) << kind;
        EXPECT_TRUE(hasProcesses(view) && hasLoopDevice(place)) << kind;
        ::kill(test, SIGKILL);
        finish(test);
        EXPECT_TRUE(waitUntil([&] { return !hasProcesses(view); })) << kind;
        EXPECT_TRUE(waitUntil([&] { return !hasLoopDevice(place); })) << kind;
    }
}

TEST(AfterThisProcess, actsIfItIsKilled)
{
    const TemporaryFolder folder("/dev/shm");
    const pid_t test = ::fork();
    ASSERT_GE(test, 0);
    if (test == 0) {
        afterThisProcess([&] { folder.folder("after"); });
        folder.folder("ready");
        for (;;)
            ::pause();
    }
    EXPECT_TRUE(waitUntil([&] { return fs::exists((folder / "ready").path()); }));
    EXPECT_FALSE(fs::exists((folder / "after").path()));
    ::kill(test, SIGKILL);
    finish(test);
    EXPECT_TRUE(waitUntil([&] { return fs::exists((folder / "after").path()); }));
}

} // namespace
} // namespace reelkeep
