#include "Files/FileError.h"
#include "Files/LinuxFileManager.h"
#include "Files/Stopped.h"
#include "VideoSyncService.h"

#include "Fixtures/RecordingFileManager.h"
#include "Fixtures/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace reelkeep {
namespace {

/// Yields listed files instead of walking a disk; like a walk, only those whose names are wanted.
class ListedFiles : public LinuxFileManager {
public:
    std::map<std::string, std::vector<Entry>> below;
    std::set<std::string> slow; ///< Roots whose walks end only when they are stopped.

    void regularFiles(const Location& root, const NameFilter& wanted, const FoundFile& found,
                      const std::stop_token& stop) const override
    {
        while (slow.count(root.path()) != 0 && !stop.stop_requested())
            std::this_thread::yield();
        if (stop.stop_requested())
            throw Stopped();
        const auto listed = below.find(root.path());
        if (listed == below.end())
            return;
        for (const Entry& entry : listed->second) {
            if (entry.url.path().empty())
                throw FileError(root.path(), EIO);
            if (wanted(entry.url.lastPathComponent()))
                found(entry);
        }
    }
    /// The root's first letter.
    Disk diskHolding(const Location& place) const override { return {.id = place.path().substr(0, 2)}; }
};

FileManager::Entry file(const std::string& path, std::int64_t size = 1)
{
    return {.url = Location(path), .size = size, .contentModificationDate = std::nullopt};
}

/// An entry whose attributes cannot be read.
FileManager::Entry unreadable()
{
    return {};
}

std::vector<std::string> relativePaths(const VideoList& videos)
{
    std::vector<std::string> paths;
    for (const VideoFile& video : videos)
        paths.push_back(video.relativePath);
    return paths;
}

using Paths = std::vector<std::string>;

TEST(VideoSyncServiceScanVideoFiles, knowsTwelveExtensions)
{
    const std::set<std::string, std::less<>> twelve = {"avi",  "braw", "m4v", "mkv", "mov", "mp4",
                                                       "mpeg", "mpg",  "mts", "mxf", "r3d", "wmv"};
    EXPECT_EQ(VideoSyncService::supportedExtensions(), twelve);
}

TEST(VideoSyncServiceScanVideoFiles, buildsItsExtensionsOnceForAllThreads)
{
    const auto ask = [] { return &VideoSyncService::supportedExtensions(); };
    auto one = std::async(std::launch::async, ask);
    auto other = std::async(std::launch::async, ask);
    EXPECT_EQ(one.get(), other.get());
}

TEST(VideoSyncServiceScanVideoFiles, findsEveryExtensionInAnyLetterCase)
{
    ListedFiles files;
    Paths expected;
    for (std::string extension : VideoSyncService::supportedExtensions()) {
        expected.push_back("x." + extension);
        for (char& c : extension)
            c = static_cast<char>(std::toupper(c));
        expected.push_back("x." + extension);
    }
    expected.insert(expected.end(), {"CLIP.MOV", "clip.Mov", "x.mov", "a.b.mp4", "clip.m\u212Av"});
    for (const std::string& name : expected)
        files.below["/card"].push_back(file("/card/" + name));
    EXPECT_EQ(relativePaths(VideoSyncService::scanVideoFiles(Location("/card"), files)), expected);
}

TEST(VideoSyncServiceScanVideoFiles, passesOverEverythingElse)
{
    ListedFiles files;
    for (const char* name :
         {"x.mp3", "x.jpg", "x", "mov", "x.", ".mov", "x.mov.part", "x.mov~", "x.av\u0130", "x.mov "})
        files.below["/card"].push_back(file(std::string("/card/") + name));
    EXPECT_EQ(relativePaths(VideoSyncService::scanVideoFiles(Location("/card"), files)), Paths{});
}

TEST(VideoSyncServiceScanVideoFiles, fillsEveryFieldOfTheRecord)
{
    const Date modified(std::chrono::nanoseconds(1'700'000'000'123'456'789));
    ListedFiles files;
    files.below["/card"] = {
        {.url = Location("/card/DCIM/Clip.MOV"), .size = 1048576, .contentModificationDate = modified}};
    const VideoList expected = {{.id = "DCIM/Clip.MOV",
                                 .url = Location("/card/DCIM/Clip.MOV"),
                                 .relativePath = "DCIM/Clip.MOV",
                                 .fileName = "Clip.MOV",
                                 .size = 1048576,
                                 .createdAt = modified}};
    EXPECT_EQ(VideoSyncService::scanVideoFiles(Location("/card"), files), expected);
}

TEST(VideoSyncServiceScanVideoFiles, leavesSizeZeroAndDateAbsentIfNoneIsReported)
{
    ListedFiles files;
    files.below["/card"] = {{.url = Location("/card/x.mov"), .size = 0, .contentModificationDate = std::nullopt}};
    const VideoList found = VideoSyncService::scanVideoFiles(Location("/card"), files);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].size, 0);
    EXPECT_EQ(found[0].createdAt, std::nullopt);
}

