#include "CopyJob.h"
#include "Files/FileError.h"
#include "Files/Stopped.h"
#include "Fixtures/RecordingFileManager.h"
#include "Fixtures/TemporaryFolder.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace reelkeep {
namespace {

VideoFile record(const std::string& relativePath)
{
    const auto separator = relativePath.rfind('/');
    return {.id = relativePath,
            .url = Location("/elsewhere/" + relativePath),
            .relativePath = relativePath,
            .fileName = separator == std::string::npos ? relativePath : relativePath.substr(separator + 1),
            .size = 1,
            .createdAt = std::nullopt};
}

class CopyJobTest : public testing::Test {
protected:
    CopyJob jobFor(std::vector<std::string> relativePaths, bool preserveFolderStructure = true) const
    {
        std::vector<VideoFile> videos;
        for (const std::string& path : relativePaths)
            videos.push_back(record(path));
        return {.videos = VideoList(std::move(videos)),
                .sourceRoot = card.location(),
                .destinationRoot = disk.location(),
                .preserveFolderStructure = preserveFolderStructure};
    }
    CopySummary run(const CopyJob& job)
    {
        return job.run(files, [this](const CopyProgress& report) { reports.push_back(report); });
    }

    TemporaryFolder card;
    TemporaryFolder disk;
    RecordingFileManager files;
    std::vector<CopyProgress> reports;
};

TEST_F(CopyJobTest, keepsTheFolderStructure)
{
    card.file("DCIM/100CANON/MVI_0001.MOV", "one");
    EXPECT_EQ(run(jobFor({"DCIM/100CANON/MVI_0001.MOV"})), CopySummary({1, 0, disk.location()}));
    EXPECT_EQ(contentOf(disk / "DCIM/100CANON/MVI_0001.MOV"), "one");
}

TEST_F(CopyJobTest, putsEverythingIntoOneFolderIfFlat)
{
    card.file("DCIM/100CANON/MVI_0001.MOV", "one");
    run(jobFor({"DCIM/100CANON/MVI_0001.MOV"}, false));
    EXPECT_EQ(everythingBelow(disk.location()), std::vector<std::string>{"MVI_0001.MOV"});
}

TEST_F(CopyJobTest, completesCopiesInTheWayThenMakesTheFolderThenLooksThenCopies)
{
    card.file("a/x.mov");
    run(jobFor({"a/x.mov"}));
    const std::string target = (disk / "a/x.mov").path();
    EXPECT_EQ(files.calls(),
              std::vector<std::string>({"completeCopiesTo " + target, "createDirectory " + (disk / "a").path(),
                                        "fileExists " + target,
                                        "copyItem " + (card / "a/x.mov").path() + " -> " + target, "finish"}));
}

TEST_F(CopyJobTest, readsAheadTheNextVideoButOneUnlessItsTargetExists)
{
    for (const char* name : {"1.mov", "2.mov", "3.mov", "4.mov"})
        card.file(name);
    disk.file("4.mov");
    run(jobFor({"1.mov", "2.mov", "3.mov", "4.mov"}));
    std::vector<std::string> calls = files.calls();
    calls.resize(6);
    EXPECT_EQ(calls, std::vector<std::string>(
                         {"fileExists " + (disk / "3.mov").path(), "readAhead " + (card / "3.mov").path(),
                          "completeCopiesTo " + (disk / "1.mov").path(), "createDirectory " + disk.location().path(),
                          "fileExists " + (disk / "1.mov").path(),
                          "copyItem " + (card / "1.mov").path() + " -> " + (disk / "1.mov").path()}));
    calls = files.calls();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "fileExists " + (disk / "4.mov").path()), 2);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "readAhead " + (card / "4.mov").path()), 0);
}

TEST_F(CopyJobTest, ignoresAFailedLookAhead)
{
    for (const char* name : {"1.mov", "2.mov", "3.mov"})
        card.file(name);
    files.failAt(1, FileError((disk / "3.mov").path(), EIO));
    EXPECT_EQ(run(jobFor({"1.mov", "2.mov", "3.mov"})), CopySummary({3, 0, disk.location()}));
}

TEST_F(CopyJobTest, reportsAMissingVideoOnlyWhenItsTurnComes)
{
    card.file("1.mov");
    EXPECT_THROW(run(jobFor({"1.mov", "gone.mov"})), FileError);
    EXPECT_EQ(everythingBelow(disk.location()), std::vector<std::string>{"1.mov"});
    EXPECT_EQ(reports.size(), 2U);
}

TEST_F(CopyJobTest, createsTheDestinationItselfIfFlat)
{
    card.file("a/x.mov");
    CopyJob job = jobFor({"a/x.mov"}, false);
    job.destinationRoot = disk / "not/yet";
    run(job);
    EXPECT_EQ(files.calls()[1], "createDirectory " + (disk / "not/yet").path());
    EXPECT_EQ(contentOf(disk / "not/yet/x.mov"), "x");
}

TEST_F(CopyJobTest, reportsBeforeEachFileAndOnceAtTheEnd)
{
    card.file("a/1.mov");
    card.file("2.mov");
    run(jobFor({"a/1.mov", "2.mov"}));
    EXPECT_EQ(reports, std::vector<CopyProgress>({{0, 2, "1.mov"}, {1, 2, "2.mov"}, {2, 2, "2.mov"}}));
}

TEST_F(CopyJobTest, reportsAFileBeforeItTouchesTheDisk)
{
    card.file("1.mov");
    std::vector<std::size_t> callsSoFar;
    jobFor({"1.mov"}).run(files, [&](const CopyProgress&) { callsSoFar.push_back(files.calls().size()); });
    EXPECT_EQ(callsSoFar, std::vector<std::size_t>({0, 5}));
}

