#include "Files/FileError.h"
#include "Files/Stopped.h"
#include "Files/TemporaryFile.h"
#include "Files/TemporaryNames.h"
#include "Fixtures/RealFiles.h"
#include "Fixtures/TemporaryFolder.h"
#include "Fixtures/Unprivileged.h"
#include "Fixtures/Walks.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <linux/magic.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace reelkeep {
namespace {

namespace fs = std::filesystem;

struct stat attributesOf(const Location& file)
{
    struct stat status = {};
    if (::lstat(file.path().c_str(), &status) != 0)
        throw FileError(file.path(), errno);
    return status;
}

std::string growing(std::string_view name)
{
    return growingName(name, {});
}

std::string sealed(std::string_view name)
{
    return sealedName(name, {});
}

class LinuxFileManagerCopy : public testing::Test {
protected:
    std::string failureOfCopy(const Location& source, const Location& target) const
    {
        try {
            copyFile(source, target);
            return "none";
        } catch (const FileError& error) {
            return error.what();
        }
    }
    std::vector<std::string> onDisk() const { return everythingBelow(disk.location()); }

    TemporaryFolder card;
    TemporaryFolder disk;
};

TEST_F(LinuxFileManagerCopy, copiesEveryByteWhateverTheSize)
{
    std::string content;
    for (std::size_t i = 0; content.size() < 20'000'001; ++i)
        content += std::to_string(i);
    constexpr std::size_t mebibyte = 1 << 20; // from eight on, whole blocks take another way than the rest
    for (const std::size_t size : {content.size(), 12 * mebibyte + 4096, 12 * mebibyte, 8 * mebibyte + 1, 8 * mebibyte,
                                   4 * mebibyte + 1, 4 * mebibyte, std::size_t(4096), std::size_t(4095)}) {
        content.resize(size);
        copyFile(card.file("x.mov", content), disk / "x.mov");
        EXPECT_TRUE(contentOf(disk / "x.mov") == content) << size;
        EXPECT_EQ(onDisk(), std::vector<std::string>{"x.mov"});
        fs::remove((disk / "x.mov").path());
    }
}

TEST_F(LinuxFileManagerCopy, copiesAnEmptyFile)
{
    copyFile(card.file("x.mov", ""), disk / "x.mov");
    EXPECT_EQ(contentOf(disk / "x.mov"), "");
}

TEST_F(LinuxFileManagerCopy, keepsTheModificationTime)
{
    const Location source = card.file("x.mov");
    const struct timespec times[] = {{1'000'000'000, 0}, {1'600'000'000, 123'456'789}};
    ASSERT_EQ(::utimensat(AT_FDCWD, source.path().c_str(), times, 0), 0);
    copyFile(source, disk / "x.mov");
    EXPECT_EQ(attributesOf(disk / "x.mov").st_mtim.tv_sec, 1'600'000'000);
    EXPECT_EQ(attributesOf(disk / "x.mov").st_mtim.tv_nsec, 123'456'789);
}

/// exFAT disks, told to set one of the two times only, set neither and report success.
TEST_F(LinuxFileManagerCopy, setsTheAccessTimeTogetherWithTheModificationTime)
{
    const Location source = card.file("x.mov");
    const struct timespec times[] = {{1'500'000'000, 0}, {1'400'000'000, 0}}; // no reading brings it up to date
    ASSERT_EQ(::utimensat(AT_FDCWD, source.path().c_str(), times, 0), 0);
    copyFile(source, disk / "x.mov");
    EXPECT_EQ(attributesOf(disk / "x.mov").st_atim.tv_sec, 1'500'000'000);
}

TEST_F(LinuxFileManagerCopy, keepsTheRightsToReadAndWriteOnly)
{
    for (const mode_t mode : {06755U, 0444U, 0600U, 0666U, 0111U}) {
        if ((mode & 0400U) == 0 && ::geteuid() != 0)
            continue; // only root can read it
        const Location source = card.file("x.mov");
        ASSERT_EQ(::chmod(source.path().c_str(), mode), 0);
        const Location target = disk / std::to_string(mode);
        copyFile(source, target);
        EXPECT_EQ(attributesOf(target).st_mode & 07777U, mode & 0666U);
        fs::remove(source.path());
    }
}

TEST_F(LinuxFileManagerCopy, leavesTheSourcesAccessTimeAlone)
{
    const Location source = card.file("x.mov");
    const struct timespec old[] = {{1'000'000'000, 0}, {1'100'000'000, 0}}; // older than modified: due for an update
    ASSERT_EQ(::utimensat(AT_FDCWD, source.path().c_str(), old, 0), 0);
    copyFile(source, disk / "x.mov");
    EXPECT_EQ(attributesOf(source).st_atim.tv_sec, 1'000'000'000);
}

TEST_F(LinuxFileManagerCopy, readsFilesOfOtherOwners)
{
    const Location source = card.file("x.mov");
    fs::permissions(disk.location().path(), fs::perms(0777));
    EXPECT_EQ(runUnprivileged([&] { return failureOfCopy(source, disk / "x.mov"); }), "none");
    EXPECT_EQ(contentOf(disk / "x.mov"), "x");
}

TEST_F(LinuxFileManagerCopy, worksInAFolderThatCannotBeListed)
{
    const Location source = card.file("x.mov");
    fs::permissions(disk.location().path(), fs::perms(0333));
    EXPECT_EQ(runUnprivileged([&] { return failureOfCopy(source, disk / "x.mov"); }), "none");
    EXPECT_EQ(contentOf(disk / "x.mov"), "x");
}

TEST_F(LinuxFileManagerCopy, copiesNamesOfTheGreatestLength)
{
    const std::string name(255, 'n');
    copyFile(card.file(name), disk / name);
    EXPECT_EQ(onDisk(), std::vector<std::string>{name});
}

TEST_F(LinuxFileManagerCopy, copiesBeyondTheLongestPath)
{
    LinuxFileManager files;
    Location source = card.location();
    Location target = disk.location();
    while (source.path().size() < 5000) {
        source = source.appending(std::string(200, 'n'));
        target = target.appending(std::string(200, 'n'));
    }
    files.createDirectory(source);
    files.createDirectory(target);
    const Location seed = card.file("x.mov", "deep");
    copyFile(seed, source.appending("x.mov"));
    copyFile(source.appending("x.mov"), target.appending("x.mov"));
    EXPECT_TRUE(files.fileExists(target.appending("x.mov")));
    EXPECT_EQ(entriesBelow(disk.location(), [](std::string_view) { return true; })[0].size, 4);
}

TEST_F(LinuxFileManagerCopy, neverReplacesWhatStandsAtTheTarget)
{
    const Location source = card.file("x.mov", "new");
    disk.file("file.mov", "old");
    disk.folder("folder.mov");
    disk.file("empty.mov", "");
    fs::create_symlink("nowhere", (disk / "link.mov").path());
    const auto before = onDisk();
    for (const char* name : {"file.mov", "folder.mov", "empty.mov", "link.mov"})
        EXPECT_EQ(failureOfCopy(source, disk / name),
                  (disk / name).path() + ": ha aparecido algo con ese nombre durante la copia.");
    EXPECT_EQ(contentOf(disk / "file.mov"), "old");
    EXPECT_EQ(onDisk(), before);
}

TEST_F(LinuxFileManagerCopy, failsWithoutASource)
{
    EXPECT_EQ(failureOfCopy(card / "x.mov", disk / "x.mov"), (card / "x.mov").path() + ": no se encuentra.");
    EXPECT_TRUE(onDisk().empty());
}

TEST_F(LinuxFileManagerCopy, copiesRegularFilesOnly)
{
    card.folder("folder.mov");
    card.file("real.mov");
    fs::create_symlink("real.mov", (card / "link.mov").path());
    ASSERT_EQ(::mkfifo((card / "pipe.mov").path().c_str(), 0600), 0);
    EXPECT_EQ(failureOfCopy(card / "folder.mov", disk / "x.mov"),
              (card / "folder.mov").path() + ": ya no es un archivo.");
    EXPECT_EQ(failureOfCopy(card / "pipe.mov", disk / "x.mov"), (card / "pipe.mov").path() + ": ya no es un archivo.");
    EXPECT_EQ(failureOfCopy(card / "link.mov", disk / "x.mov"),
              (card / "link.mov").path() + ": es un enlace, no un archivo.");
    EXPECT_TRUE(onDisk().empty());
}

TEST_F(LinuxFileManagerCopy, refusesAFileThatHasMoreOrFewerBytesThanItSays)
{
    const Location saysNone("/proc/version");
    const Location saysAPage("/sys/kernel/mm/transparent_hugepage/enabled");
    for (const Location& source : {saysNone, saysAPage})
        EXPECT_EQ(failureOfCopy(source, disk / "x.mov"),
                  source.path() + ": no tiene tantos datos como dice su tamano.");
    EXPECT_TRUE(onDisk().empty());
}

TEST_F(LinuxFileManagerCopy, refusesAFileThatChangesMeanwhile)
{
    const Location source = card.file("x.mov", std::string(std::size_t(4) << 20, 'x'));
    std::jthread other([&](const std::stop_token& stop) {
        for (long moment = 0; !stop.stop_requested(); ++moment) {
            const struct timespec times[] = {{0, UTIME_OMIT}, {1'700'000'000, moment % 1'000'000}};
            ::utimensat(AT_FDCWD, source.path().c_str(), times, 0);
        }
    });
    std::string failure = "none";
    for (int round = 0; round < 500 && failure == "none"; ++round) {
        fs::remove((disk / "x.mov").path());
        failure = failureOfCopy(source, disk / "x.mov");
    }
    EXPECT_EQ(failure, source.path() + ": ha cambiado durante la copia.");
    EXPECT_TRUE(onDisk().empty());
}

TEST_F(LinuxFileManagerCopy, failsWithoutATargetFolder)
{
    EXPECT_EQ(failureOfCopy(card.file("x.mov"), disk / "missing/x.mov"),
              (disk / "missing").path() + ": no se encuentra.");
}

TEST_F(LinuxFileManagerCopy, failsWithoutPermission)
{
    const Location source = card.file("x.mov");
    fs::permissions(disk.location().path(), fs::perms(0555));
    EXPECT_EQ(runUnprivileged([&] { return failureOfCopy(source, disk / "x.mov"); }),
              (disk / "x.mov").path() + ": no tienes permiso.");
}

TEST_F(LinuxFileManagerCopy, refusesEarlyAFileAboveTheProcessLimit)
{
    const Location source = card.file("x.mov", std::string(8192, 'x'));
    const auto outcomeWithin = [&](rlim_t bytes) {
        struct rlimit before = {};
        EXPECT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
        const struct rlimit limit = {bytes, before.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
        const std::string outcome = failureOfCopy(source, disk / "x.mov");
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
        return outcome;
    };
    EXPECT_EQ(outcomeWithin(8191), (disk / "x.mov").path() + ": el archivo es demasiado grande para este disco.");
    EXPECT_TRUE(onDisk().empty());
    EXPECT_EQ(outcomeWithin(8192), "none");
}

TEST(LinuxFileManagerCopyLargestFile, isFourGigabytesLessAByteOnFat32)
{
    EXPECT_EQ(largestFile(MSDOS_SUPER_MAGIC), 4'294'967'295);
    EXPECT_EQ(largestFile(EXT4_SUPER_MAGIC), std::nullopt);
}

TEST_F(LinuxFileManagerCopy, leavesNothingBehindWhenStopped)
{
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(copyFile(card.file("x.mov"), disk / "x.mov", stop.get_token()), Stopped);
    EXPECT_TRUE(onDisk().empty());
}

TEST_F(LinuxFileManagerCopy, replacesWhatAKilledRunLeftBehind)
{
    disk.file(growing("x.mov"), "half a vid");
    disk.file(sealed("x.mov"), "whole but not named");
    copyFile(card.file("x.mov", "all of it"), disk / "x.mov");
    EXPECT_EQ(contentOf(disk / "x.mov"), "all of it");
    EXPECT_EQ(onDisk(), std::vector<std::string>{"x.mov"});
}

TEST_F(LinuxFileManagerCopy, leavesAloneTheSecondNameOfAFinishedVideo)
{
    const Location finished = disk.file("moved.mov", "finished");
    fs::create_hard_link(finished.path(), (disk / growing("x.mov")).path());
    copyFile(card.file("x.mov"), disk / "x.mov");
    EXPECT_EQ(contentOf(finished), "finished");
    EXPECT_EQ(onDisk(), std::vector<std::string>({"moved.mov", "x.mov"}));
}

TEST_F(LinuxFileManagerCopy, leavesAloneWhatALivingRunIsWriting)
{
    const Location theirs = disk.file(growing("x.mov"), "half");
    const int living = ::open(theirs.path().c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(::flock(living, LOCK_EX), 0);
    EXPECT_EQ(failureOfCopy(card.file("x.mov"), disk / "x.mov"),
              (disk / "x.mov").path() + ": otra ventana lo esta copiando.");
    EXPECT_EQ(contentOf(theirs), "half");
    ::close(living);
}

TEST_F(LinuxFileManagerCopy, takesItsOwnAbandonedReservationForNothing)
{
    disk.file("x.mov", "");
    EXPECT_TRUE(LinuxFileManager().fileExists(disk / "x.mov"));
    disk.file(sealed("x.mov"), "whole");
    EXPECT_FALSE(LinuxFileManager().fileExists(disk / "x.mov"));
    copyFile(card.file("x.mov", "whole"), disk / "x.mov");
    EXPECT_EQ(contentOf(disk / "x.mov"), "whole");
    EXPECT_EQ(onDisk(), std::vector<std::string>{"x.mov"});
}

TEST_F(LinuxFileManagerCopy, takesNoFileWithContentForAReservation)
{
    disk.file("x.mov", "theirs");
    disk.file(sealed("x.mov"), "whole");
    EXPECT_TRUE(LinuxFileManager().fileExists(disk / "x.mov"));
    EXPECT_NE(failureOfCopy(card.file("x.mov"), disk / "x.mov"), "none");
    EXPECT_EQ(contentOf(disk / "x.mov"), "theirs");
}

TEST_F(LinuxFileManagerCopy, leavesNothingOpen)
{
    const auto openFiles = [] {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    };
    const auto before = openFiles();
    copyFile(card.file("x.mov"), disk / "x.mov");
    EXPECT_EQ(openFiles(), before);
}

} // namespace
} // namespace reelkeep
