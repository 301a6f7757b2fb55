#include "CopyJob.h"
#include "Files/FileDescriptor.h"
#include "Files/FileError.h"
#include "Files/SourceFile.h"
#include "Files/Stopped.h"
#include "Files/TemporaryNames.h"
#include "Fixtures/RealFiles.h"
#include "Fixtures/TemporaryFolder.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <linux/magic.h>
#include <optional>
#include <string>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/vfs.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace reelkeep {
namespace {

namespace fs = std::filesystem;

bool waitUntilExists(const Location& file)
{
    const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!fs::exists(file.path()) && std::chrono::steady_clock::now() < patience)
        std::this_thread::yield();
    return fs::exists(file.path());
}

/// A run of so many small videos that its groups overlap: one is written while another is completed.
class CopyRunTest : public testing::Test {
protected:
    static constexpr int several = 400; ///< In groups of up to 128.

    static std::string nameOf(int number) { return std::to_string(1000 + number) + ".mov"; }

    void fillCard(int count = several)
    {
        for (int number = 0; number < count; ++number)
            names.push_back(nameOf(number));
        for (const std::string& name : names)
            card.file("DCIM/" + name, "content of " + name);
    }
    void fillCardWith(const std::vector<std::string>& paths)
    {
        names = paths;
        for (const std::string& path : paths)
            card.file(path, path);
    }
    CopyJob job(bool preserves = true) const
    {
        std::vector<VideoFile> videos;
        for (const std::string& name : names)
            videos.push_back(record(name.find('/') == std::string::npos ? "DCIM/" + name : name));
        return {.videos = VideoList(std::move(videos)),
                .sourceRoot = card.location(),
                .destinationRoot = disk.location(),
                .preserveFolderStructure = preserves};
    }
    static VideoFile record(const std::string& path)
    {
        return {.id = path,
                .url = {},
                .relativePath = path,
                .fileName = path.substr(path.rfind('/') + 1),
                .size = 1,
                .createdAt = std::nullopt};
    }
    /// Runs the job, and `deed` right before the video with index `at`. Returns the path of the failure, or "none".
    std::string failureOf(const CopyJob& run, int at = -1, const std::function<void()>& deed = nullptr)
    {
        try {
            summary = runOnRealFiles(run, [&](const CopyProgress& report) {
                reports.push_back(report.completedCount);
                if (report.completedCount == at)
                    deed();
            });
            return "none";
        } catch (const FileError& error) {
            return error.path();
        }
    }
    Location target(int number) const { return disk / ("DCIM/" + nameOf(number)); }
    /// Expects the first `count` videos, complete, and nothing else, not even hidden files.
    void expectExactlyTheFirst(int count) const
    {
        std::vector<std::string> expected;
        for (int number = 0; number < count; ++number) {
            expected.push_back("DCIM/" + nameOf(number));
            EXPECT_EQ(contentOf(target(number)), "content of " + nameOf(number));
        }
        std::vector<std::string> found = everythingBelow(disk.location());
        std::erase(found, "DCIM");
        EXPECT_EQ(found, expected);
    }

    TemporaryFolder card{"/dev/shm"};
    TemporaryFolder disk{"/dev/shm"};
    std::vector<std::string> names;
    std::vector<std::int64_t> reports;
    CopySummary summary;
};

TEST_F(CopyRunTest, publishesEverythingInManyGroups)
{
    fillCard();
    EXPECT_EQ(failureOf(job()), "none");
    EXPECT_EQ(summary, CopySummary({several, 0, disk.location()}));
    expectExactlyTheFirst(several);
    EXPECT_EQ(reports.size(), std::size_t(several) + 1);
    EXPECT_TRUE(std::is_sorted(reports.begin(), reports.end()));
}

/// Whatever group the failing video is in, and however far the run has come before that group is full.
TEST_F(CopyRunTest, endsAtTheFirstFailureInListOrder)
{
    fillCard();
    for (const auto& [failing, at] : {std::pair(40, 100), {5, 127}, {150, 200}, {300, 383}, {0, 1}}) {
        const auto occupy = [&, number = failing] { disk.file("DCIM/" + nameOf(number), "foreign"); };
        EXPECT_EQ(failureOf(job(), at, occupy), target(failing).path());
        EXPECT_EQ(contentOf(target(failing)), "foreign");
        fs::remove(target(failing).path());
        expectExactlyTheFirst(failing);
        fs::remove_all((disk / "DCIM").path());
    }
}

TEST_F(CopyRunTest, publishesEverythingBeforeAVideoThatCannotBeRead)
{
    fillCard();
    fs::remove((card / ("DCIM/" + nameOf(250))).path());
    EXPECT_EQ(failureOf(job()), (card / ("DCIM/" + nameOf(250))).path());
    expectExactlyTheFirst(250);
}

TEST_F(CopyRunTest, reportsTheEarlierOfTwoFailures)
{
    fillCard(100);
    fs::remove((card / ("DCIM/" + nameOf(90))).path());
    EXPECT_EQ(failureOf(job(), 80, [&] { disk.file("DCIM/" + nameOf(30), "foreign"); }), target(30).path());
    fs::remove(target(30).path());
    expectExactlyTheFirst(30);
}

TEST_F(CopyRunTest, leavesNothingHiddenWhenItIsStopped)
{
    fillCard();
    for (const std::int64_t at : {1, 100, 130, 260, 399}) {
        std::stop_source stop;
        const auto stopThere = [&](const CopyProgress& report) {
            if (report.completedCount == at)
                stop.request_stop();
        };
        EXPECT_THROW(runOnRealFiles(job(), stopThere, stop.get_token()), Stopped);
        int count = 0;
        while (fs::exists(target(count).path()))
            ++count;
        EXPECT_LT(count, at);
        expectExactlyTheFirst(count);
        fs::remove_all((disk / "DCIM").path());
    }
}