TEST_F(CopyJobTest, sendsOneReportIfThereIsNothingToDo)
{
    EXPECT_EQ(run(jobFor({})), CopySummary({0, 0, disk.location()}));
    EXPECT_EQ(reports, std::vector<CopyProgress>({{0, 0, ""}}));
    EXPECT_EQ(files.calls(), std::vector<std::string>{"finish"});
}

TEST_F(CopyJobTest, skipsARecordWhoseTargetExists)
{
    card.file("x.mov", "from the card");
    disk.file("x.mov", "another of that name");
    EXPECT_EQ(run(jobFor({"x.mov"})), CopySummary({0, 1, disk.location()}));
    EXPECT_EQ(contentOf(disk / "x.mov"), "another of that name");
    EXPECT_EQ(reports.size(), 2U);
}

TEST_F(CopyJobTest, skipsARecordWhoseTargetIsAFolderOrABrokenLink)
{
    card.file("x.mov");
    card.file("y.mov");
    disk.folder("x.mov");
    std::filesystem::create_symlink("nowhere", (disk / "y.mov").path());
    EXPECT_EQ(run(jobFor({"x.mov", "y.mov"})), CopySummary({0, 2, disk.location()}));
}

TEST_F(CopyJobTest, keepsTheFirstOfTwoEqualNamesIfFlat)
{
    card.file("a/x.mov", "first");
    card.file("b/x.mov", "second");
    EXPECT_EQ(run(jobFor({"a/x.mov", "b/x.mov"}, false)), CopySummary({1, 1, disk.location()}));
    EXPECT_EQ(contentOf(disk / "x.mov"), "first");
}

TEST_F(CopyJobTest, writesNothingTheSecondTime)
{
    card.file("a/x.mov");
    run(jobFor({"a/x.mov"}));
    EXPECT_EQ(run(jobFor({"a/x.mov"})), CopySummary({0, 1, disk.location()}));
}

TEST_F(CopyJobTest, neverUsesTheLocationAtWhichARecordWasFound)
{
    const Location found = card.file("elsewhere/x.mov");
    VideoFile shortened = record("x.mov");
    shortened.url = found;
    CopyJob job = jobFor({});
    job.videos = {shortened};
    EXPECT_THROW(run(job), FileError);
    EXPECT_TRUE(everythingBelow(disk.location()).empty());
}

TEST_F(CopyJobTest, copiesARecordWhosePathBeginsWithASeparator)
{
    card.file("media/card/x.mov", "from the root");
    EXPECT_EQ(run(jobFor({"/media/card/x.mov"})).copiedCount, 1);
    EXPECT_EQ(contentOf(disk / "media/card/x.mov"), "from the root");
}

TEST_F(CopyJobTest, endsAtTheFirstFailureAndKeepsWhatWasCopied)
{
    for (const char* name : {"1.mov", "2.mov", "3.mov"})
        card.file(name);
    files.failAt(10, FileError((disk / "2.mov").path(), ENOSPC)); // the second copy
    EXPECT_THROW(run(jobFor({"1.mov", "2.mov", "3.mov"})), FileError);
    EXPECT_EQ(everythingBelow(disk.location()), std::vector<std::string>{"1.mov"});
    EXPECT_EQ(reports, std::vector<CopyProgress>({{0, 3, "1.mov"}, {1, 3, "2.mov"}}));
    EXPECT_EQ(files.calls().size(), 11U);
    EXPECT_EQ(files.calls().back(), "finish");
}

TEST_F(CopyJobTest, reportsAnEarlierVideosFailureFirst)
{
    card.file("1.mov");
    files.failAt(9, FileError((disk / "1.mov").path(), EIO)); // `finish`, after the second video has failed
    try {
        run(jobFor({"1.mov", "gone.mov"}));
        ADD_FAILURE() << "no failure";
    } catch (const FileError& error) {
        EXPECT_EQ(error.path(), (disk / "1.mov").path());
    }
    EXPECT_EQ(files.calls().size(), 9U);
}

TEST_F(CopyJobTest, sendsNoLastReportBeforeEverythingIsOnTheDisk)
{
    card.file("1.mov");
    files.failAt(5, FileError((disk / "1.mov").path(), EIO));
    EXPECT_THROW(run(jobFor({"1.mov"})), FileError);
    EXPECT_EQ(files.calls()[4], "finish");
    EXPECT_EQ(reports, std::vector<CopyProgress>({{0, 1, "1.mov"}}));
}

TEST_F(CopyJobTest, endsWhenAFolderCannotBeMade)
{
    card.file("a/x.mov");
    disk.file("a", "a file where the folder should be");
    EXPECT_THROW(run(jobFor({"a/x.mov"})), FileError);
    EXPECT_EQ(files.calls().size(), 3U);
}

TEST_F(CopyJobTest, doesNotMistakeAFailedLookForAnExistingTarget)
{
    card.file("x.mov");
    files.failAt(3, FileError((disk / "x.mov").path(), EIO));
    EXPECT_THROW(run(jobFor({"x.mov"})), FileError);
    EXPECT_TRUE(everythingBelow(disk.location()).empty());
}

TEST_F(CopyJobTest, stopsBetweenFilesAndLeavesNothingHidden)
{
    for (const char* name : {"1.mov", "2.mov", "3.mov"})
        card.file(name);
    std::stop_source stop;
    const auto stopAtTheThird = [&](const CopyProgress& report) {
        if (report.completedCount == 2)
            stop.request_stop();
    };
    EXPECT_THROW(jobFor({"1.mov", "2.mov", "3.mov"}).run(files, stopAtTheThird, stop.get_token()), Stopped);
    EXPECT_EQ(everythingBelow(disk.location()), std::vector<std::string>{}) << "the first two were still under way";
}

} // namespace
} // namespace reelkeep
