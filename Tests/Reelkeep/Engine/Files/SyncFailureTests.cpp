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

/// Copies a video into a folder that does not exist yet; the `errno` value of the failure, 0 without one.
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

/// The kernel tells of data that did not reach the disk once: whoever asks again is told that all is well.
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

/// Such a file system is asked to sync as a whole instead.
TEST(SyncFailure, isNoneWhereFoldersCannotBeSyncedAlone)
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

TEST(SyncFailurePublishing, takesTheNextWayOnlyWhereThisOneIsUnknown)
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

TEST(SyncFailureNewFolders, areMadeWhereThereAreNone)
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