TEST(VideoSyncServiceScanVideoFiles, keepsTheOrderOfTheWalk)
{
    ListedFiles files;
    files.below["/card"] = {file("/card/z.mov"), file("/card/b/a.mov"), file("/card/a.mov")};
    EXPECT_EQ(relativePaths(VideoSyncService::scanVideoFiles(Location("/card"), files)),
              (Paths{"z.mov", "b/a.mov", "a.mov"}));
}

TEST(VideoSyncServiceScanVideoFiles, removesEveryOccurrenceOfTheRoot)
{
    ListedFiles files;
    files.below["/Volumes/A"] = {file("/Volumes/A/x/Volumes/A/y.mov"), file("/Volumes/A/Volumes/A/y.mov"),
                                 file("/Volumes/A/Volumes/A/Volumes/A/z.mov"), file("/Volumes/A/x/Volumes/AB/y.mov")};
    const VideoList found = VideoSyncService::scanVideoFiles(Location("/Volumes/A"), files);
    EXPECT_EQ(relativePaths(found), (Paths{"xy.mov", "Volumes/A/y.mov", "Volumes/Az.mov", "x/Volumes/AB/y.mov"}));
    EXPECT_EQ(found[0].id, "xy.mov");
    EXPECT_EQ(found[0].fileName, "y.mov");
    EXPECT_EQ(found[0].url.path(), "/Volumes/A/x/Volumes/A/y.mov");
}

TEST(VideoSyncServiceScanVideoFiles, doesNotRemoveTheRootFromTextThatARemovalJoined)
{
    ListedFiles files;
    files.below["/a"] = {file("/a/x/a/a/y.mov"), file("/a/x//a/a/y.mov")};
    EXPECT_EQ(relativePaths(VideoSyncService::scanVideoFiles(Location("/a"), files)), (Paths{"xa/y.mov", "x/a/y.mov"}));
}

TEST(VideoSyncServiceScanVideoFiles, keepsTheWholePathBelowTheRootOfTheSystem)
{
    ListedFiles files;
    files.below["/"] = {file("/x.mov"), file("/media/card/y.mov")};
    EXPECT_EQ(relativePaths(VideoSyncService::scanVideoFiles(Location("/"), files)),
              (Paths{"/x.mov", "/media/card/y.mov"}));
}

TEST(VideoSyncServiceScanVideoFiles, keepsNamesThatAreNotUtf8)
{
    ListedFiles files;
    files.below["/card"] = {file("/card/clip\xFF.MOV")};
    EXPECT_EQ(VideoSyncService::scanVideoFiles(Location("/card"), files)[0].fileName, "clip\xFF.MOV");
}

TEST(VideoSyncServiceScanVideoFiles, findsNothingBelowARootThatIsMissing)
{
    EXPECT_TRUE(VideoSyncService::scanVideoFiles(Location("/missing"), ListedFiles()).empty());
}

TEST(VideoSyncServiceScanVideoFiles, joinsItsRootsInTheirOrder)
{
    ListedFiles files;
    files.below["/B"] = {file("/B/b.mov")};
    files.below["/A"] = {file("/A/a.mov")};
    EXPECT_EQ(relativePaths(VideoSyncService::scanVideoFiles({Location("/B"), Location("/A")}, files)),
              (Paths{"b.mov", "a.mov"}));
    EXPECT_TRUE(VideoSyncService::scanVideoFiles(std::vector<Location>{}, files).empty());
}

TEST(VideoSyncServiceScanVideoFiles, listsAFileTwiceIfTwoRootsContainIt)
{
    ListedFiles files;
    files.below["/A"] = {file("/A/x/a.mov")};
    files.below["/A/x"] = {file("/A/x/a.mov")};
    EXPECT_EQ(relativePaths(VideoSyncService::scanVideoFiles({Location("/A"), Location("/A/x")}, files)),
              (Paths{"x/a.mov", "a.mov"}));
}