/// The first one is still being copied when the turn of the second comes.
TEST_F(CopyRunTest, skipsTheSecondOfTwoEqualNames)
{
    fillCardWith({"a/x.mov", "b/y.mov", "b/x.mov"});
    EXPECT_EQ(failureOf(job(false)), "none");
    EXPECT_EQ(summary, CopySummary({2, 1, disk.location()}));
    EXPECT_EQ(contentOf(disk / "x.mov"), "a/x.mov");
}

TEST_F(CopyRunTest, skipsTheSecondOfTwoEqualNamesIfTheFirstHasASpareHiddenName)
{
    fillCardWith({"a/x.mov", "b/x.mov"});
    disk.folder(growingName("x.mov", {})); // not ours: the copy uses another hidden name
    EXPECT_EQ(failureOf(job(false)), "none");
    EXPECT_EQ(summary, CopySummary({1, 1, disk.location()}));
    EXPECT_EQ(contentOf(disk / "x.mov"), "a/x.mov");
}

TEST_F(CopyRunTest, skipsTheSecondOfTwoPathsToOneFile)
{
    fillCardWith({"a/x.mov", "b/x.mov"});
    disk.folder("a");
    fs::create_directory_symlink("a", (disk / "b").path());
    EXPECT_EQ(failureOf(job()), "none");
    EXPECT_EQ(summary, CopySummary({1, 1, disk.location()}));
    EXPECT_EQ(contentOf(disk / "a/x.mov"), "a/x.mov");
}

/// Their hidden names are shortened to the same one.
TEST_F(CopyRunTest, copiesBothOfTwoLongNamesThatDifferOnlyAtTheirEnd)
{
    const std::string beginning(250, 'n');
    fillCardWith({"a/" + beginning + "1.mov", "a/" + beginning + "2.mov"});
    EXPECT_EQ(failureOf(job()), "none");
    EXPECT_EQ(summary, CopySummary({2, 0, disk.location()}));
    for (const std::string& name : names)
        EXPECT_EQ(contentOf(disk / name), name);
}

TEST_F(CopyRunTest, worksWithFewFileDescriptors)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "SKIPPED: the sanitizers need file descriptors to examine memory";
#endif
    fillCard();
    struct rlimit before = {};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const struct rlimit few = {40, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    const std::string failure = failureOf(job());
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(failure, "none");
    expectExactlyTheFirst(several);
}

/// Users with slow disks must not lose much to a kill, even if all later videos are only skipped.
TEST_F(CopyRunTest, completesCopiesThatHaveBeenUnderWayForSomeSeconds)
{
    names = {nameOf(0), nameOf(1), nameOf(2)};
    for (const std::string& name : names)
        card.file("DCIM/" + name, "content of " + name);
    disk.file("DCIM/" + nameOf(1), "there already");
    disk.file("DCIM/" + nameOf(2), "there already");
    bool isThere = false;
    runOnRealFiles(job(), [&](const CopyProgress& report) {
        if (report.completedCount == 1)
            std::this_thread::sleep_for(std::chrono::milliseconds(5100)); // the test is about time
        if (report.completedCount == 2)
            isThere = waitUntilExists(target(0));
    });
    EXPECT_TRUE(isThere);
}

/// How many pages of the file are in the page cache.
std::size_t pagesInMemory(const Location& file)
{
    const int opened = ::open(file.path().c_str(), O_RDONLY | O_CLOEXEC);
    const std::size_t size = fs::file_size(file.path());
    void* mapped = ::mmap(nullptr, size, PROT_NONE, MAP_SHARED, opened, 0);
    ::close(opened);
    std::vector<unsigned char> pages((size + 4095) / 4096);
    ::mincore(mapped, size, pages.data());
    ::munmap(mapped, size);
    return static_cast<std::size_t>(
        std::count_if(pages.begin(), pages.end(), [](unsigned char page) { return (page & 1U) != 0; }));
}

class CopyRunSource : public testing::Test {
protected:
    void SetUp() override
    {
        struct statfs status = {};
        if (::statfs(card.location().path().c_str(), &status) != 0 || status.f_type == TMPFS_MAGIC)
            GTEST_SKIP() << "SKIPPED: temporary files are held in memory here";
    }

    /// A video in the page cache and on the disk: unwritten pages cannot leave the cache.
    Location makeVideo(const char* name, std::size_t size)
    {
        Location video = card.file(name, std::string(size, 'v'));
        const FileDescriptor opened(::open(video.path().c_str(), O_RDONLY | O_CLOEXEC));
        EXPECT_EQ(::fsync(opened.get()), 0);
        EXPECT_GT(pagesInMemory(video), 10U);
        return video;
    }

    TemporaryFolder card;
};

TEST_F(CopyRunSource, leavesThePageCache)
{
    const TemporaryFolder disk;
    for (const Location& video : {makeVideo("small.mov", 200'003), makeVideo("large.mov", (30U << 20U) + 3)}) {
        copyFile(video, disk / std::string(video.lastPathComponent()));
        EXPECT_LT(pagesInMemory(video), 10U) << video.path();
    }
}

TEST_F(CopyRunSource, staysInThePageCacheUntilItIsRead)
{
    const Location video = makeVideo("x.mov", 1U << 20U);
    const SourceFile source(video, {});
    for (const std::int64_t read : {-chunkSize, std::int64_t(0)}) {
        source.forget(read);
        EXPECT_GT(pagesInMemory(video), 10U) << read;
    }
    source.forget(source.size());
    EXPECT_LT(pagesInMemory(video), 10U);
}

} // namespace
} // namespace reelkeep
