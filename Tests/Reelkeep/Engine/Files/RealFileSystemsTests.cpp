#include "CopyJob.h"
#include "Files/Disk.h"
#include "Files/FileDescriptor.h"
#include "Files/FileError.h"
#include "Files/Stopped.h"
#include "Fixtures/CopyRuns.h"
#include "Fixtures/MountedDisk.h"
#include "Fixtures/RealFiles.h"
#include "Fixtures/Walks.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <mutex>
#include <set>
#include <sys/inotify.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace reelkeep {
namespace {

namespace fs = std::filesystem;

class RealFileSystemsDisk : public testing::Test {
protected:
    void SetUp() override
    {
        if (!MountedDisk::isPossible())
            GTEST_SKIP() << "SKIPPED: mounting file systems needs root, FUSE and loop devices";
    }
};

class RealFileSystems : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override
    {
        if (!MountedDisk::isPossible())
            GTEST_SKIP() << "SKIPPED: mounting file systems needs root, FUSE and loop devices";
    }
};

TEST_F(RealFileSystemsDisk, isIdentifiedByItsDeviceWhateverNumberTheFileSystemReports)
{
    for (const char* kind : {"ext4", "xfs", "btrfs"}) {
        const MountedDisk disk(kind);
        const std::string id = diskHolding(disk.location()).id;
        EXPECT_EQ(id.substr(0, 4), "loop") << kind;
        fs::create_directory(disk.location().appending("below").path());
        EXPECT_EQ(diskHolding(disk.location().appending("below")).id, id) << kind;
    }
    const MountedDisk disk("btrfs");
    const Location volume = disk.location().appending("volume"); // a subvolume reports yet another number
    ASSERT_EQ(std::system(("btrfs -q subvolume create " + volume.path()).c_str()), 0);
    EXPECT_EQ(diskHolding(volume).id, diskHolding(disk.location()).id);
}

/// Processes that end while "/" is scanned must not make it fail.
TEST_F(RealFileSystemsDisk, isNotEnteredIfItBelongsToTheKernelAndLiesBelowTheRoot)
{
    const TemporaryFolder place;
    place.file("disk/x.mov");
    int mounted = 0;
    for (const char* kind : {"proc", "sysfs", "debugfs", "tracefs", "cgroup2"}) {
        const Location mountPoint = place.folder(std::string("disk/") + kind);
        if (::mount(kind, mountPoint.path().c_str(), kind, 0, nullptr) != 0)
            continue;
        ++mounted;
        std::mutex mutex;
        std::set<std::string, std::less<>> names;
        const auto note = [&](std::string_view name) {
            const std::lock_guard lock(mutex);
            names.emplace(name);
            return true;
        };
        EXPECT_EQ(entriesBelow(place / "disk", note).size(), 1U) << kind;
        EXPECT_EQ(names, (std::set<std::string, std::less<>>{"x.mov"})) << kind;
        ::umount2(mountPoint.path().c_str(), MNT_DETACH);
    }
    EXPECT_GT(mounted, 1);
    EXPECT_GT(entriesBelow(Location("/proc/self/net"), [](std::string_view) { return true; }).size(), 0U)
        << "a chosen root is always walked";
}

/// Two disks may give their folders the same numbers, so a folder is identified by its disk too.
TEST_F(RealFileSystemsDisk, isNotConfusedWithAnotherThatIsMountedOverItDuringAWalk)
{
    const TemporaryFolder place("/dev/shm");
    std::string deep = "card";
    // At this depth, with others waiting to be read, folders are closed and found again by their path. In whatever
    // order a folder is listed, some of the others come after the next one down.
    for (int depth = 0; depth < 40; ++depth) {
        for (const char* waiting : {"/a", "/d", "/z"})
            place.folder(deep + waiting);
        deep += "/d";
    }
    const Location folder = place / deep;
    const auto mountWith = [&](const std::string& name) {
        ASSERT_EQ(::mount("tmpfs", folder.path().c_str(), "tmpfs", 0, nullptr), 0);
        for (const char* below : {"/a/", "/b/", "/c/"})
            place.file(deep + below + name);
    };
    mountWith("old.mov");
    const ino_t inode = attributesOf(folder).st_ino;
    bool isReplaced = false;
    const auto replaceIt = [&](std::string_view name) {
        if (name == "old.mov" && !std::exchange(isReplaced, true))
            mountWith("new.mov");
        return true;
    };
    try {
        const auto found = entriesBelow(place / "card", replaceIt, FixedWalkers(1));
        ADD_FAILURE() << found.size() << " videos of two disks";
    } catch (const FileError& error) {
        EXPECT_EQ(error.code(), ENOENT);
        EXPECT_EQ(error.what(), folder.path() + ": no se encuentra.");
    }
    EXPECT_TRUE(isReplaced);
    EXPECT_EQ(attributesOf(folder).st_ino, inode) << "the test needs the same number on both";
    for (int mounted = 0; mounted < 2; ++mounted)
        ::umount2(folder.path().c_str(), MNT_DETACH);
}

