#include "CopyJob.h"
#include "Files/FileError.h"
#include "Fixtures/Faults.h"
#include "Fixtures/RealFiles.h"
#include "Fixtures/TemporaryFolder.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace reelkeep {
namespace {

/// Copies a video into a folder that does not exist yet. Returns the `errno` value of the failure, or 0.
int failureOfCopy(const TemporaryFolder& memory)
{
    std::filesystem::remove_all((memory / "disk").path());
    const VideoFile video{.id = "new/x.mov",
                          .url = memory / "card/new/x.mov",
                          .relativePath = "new/x.mov",
                          .fileName = "x.mov",
                          .size = 5,
                          .createdAt = std::nullopt};
    const CopyJob job = {.videos = {video}, .sourceRoot = memory / "card", .destinationRoot = memory / "disk"};
    try {
        runOnRealFiles(job);
        return 0;
    } catch (const FileError& error) {
        return error.code();
    }
}

/// The kernel reports lost data only once: the next sync of the same file succeeds.
TEST(SyncFailure, isNeverTakenForACopy)
{
    const TemporaryFolder memory("/dev/shm");
    memory.file("card/new/x.mov", "video");
    faults::arm({});
    ASSERT_EQ(failureOfCopy(memory), 0);
    const auto calls = faults::disarm();
    const auto syncs = static_cast<std::size_t>(std::count(calls.begin(), calls.end(), "fsync"));
    ASSERT_GE(syncs, 4U); // two new folders, the video, and its name

    for (std::size_t number = 1; number <= syncs; ++number) {
        for (const int errorNumber : {EIO, ENOSPC, EDQUOT}) {
            faults::arm({.call = "fsync", .occurrence = number, .errorNumber = errorNumber});
            EXPECT_EQ(failureOfCopy(memory), errorNumber) << "of sync " << number;
            faults::disarm();
        }
    }
}

/// Then the whole file system is synced instead.
TEST(SyncFailure, isNotReportedIfFoldersCannotBeSyncedAlone)
{
    const TemporaryFolder memory("/dev/shm");
    memory.file("card/new/x.mov", "video");
    for (const int errorNumber : {EBADF, EINVAL, ENOTSUP, ENOSYS}) {
        faults::arm({.call = "fsync", .occurrence = 1, .errorNumber = errorNumber});
        EXPECT_EQ(failureOfCopy(memory), 0) << errorNumber;
        const auto calls = faults::disarm();
        EXPECT_EQ(std::count(calls.begin(), calls.end(), "syncfs"), 1) << errorNumber;
    }
}

TEST(SyncFailurePublishing, triesTheNextCallOnlyIfThisOneIsNotSupported)
{
    const TemporaryFolder memory("/dev/shm");
    memory.file("card/new/x.mov", "video");
    const auto linksAfter = [&](int errorNumber) {
        faults::arm({.call = "renameat2", .occurrence = 1, .errorNumber = errorNumber});
        const bool isCopied = failureOfCopy(memory) == 0;
        const auto calls = faults::disarm();
        const auto links = std::count(calls.begin(), calls.end(), "linkat");
        EXPECT_EQ(isCopied, links == 1) << errorNumber;
        return links;
    };
    for (const int unknown : {EINVAL, ENOSYS, ENOTSUP})
        EXPECT_EQ(linksAfter(unknown), 1) << unknown;
    for (const int known : {EEXIST, EACCES, EIO, ENOSPC, EROFS})
        EXPECT_EQ(linksAfter(known), 0) << known;
}

TEST(SyncFailureNewFolders, areMadeIfTheyAreMissing)
{
    const TemporaryFolder memory("/dev/shm");
    memory.folder("disk/a");
    faults::arm({});
    LinuxFileManager().createDirectory(memory / "disk/a/b/c");
    const auto calls = faults::disarm();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "mkdirat"), 2);
}

} // namespace
} // namespace reelkeep
