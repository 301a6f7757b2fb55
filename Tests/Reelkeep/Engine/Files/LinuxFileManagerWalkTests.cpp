#include "Files/FileError.h"
#include "Files/LinuxFileManager.h"
#include "Files/Stopped.h"
#include "Fixtures/TemporaryFolder.h"
#include "Fixtures/Unprivileged.h"
#include "Fixtures/Walks.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <mutex>
#include <set>
#include <string_view>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace reelkeep {
namespace {

namespace fs = std::filesystem;

bool isMovie(std::string_view name)
{
    return name.size() > 4 && name.substr(name.size() - 4) == ".mov";
}

std::vector<std::string> pathsBelow(const Location& root)
{
    std::vector<std::string> paths;
    for (const FileManager::Entry& entry : entriesBelow(root, isMovie))
        paths.push_back(entry.url.path());
    return paths;
}

class LinuxFileManagerWalk : public testing::Test {
protected:
    std::vector<std::string> found() const
    {
        std::vector<std::string> relative;
        for (const std::string& path : pathsBelow(root.location()))
            relative.push_back(path.substr(root.location().path().size() + 1));
        std::sort(relative.begin(), relative.end());
        return relative;
    }
    std::string outcomeUnprivileged() const
    {
        return runUnprivileged([this] {
            std::string joined;
            for (const std::string& path : found())
                joined += path + " ";
            return joined;
        });
    }
    void restrict(const std::string& relative, unsigned mode) const
    {
        fs::permissions((root / relative).path(), fs::perms(mode));
    }

