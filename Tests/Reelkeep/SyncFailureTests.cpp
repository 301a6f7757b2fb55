#include "CopyJob.h"
#include "Fixtures/Faults.h"
#include "Fixtures/TemporaryFolder.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <linux/magic.h>
#include <map>
#include <string>
#include <sys/sysmacros.h>
#include <vector>

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
        job.run(FileManager(), [](const CopyProgress&) {});
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

TEST(Publishing, takesTheNextWayOnlyWhereThisOneIsUnknown)
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

/// Where a large video goes through the kernel's memory, no minutes of unwritten data may gather.
TEST(Writing, bringsEachPortionToTheDiskBeforeTheNextButOne)
{
    const TemporaryFolder memory("/dev/shm");
    const Location video = memory.file("card/x.mov", std::string(std::size_t(80) << 20, 'x'));
    const auto callsOn = [&](long fileSystemType) {
        std::filesystem::remove_all((memory / "disk").path());
        memory.folder("disk");
        faults::arm({.refusals = {{"fcntl", EINVAL}}, .fileSystemType = fileSystemType});
        FileManager().copyItem(video, memory / "disk/x.mov");
        auto calls = faults::disarm();
        std::erase_if(calls, [](const std::string& call) {
            return call != "write" && call != "sync_file_range" && call != "fdatasync";
        });
        return calls;
    };
    std::vector<std::string> portions;
    for (int portion = 0; portion < 10; ++portion) {
        portions.insert(portions.end(), {"write", "write", "sync_file_range"});
        if (portion > 0)
            portions.emplace_back("sync_file_range"); // waits for the portions before
    }
    EXPECT_EQ(callsOn(0), portions);

    std::vector<std::string> throughAProgram;
    for (int write = 1; write <= 20; ++write) {
        throughAProgram.emplace_back("write");
        if (write % 8 == 0)
            throughAProgram.emplace_back("fdatasync");
    }
    EXPECT_EQ(callsOn(FUSE_SUPER_MAGIC), throughAProgram);
}

TEST(Writing, failsWhereAPortionDoesNotReachTheDisk)
{
    const TemporaryFolder memory("/dev/shm");
    const Location video = memory.file("card/x.mov", std::string(std::size_t(17) << 20, 'x'));
    memory.folder("disk");
    const auto failureOf = [&](int errorNumber) {
        faults::arm(
            {.call = "sync_file_range", .occurrence = 2, .errorNumber = errorNumber, .refusals = {{"fcntl", EINVAL}}});
        int failure = 0;
        try {
            FileManager().copyItem(video, memory / "disk/x.mov");
        } catch (const FileError& error) {
            failure = error.code();
        }
        faults::disarm();
        std::filesystem::remove((memory / "disk/x.mov").path());
        return failure;
    };
    for (const int errorNumber : {EIO, ENOSPC, EDQUOT})
        EXPECT_EQ(failureOf(errorNumber), errorNumber);
    for (const int unknown : {ESPIPE, EINVAL, ENOSYS})
        EXPECT_EQ(failureOf(unknown), 0);
}

TEST(Writing, tellsADiskThatIsGoneFromOneThatIsDamaged)
{
    const TemporaryFolder memory("/dev/shm");
    const Location video = memory.file("card/x.mov", "video");
    memory.folder("disk");
    const auto failureOn = [&](const char* call, dev_t device) -> std::string {
        faults::arm({.call = call, .occurrence = 1, .errorNumber = EIO, .device = device});
        try {
            FileManager().copyItem(video, memory / "disk/x.mov");
        } catch (const FileError& error) {
            faults::disarm();
            return error.what();
        }
        faults::disarm();
        return "none";
    };
    const dev_t unplugged = makedev(8, 1'000'000);
    const std::string target = (memory / "disk/x.mov").path();
    const std::string damaged = "; comprueba que ";
    EXPECT_EQ(failureOn("write", unplugged), target + ": el disco se ha desconectado.");
    EXPECT_EQ(failureOn("renameat2", unplugged), target + ": el disco se ha desconectado.");
    EXPECT_EQ(failureOn("read", unplugged), video.path() + ": el disco se ha desconectado.");
    EXPECT_NE(failureOn("write", 0).find(damaged), std::string::npos);
    EXPECT_NE(failureOn("read", 0).find(damaged), std::string::npos);
}

/// As pipes to other programs may, and disks that are nearly full.
TEST(Writing, goesOnWhereReadsAndWritesComeUpShort)
{
    const TemporaryFolder memory("/dev/shm");
    std::string content(std::size_t(9) << 20, '\0');
    for (std::size_t i = 0; i < content.size(); i += 1000)
        content[i] = static_cast<char>(i / 1000);
    const Location video = memory.file("card/x.mov", content);
    memory.folder("disk");
    for (const std::size_t most : {std::size_t(65'537), std::size_t(1'500'000)}) {
        for (const auto& refusals : {std::map<std::string, int>{}, {{"fcntl", EINVAL}}}) {
            faults::arm({.refusals = refusals, .most = most});
            FileManager().copyItem(video, memory / "disk/x.mov");
            faults::disarm();
            EXPECT_TRUE(contentOf(memory / "disk/x.mov") == content) << most << ", " << refusals.size();
            std::filesystem::remove((memory / "disk/x.mov").path());
        }
    }
}

TEST(NewFolders, areMadeWhereThereAreNone)
{
    const TemporaryFolder memory("/dev/shm");
    memory.folder("disk/a");
    faults::arm({});
    FileManager().createDirectory(memory / "disk/a/b/c");
    const auto calls = faults::disarm();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "mkdirat"), 2);
}

} // namespace
} // namespace reelkeep
