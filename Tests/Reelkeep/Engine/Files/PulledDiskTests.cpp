#include "CopyJob.h"
#include "Files/FileError.h"
#include "Fixtures/CopyRuns.h"
#include "Fixtures/MountedDisk.h"
#include "Fixtures/RealFiles.h"
#include "Fixtures/Walks.h"
#include "VideoSyncService.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>

namespace reelkeep {
namespace {

class PulledDiskTest : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override
    {
        if (!MountedDisk::isPossible())
            GTEST_SKIP() << "SKIPPED: mounting file systems needs root, FUSE and loop devices";
    }
    static void fill(const Location& disk)
    {
        const TemporaryFolder original;
        for (int i = 0; i < 30; ++i)
            original.file("folder" + std::to_string(i) + "/clip.mov");
        copyMissing(original.location(), disk);
    }
};

TEST_P(PulledDiskTest, isAnErrorInMidScanAndNotAShorterList)
{
    for (int afterNames = 1; afterNames <= 30; afterNames += 4) {
        MountedDisk disk(GetParam());
        fill(disk.location());
        if (std::string(GetParam()) != "tmpfs")
            disk.remount(); // with nothing cached
        std::atomic<int> names = 0;
        const auto pullAtTheName = [&](std::string_view) {
            if (++names == afterNames)
                disk.kill();
            return true;
        };
        try {
            const auto found = entriesBelow(disk.location(), pullAtTheName);
            EXPECT_EQ(found.size(), 30U) << "a shorter list after " << afterNames;
        } catch (const FileError& error) {
            EXPECT_NE(std::string(error.what()).find("el disco se ha desconectado"), std::string::npos) << error.what();
        }
    }
}

TEST_P(PulledDiskTest, isAnErrorInMidCopyAndTheNextRunCompletes)
{
    const TemporaryFolder card("/dev/shm");
    card.file("x.mov", contentOfLength(100U << 20U, 5));
    MountedDisk disk(GetParam());
    const Location growing = disk.location().appending(".x.mov.reelkeep-copia");
    std::thread hand([&] {
        struct stat status = {};
        waitUntil([&] { return ::stat(growing.path().c_str(), &status) == 0 && status.st_size > (2 << 20); });
        disk.kill();
    });
    const std::string failure = failureOfCopy(card.location(), disk.location());
    hand.join();
    EXPECT_EQ(failure, disk.location().appending("x.mov").path() + ": el disco se ha desconectado.");
    disk.remount();
    EXPECT_FALSE(LinuxFileManager().fileExists(disk.location().appending("x.mov")));
    EXPECT_EQ(failureOfCopy(card.location(), disk.location()), "none");
    expectOnlyWholeVideos(card.location(), disk.location());
}

TEST_P(PulledDiskTest, isAnErrorWhenTheCardGoesInMidCopy)
{
    const TemporaryFolder original("/dev/shm");
    original.file("x.mov", contentOfLength(100U << 20U, 5));
    MountedDisk card(GetParam());
    copyMissing(original.location(), card.location());
    card.remount();
    const TemporaryFolder disk;
    const Location growing = disk / ".x.mov.reelkeep-copia";
    std::thread hand([&] {
        struct stat status = {};
        waitUntil([&] { return ::stat(growing.path().c_str(), &status) == 0 && status.st_size > (2 << 20); });
        card.kill();
    });
    const std::string failure = failureOfCopy(card.location(), disk.location());
    hand.join();
    EXPECT_EQ(failure, card.location().appending("x.mov").path() + ": el disco se ha desconectado.");
    EXPECT_TRUE(everythingBelow(disk.location()).empty());
}

INSTANTIATE_TEST_SUITE_P(OnA, PulledDiskTest, testing::Values("ntfs", "exfat"),
                         [](const auto& tested) { return std::string(tested.param); });

class PulledDiskDetached : public PulledDiskTest {};

TEST_P(PulledDiskDetached, isReadCompletelyOrAnErrorInMidScan)
{
    const TemporaryFolder original;
    std::string deep;
    for (int depth = 0; depth < 40; ++depth) {
        original.file(deep + "a/clip.mov");
        original.file(deep + "z/clip.mov");
        deep += "m/";
    }
    for (int afterNames = 1; afterNames <= 80; afterNames += 13) {
        MountedDisk disk(GetParam());
        const CopyJob job{.videos = VideoSyncService::scanVideoFiles(original.location(), LinuxFileManager()),
                          .sourceRoot = original.location(),
                          .destinationRoot = disk.location()};
        runOnRealFiles(job);
        std::atomic<int> names = 0;
        const auto detachAtTheName = [&](std::string_view) {
            if (++names == afterNames)
                disk.detach();
            return true;
        };
        try {
            EXPECT_EQ(entriesBelow(disk.location(), detachAtTheName).size(), 80U);
        } catch (const FileError& error) {
            EXPECT_NE(std::string(error.what()).find(": "), std::string::npos);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(OnA, PulledDiskDetached, testing::Values("ext4", "ntfs", "exfat"),
                         [](const auto& tested) { return std::string(tested.param); });

} // namespace
} // namespace reelkeep