    TemporaryFolder root;
};

TEST_F(LinuxFileManagerWalk, findsWantedFilesAtEveryDepth)
{
    root.file("x.mov");
    root.file("a/y.mov");
    root.file("a/b/z.mov");
    root.file("a/b/z.txt");
    EXPECT_EQ(found(), std::vector<std::string>({"a/b/z.mov", "a/y.mov", "x.mov"}));
}

TEST_F(LinuxFileManagerWalk, reportsSizeAndModificationDate)
{
    const Location file = root.file("x.mov", "12345");
    const struct timespec times[] = {{1'000'000'000, 0}, {1'700'000'000, 5}};
    ASSERT_EQ(::utimensat(AT_FDCWD, file.path().c_str(), times, 0), 0);
    const auto entries = entriesBelow(root.location(), isMovie);
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].url, file);
    EXPECT_EQ(entries[0].size, 5);
    EXPECT_EQ(entries[0].contentModificationDate,
              Date(std::chrono::seconds(1'700'000'000) + std::chrono::nanoseconds(5)));
}

TEST_F(LinuxFileManagerWalk, goesDepthFirstInTheOrderOfTheFileSystem)
{
    for (int i = 0; i < 40; ++i) {
        root.file("f" + std::to_string(i) + ".mov");
        root.file("d" + std::to_string(i) + "/in.mov");
        root.file("d" + std::to_string(i) + "/e/deep.mov");
    }
    std::vector<std::string> expected; // the standard iterator walks depth first too, in the order of the file system
    for (const auto& entry : fs::recursive_directory_iterator(root.location().path()))
        if (entry.is_regular_file())
            expected.push_back(entry.path().string());
    EXPECT_EQ(pathsBelow(root.location()), expected);
}

TEST_F(LinuxFileManagerWalk, leavesOutHiddenEntriesAndTrash)
{
    root.file(".x.mov");
    root.file(".hidden/x.mov");
    root.file("$RECYCLE.BIN/x.mov");
    root.file("a/$Recycle.Bin/x.mov");
    root.file("System Volume Information/x.mov");
    root.file("SYSTEM VOLUME INFORMATION/a/x.mov");
    root.file("a/x.mov");
    EXPECT_EQ(found(), std::vector<std::string>{"a/x.mov"});
}

TEST_F(LinuxFileManagerWalk, leavesOutPackages)
{
    for (const char* extension :
         {"app", "bundle", "framework", "plugin", "kext", "photoslibrary", "aplibrary", "imovielibrary", "fcpbundle",
          "tvlibrary", "musiclibrary", "theater", "logicx", "band", "App"})
        root.file(std::string("name.") + extension + "/x.mov");
    EXPECT_TRUE(found().empty());
}

TEST_F(LinuxFileManagerWalk, goesIntoTheStructuresOfCameras)
{
    root.file("AVCHD/BDMV/STREAM/x.mov");
    root.file("A001.RDM/A001_C001.RDC/x.mov");
    EXPECT_EQ(found().size(), 2U);
}

TEST_F(LinuxFileManagerWalk, takesNoFileForAPackage)
{
    EXPECT_TRUE(entriesBelow(root.location(), isMovie).empty());
    root.file("x.app");
    EXPECT_EQ(entriesBelow(root.location(), [](std::string_view) { return true; }).size(), 1U);
}

TEST_F(LinuxFileManagerWalk, appliesNeitherRuleToTheChosenRoot)
{
    root.file(".hidden/x.mov");
    root.file("Film.fcpbundle/x.mov");
    root.file("$RECYCLE.BIN/x.mov");
    for (const char* chosen : {".hidden", "Film.fcpbundle", "$RECYCLE.BIN"})
        EXPECT_EQ(pathsBelow(root / chosen).size(), 1U);
}

TEST_F(LinuxFileManagerWalk, followsNoLinks)
{
    TemporaryFolder elsewhere;
    elsewhere.file("x.mov");
    fs::create_directory_symlink(elsewhere.location().path(), (root / "folder").path());
    fs::create_symlink((elsewhere / "x.mov").path(), (root / "file.mov").path());
    fs::create_directory_symlink(root.location().path(), (root / "loop").path());
    EXPECT_TRUE(found().empty());
}

TEST_F(LinuxFileManagerWalk, walksARootThatIsALink)
{
    TemporaryFolder elsewhere;
    elsewhere.file("x.mov");
    fs::create_directory_symlink(elsewhere.location().path(), (root / "link").path());
    EXPECT_EQ(pathsBelow(root / "link"), std::vector<std::string>{(root / "link/x.mov").path()});
}

TEST_F(LinuxFileManagerWalk, findsRegularFilesOnly)
{
    root.folder("folder.mov");
    ASSERT_EQ(::mkfifo((root / "pipe.mov").path().c_str(), 0600), 0);
    EXPECT_TRUE(found().empty());
}

TEST_F(LinuxFileManagerWalk, findsNothingBelowARootThatIsMissingOrNotAFolder)
{
    EXPECT_TRUE(pathsBelow(root / "missing").empty());
    ASSERT_EQ(::mkfifo((root / "pipe").path().c_str(), 0600), 0); // opening it would block until it has a writer
    EXPECT_TRUE(pathsBelow(root / "pipe").empty());
    EXPECT_TRUE(pathsBelow(root.file("x.mov")).empty());
    fs::create_symlink("loop", (root / "loop").path());
    EXPECT_TRUE(pathsBelow(root / "loop").empty());
    EXPECT_TRUE(pathsBelow(root / "loop/below").empty());
}

TEST_F(LinuxFileManagerWalk, failsAtARootThatCannotBeOpenedForAnyOtherReason)
{
    const Location tooLong = root / std::string(300, 'n');
    try {
        pathsBelow(tooLong);
        FAIL() << "no error";
    } catch (const FileError& error) {
        EXPECT_EQ(error.what(), tooLong.path() + ": el nombre es demasiado largo.");
    }
}

TEST_F(LinuxFileManagerWalk, findsNothingBelowARootThatCannotBeListed)
{
    root.file("x.mov");
    restrict("", 0311);
    EXPECT_EQ(outcomeUnprivileged(), "");
}

TEST_F(LinuxFileManagerWalk, passesOverAFolderThatCannotBeOpened)
{
    root.file("a.mov");
    root.file("lost+found/x.mov");
    root.file("z.mov");
    restrict("lost+found", 0);
    EXPECT_EQ(outcomeUnprivileged(), "a.mov z.mov ");
}

TEST_F(LinuxFileManagerWalk, failsInAFolderThatMayBeListedButNotEntered)
{
    for (const char* held : {"x.mov", "x.txt", "folder/x.txt", "Film.fcpbundle/x.mov"}) {
        const std::string name = std::string("locked") + std::to_string(std::string_view(held).size());
        root.file(name + "/" + held);
        restrict(name, 0444);
        EXPECT_NE(outcomeUnprivileged().find(": no tienes permiso."), std::string::npos) << held;
        restrict(name, 0755);
        fs::remove_all((root / name).path());
    }
}

TEST_F(LinuxFileManagerWalk, failsAtARootThatMayBeListedButNotEntered)
{
    root.file("in/x.txt");
    restrict("in", 0444);
    const std::string outcome = runUnprivileged([&] { return std::to_string(pathsBelow(root / "in").size()); });
    EXPECT_NE(outcome.find(": no tienes permiso."), std::string::npos);
}

TEST_F(LinuxFileManagerWalk, passesOverAFolderThatMayNotBeEnteredAndHoldsHiddenEntriesOnly)
{
    root.file("locked/.hidden.mov");
    root.file("x.mov");
    restrict("locked", 0444);
    EXPECT_EQ(outcomeUnprivileged(), "x.mov ");
}

TEST_F(LinuxFileManagerWalk, keepsNamesThatAreNotText)
{
    root.file("\xff\xfe.mov");
    root.file("line\nbreak.mov");
    root.file("-rf.mov");
    EXPECT_EQ(found(), std::vector<std::string>({"-rf.mov", "line\nbreak.mov", "\xff\xfe.mov"}));
}

TEST_F(LinuxFileManagerWalk, readsWithTheGivenNumberOfThreads)
{
    for (int i = 0; i < 200; ++i)
        root.file(std::to_string(i) + "/x.mov");
    for (const unsigned walkers : {1U, 2U, 4U}) {
        std::mutex mutex;
        std::condition_variable arrived;
        std::set<std::thread::id> readers;
        const auto waitForTheOthers = [&](std::string_view) {
            std::unique_lock lock(mutex);
            readers.insert(std::this_thread::get_id());
            arrived.notify_all();
            arrived.wait_for(lock, std::chrono::seconds(20), [&] { return readers.size() >= walkers; });
            return true;
        };
        EXPECT_EQ(entriesBelow(root.location(), waitForTheOthers, FixedWalkers(walkers)).size(), 200U);
        EXPECT_EQ(readers.size(), walkers);
    }
}

TEST_F(LinuxFileManagerWalk, leavesOutADateThatCannotBeRepresented)
{
    const TemporaryFolder memory("/dev/shm");
    const Location file = memory.file("x.mov");
    const auto dateAt = [&](std::int64_t seconds) {
        const struct timespec times[] = {{1'000'000'000, 0}, {seconds, 0}};
        EXPECT_EQ(::utimensat(AT_FDCWD, file.path().c_str(), times, 0), 0);
        struct stat status = {};
        EXPECT_EQ(::stat(file.path().c_str(), &status), 0);
        EXPECT_EQ(status.st_mtim.tv_sec, seconds) << "this file system keeps no such dates";
        return entriesBelow(memory.location(), isMovie)[0].contentModificationDate;
    };
    constexpr std::int64_t farthest = 9'000'000'000;
    for (const std::int64_t seconds : {-farthest, std::int64_t(-1), std::int64_t(0), farthest})
        EXPECT_EQ(dateAt(seconds), Date(std::chrono::seconds(seconds)));
    for (const std::int64_t seconds : {-farthest - 1, farthest + 1, std::int64_t(10'000'000'000)})
        EXPECT_EQ(dateAt(seconds), std::nullopt);
}

/// A chain of folders with a file in each, made and removed step by step: its paths are too long for system calls.
class LinuxFileManagerWalkDeep : public LinuxFileManagerWalk {
protected:
    static constexpr int depth = 2500;

    void SetUp() override
    {
        int folder = ::open(root.location().path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        for (int i = 0; i < depth; ++i) {
            ASSERT_EQ(::mkdirat(folder, "a", 0755), 0);
            ASSERT_EQ(::mkdirat(folder, "b", 0755), 0);
            const int file = ::openat(folder, "b/x.mov", O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
            ASSERT_GE(file, 0);
            ::close(file);
            const int next = ::openat(folder, "a", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
            ::close(folder);
            folder = next;
        }
        ::close(folder);
    }
    void TearDown() override
    {
        fs::current_path(root.location().path());
        for (int i = 0; i < depth; ++i) {
            fs::rename("a", "inner");
            fs::remove_all("b");
            if (fs::exists("inner/a"))
                fs::rename("inner/a", "a");
            if (fs::exists("inner/b"))
                fs::rename("inner/b", "b");
            fs::remove("inner");
        }
        fs::current_path("/");
    }
};

TEST_F(LinuxFileManagerWalkDeep, findsFilesBeyondTheLongestPath)
{
    const auto paths = pathsBelow(root.location());
    EXPECT_EQ(paths.size(), std::size_t(depth));
    const auto deepest = std::max_element(paths.begin(), paths.end(),
                                          [](const auto& one, const auto& other) { return one.size() < other.size(); });
    EXPECT_GT(deepest->size(), std::size_t(PATH_MAX));
}

TEST_F(LinuxFileManagerWalkDeep, needsFewOpenFiles)
{
    struct rlimit before = {};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    struct rlimit few = before;
    few.rlim_cur = 64;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    EXPECT_EQ(pathsBelow(root.location()).size(), std::size_t(depth));
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
}

TEST_F(LinuxFileManagerWalk, stopsWhenAsked)
{
    root.file("a/x.mov");
    std::stop_source stop;
    const auto stopAtTheFirst = [&](std::string_view) {
        stop.request_stop();
        return true;
    };
    root.file("y.mov");
    EXPECT_THROW(entriesBelow(root.location(), stopAtTheFirst, LinuxFileManager(), stop.get_token()), Stopped);
}

TEST_F(LinuxFileManagerWalk, leavesNothingOpen)
{
    root.file("a/b/x.mov");
    const auto openFiles = [] {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    };
    const auto before = openFiles();
    found();
    EXPECT_EQ(openFiles(), before);
}

TEST_F(LinuxFileManagerWalk, leavesAccessTimesOfOwnFoldersAlone)
{
    const std::string folder = root.folder("a").path();
    const struct timespec old[] = {{1'000'000'000, 0}, {1'100'000'000, 0}}; // older than the change: due for an update
    ASSERT_EQ(::utimensat(AT_FDCWD, folder.c_str(), old, 0), 0);
    found();
    struct stat status = {};
    ASSERT_EQ(::stat(folder.c_str(), &status), 0);
    EXPECT_EQ(status.st_atim.tv_sec, 1'000'000'000);
}

} // namespace
} // namespace reelkeep