TEST_P(RealFileSystems, reachesAnEmptyListAndKeepsEveryByte)
{
    const TemporaryFolder card;
    fillCard(card);
    MountedDisk disk(GetParam());
    const VideoList before = missing(card.location(), disk.location());
    EXPECT_EQ(before.size(), 10U);
    const auto onCard = everythingBelow(card.location());

    EXPECT_EQ(copyMissing(card.location(), disk.location()).copiedCount, 10);
    EXPECT_TRUE(missing(card.location(), disk.location()).empty());

    if (std::string(GetParam()) != "tmpfs")
        disk.remount();
    EXPECT_TRUE(missing(card.location(), disk.location()).empty());
    expectOnlyWholeVideos(card.location(), disk.location());
    for (const VideoFile& video : before)
        EXPECT_EQ(attributesOf(disk.location().appending(video.relativePath)).st_mtim.tv_sec,
                  attributesOf(video.url).st_mtim.tv_sec)
            << video.relativePath;
    EXPECT_EQ(everythingBelow(card.location()), onCard);
}

TEST_P(RealFileSystems, writesNothingTheSecondTime)
{
    const TemporaryFolder card;
    fillCard(card);
    MountedDisk disk(GetParam());
    const CopyJob job{.videos = missing(card.location(), disk.location()),
                      .sourceRoot = card.location(),
                      .destinationRoot = disk.location()};
    runOnRealFiles(job);
    const auto snapshot = [&] {
        std::vector<std::string> all;
        for (const std::string& path : everythingBelow(disk.location())) {
            const struct stat status = attributesOf(disk.location().appending(path));
            all.push_back(path + " " + std::to_string(status.st_mtim.tv_sec) + "." +
                          std::to_string(status.st_mtim.tv_nsec) + " " + std::to_string(status.st_ctim.tv_nsec));
        }
        return all;
    };
    const auto before = snapshot();
    EXPECT_EQ(runOnRealFiles(job).skippedCount, 10);
    EXPECT_EQ(snapshot(), before);
}

TEST_P(RealFileSystems, convergesAfterAnInterruption)
{
    const TemporaryFolder card;
    fillCard(card);
    const MountedDisk disk(GetParam());
    const auto wholeRun = missing(card.location(), disk.location());
    for (std::size_t interrupted = 0; interrupted < wholeRun.size(); interrupted += 3) {
        std::stop_source stop;
        const CopyJob job{.videos = wholeRun, .sourceRoot = card.location(), .destinationRoot = disk.location()};
        const auto stopThere = [&](const CopyProgress& report) {
            if (report.completedCount == std::int64_t(interrupted))
                stop.request_stop();
        };
        EXPECT_THROW(runOnRealFiles(job, stopThere, stop.get_token()), Stopped);
        expectOnlyWholeVideos(card.location(), disk.location());
    }
    copyMissing(card.location(), disk.location());
    EXPECT_TRUE(missing(card.location(), disk.location()).empty());
    expectOnlyWholeVideos(card.location(), disk.location());
}

TEST_P(RealFileSystems, canBeTheCardToo)
{
    const TemporaryFolder original;
    fillCard(original);
    const MountedDisk card(GetParam());
    copyMissing(original.location(), card.location());
    const TemporaryFolder disk;
    EXPECT_EQ(copyMissing(card.location(), disk.location()).copiedCount, 10);
    EXPECT_TRUE(missing(original.location(), disk.location()).empty());
    expectOnlyWholeVideos(original.location(), disk.location());
}