TEST(VideoSyncServiceScanVideoFiles, failsWithTheFirstErrorOfAnyRoot)
{
    ListedFiles files;
    files.below["/A"] = {file("/A/a.mov")};
    files.below["/B"] = {file("/B/b.mov"), unreadable()};
    files.below["/C"] = {unreadable()};
    try {
        VideoSyncService::scanVideoFiles({Location("/A"), Location("/B"), Location("/C")}, files);
        FAIL() << "no error";
    } catch (const FileError& error) {
        EXPECT_EQ(error.path(), "/B");
    }
}

TEST(VideoSyncServiceScanVideoFiles, waitsForNoRootAfterTheOneThatFailed)
{
    ListedFiles files;
    files.below["/B"] = {unreadable()};
    files.slow = {"/A", "/C"};
    try {
        VideoSyncService::scanVideoFiles({Location("/B"), Location("/A"), Location("/C")}, files);
        FAIL() << "no error";
    } catch (const FileError& error) {
        EXPECT_EQ(error.path(), "/B");
    }
}

TEST(VideoSyncServiceAnalyse, scansAllDisksAtOnceAndComparesThem)
{
    ListedFiles files;
    files.below["/card"] = {file("/card/DCIM/1.mov"), file("/card/DCIM/2.mov"), file("/card/DCIM/3.mov")};
    files.below["/A"] = {file("/A/1.MOV")};
    files.below["/B"] = {file("/B/old/2.mov"), file("/B/extra.mov")};
    const std::vector<Location> reviewed = {Location("/B"), Location("/missing"), Location("/A")};
    const ScanSummary found = VideoSyncService::analyse(Location("/card"), reviewed, files);
    EXPECT_EQ(relativePaths(found.sourceVideos), (Paths{"DCIM/1.mov", "DCIM/2.mov", "DCIM/3.mov"}));
    EXPECT_EQ(relativePaths(found.destinationVideos), (Paths{"old/2.mov", "extra.mov", "1.MOV"}));
    EXPECT_EQ(relativePaths(found.missingVideos), (Paths{"DCIM/3.mov"}));
    EXPECT_EQ(found.scannedDestinationRoots, reviewed);
}

TEST(VideoSyncServiceAnalyse, scansTheRootsOfOneDiskOneAfterAnother)
{
    RecordingFileManager files;
    const TemporaryFolder disk;
    const std::vector<Location> reviewed = {disk.folder("b"), disk.folder("a")};
    VideoSyncService::analyse(disk.folder("card"), reviewed, files);
    EXPECT_EQ(files.calls(), (Paths{"regularFiles " + (disk / "card").path(), "regularFiles " + (disk / "b").path(),
                                    "regularFiles " + (disk / "a").path()}));
}

TEST(VideoSyncServiceScanVideoFiles, endsWhenItIsStopped)
{
    std::stop_source source;
    source.request_stop();
    EXPECT_THROW(VideoSyncService::scanVideoFiles(Location("/A"), ListedFiles(), source.get_token()), Stopped);
}

TEST(VideoSyncServiceScanVideoFiles, findsVideosOnADiskThatAreNeitherHiddenNorInAPackage)
{
    const TemporaryFolder disk;
    disk.file("DCIM/100CANON/CLIP.MOV", "12345");
    disk.file("clip.Mov");
    disk.file("x.mp3");
    disk.file("x");
    disk.file(".hidden.mov");
    disk.file(".Trashes/deleted.mov");
    disk.file("Library.photoslibrary/inside.mov");
    disk.folder("folder.mov");
    const VideoList found = VideoSyncService::scanVideoFiles(disk.location(), LinuxFileManager());
    Paths paths = relativePaths(found);
    std::sort(paths.begin(), paths.end());
    ASSERT_EQ(paths, (Paths{"DCIM/100CANON/CLIP.MOV", "clip.Mov"}));
    const VideoFile& clip = found[0].fileName == "CLIP.MOV" ? found[0] : found[1];
    EXPECT_EQ(clip.size, 5);
    EXPECT_EQ(clip.url, disk / "DCIM/100CANON/CLIP.MOV");
    EXPECT_NE(clip.createdAt, std::nullopt);
}

} // namespace
} // namespace reelkeep