/// While the first of the two is still under way.
TEST_P(RealFileSystems, knowsItselfWhichNamesAreTheSame)
{
    const TemporaryFolder card;
    card.file("a/CLIP.MOV", "one");
    card.file("b/clip.mov", "two");
    card.file("c/CLIP.MOV", "three");
    const MountedDisk disk(GetParam());
    CopyJob job{.videos = missing(card.location(), disk.location()),
                .sourceRoot = card.location(),
                .destinationRoot = disk.location(),
                .preserveFolderStructure = false};
    const bool ignoresCase = std::string(GetParam()) == "exfat";
    EXPECT_EQ(runOnRealFiles(job), CopySummary({ignoresCase ? 1 : 2, ignoresCase ? 2 : 1, disk.location()}));
    std::vector<std::string> found = everythingBelow(disk.location());
    std::erase(found, "lost+found");
    EXPECT_EQ(found.size(), ignoresCase ? 1U : 2U);
    EXPECT_EQ(contentOf(disk.location().appending(job.videos[0].fileName)), contentOf(job.videos[0].url));
}

TEST_P(RealFileSystems, refusesEarlyAVideoThatDoesNotFitAndCopiesTheRest)
{
    const TemporaryFolder card("/dev/shm");
    const Location large = card.file("large.mov", "");
    fs::resize_file(large.path(), std::uintmax_t(2) << 30U);
    const MountedDisk disk(GetParam());
    const FileDescriptor watch(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    ASSERT_GE(::inotify_add_watch(watch.get(), disk.location().path().c_str(), IN_MODIFY), 0);
    EXPECT_EQ(failureOfCopy(card.location(), disk.location()),
              (disk.location().appending("large.mov")).path() + ": no queda espacio en el disco.");
    char event[4096];
    EXPECT_EQ(::read(watch.get(), event, sizeof event), -1) << "something was written before the refusal";
    expectOnlyWholeVideos(card.location(), disk.location());
}

INSTANTIATE_TEST_SUITE_P(OnA, RealFileSystems, testing::Values("ext4", "btrfs", "xfs", "ntfs", "exfat", "tmpfs"),
                         [](const auto& tested) { return std::string(tested.param); });

/// Its driver keeps a removed file that is open under such a name, which would stay if the driver died.
TEST_F(RealFileSystemsDisk, leavesNoNamesOfTheDriverOnNtfsWhileItCopies)
{
    const TemporaryFolder card("/dev/shm");
    for (int number = 100; number < 400; ++number)
        card.file(std::to_string(number) + ".mov", contentOfLength(20'000, unsigned(number)));
    const MountedDisk disk("ntfs");
    const CopyJob job{.videos = missing(card.location(), disk.location()),
                      .sourceRoot = card.location(),
                      .destinationRoot = disk.location()};
    std::set<std::string> names;
    runOnRealFiles(job, [&](const CopyProgress&) {
        for (const auto& entry : fs::directory_iterator(disk.location().path()))
            names.insert(entry.path().filename().string());
    });
    EXPECT_EQ(std::count_if(names.begin(), names.end(), [](const auto& name) { return name.starts_with(".fuse"); }), 0);
    EXPECT_GT(std::count_if(names.begin(), names.end(), [](const auto& name) { return name.front() != '.'; }), 100);
}

TEST_F(RealFileSystemsDisk, reportsANameThatExfatDoesNotAllow)
{
    const MountedDisk disk("exfat");
    for (const char* name : {"a:b.mov", "what?.mov", "\xff\xfe.mov"}) {
        const TemporaryFolder card;
        card.file(name, std::string(100, 'x'));
        EXPECT_EQ(failureOfCopy(card.location(), disk.location()),
                  disk.location().appending(name).path() + ": este disco no admite ese nombre.");
    }
    const TemporaryFolder card;
    card.file("folder:1/x.mov");
    EXPECT_EQ(failureOfCopy(card.location(), disk.location()),
              disk.location().appending("folder:1").path() + ": este disco no admite ese nombre.");
    EXPECT_TRUE(everythingBelow(disk.location()).empty());
}

TEST_F(RealFileSystemsDisk, reportsAForbiddenNameBeforeALongCopy)
{
    const MountedDisk disk("exfat");
    const TemporaryFolder card("/dev/shm");
    fs::resize_file(card.file("a:b.mov", "").path(), std::uintmax_t(400) << 20U);
    const auto before = std::chrono::steady_clock::now();
    EXPECT_NE(failureOfCopy(card.location(), disk.location()), "none");
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(200));
}

TEST_F(RealFileSystemsDisk, leavesAloneAVideoOnExfatThatDiffersOnlyInLetterCase)
{
    const MountedDisk disk("exfat");
    const TemporaryFolder card;
    const Location source = card.file("CLIP.MOV", "from the card");
    copyFile(card.file("theirs.mov", "theirs"), disk.location().appending("clip.mov"));
    EXPECT_THROW(copyFile(source, disk.location().appending("CLIP.MOV")), FileError);
    EXPECT_EQ(contentOf(disk.location().appending("clip.mov")), "theirs");
}

TEST_F(RealFileSystemsDisk, keepsWholeVideosOnADiskThatFillsUp)
{
    const TemporaryFolder card("/dev/shm");
    for (const char* name : {"1.mov", "2.mov", "3.mov", "4.mov"})
        card.file(name, contentOfLength(4U << 20U, 7));
    const MountedDisk disk("tmpfs", 10);
    EXPECT_EQ(failureOfCopy(card.location(), disk.location()),
              disk.location().appending("3.mov").path() + ": no queda espacio en el disco.");
    EXPECT_EQ(everythingBelow(disk.location()), std::vector<std::string>({"1.mov", "2.mov"}));
    expectOnlyWholeVideos(card.location(), disk.location());
}

TEST_F(RealFileSystemsDisk, leavesNothingIfAnotherProgramFillsTheDiskDuringACopy)
{
    const TemporaryFolder card("/dev/shm");
    card.file("x.mov", contentOfLength(64U << 20U, 7));
    const MountedDisk disk("tmpfs", 70);
    const Location growing = disk.location().appending(".x.mov.reelkeep-copia");
    std::thread other([&] {
        struct stat status = {};
        waitUntil([&] { return ::stat(growing.path().c_str(), &status) == 0 && status.st_size > 0; });
        const int filler = ::open(disk.location().appending("filler").path().c_str(), O_CREAT | O_WRONLY, 0644);
        constexpr off_t portion = 1 << 20; // Small, so that it gets its share however fast the copy is.
        for (off_t end = 0; ::posix_fallocate(filler, end, portion) == 0; end += portion) {
        }
        ::close(filler);
    });
    EXPECT_EQ(failureOfCopy(card.location(), disk.location()),
              disk.location().appending("x.mov").path() + ": no queda espacio en el disco.");
    other.join();
    EXPECT_EQ(everythingBelow(disk.location()), std::vector<std::string>{"filler"});
}

TEST_F(RealFileSystemsDisk, reportsThatADiskIsReadOnly)
{
    const TemporaryFolder card;
    card.file("x.mov");
    card.file("folder/y.mov");
    MountedDisk disk("ext4", 64);
    disk.makeReadOnly();
    const std::string failure = failureOfCopy(card.location(), disk.location());
    EXPECT_NE(failure.find(": el disco es de solo lectura."), std::string::npos) << failure;
}

TEST_F(RealFileSystemsDisk, copiesFromAReadOnlyCard)
{
    const TemporaryFolder original;
    fillCard(original);
    MountedDisk card("ext4");
    copyMissing(original.location(), card.location());
    card.makeReadOnly();
    const TemporaryFolder disk;
    EXPECT_EQ(copyMissing(card.location(), disk.location()).copiedCount, 10);
}

TEST_F(RealFileSystemsDisk, sharesBlocksWithinOneDisk)
{
    for (const char* kind : {"btrfs", "xfs"}) {
        const MountedDisk disk(kind);
        const TemporaryFolder card;
        const std::string content = contentOfLength(64U << 20U, 3);
        card.file("x.mov", content);
        copyFile(card / "x.mov", disk.location().appending("x.mov"));
        const auto freeBytes = [&] {
            const FileDescriptor root(::open(disk.location().path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
            EXPECT_EQ(::syncfs(root.get()), 0);
            struct statvfs status = {};
            ::fstatvfs(root.get(), &status);
            return std::int64_t(status.f_bfree * status.f_frsize);
        };
        const auto before = freeBytes();
        copyFile(disk.location().appending("x.mov"), disk.location().appending("again.mov"));
        EXPECT_LT(before - freeBytes(), 8 << 20) << kind;
        EXPECT_TRUE(contentOf(disk.location().appending("again.mov")) == content);
    }
}

} // namespace
} // namespace reelkeep
