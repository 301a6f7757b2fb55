#include "Text/TextOrder.h"
#include "VideoSyncService.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace reelkeep {
namespace {

using Paths = std::vector<std::string>;

VideoFile video(const std::string& relativePath, std::int64_t size = 100)
{
    const auto name = relativePath.substr(relativePath.rfind('/') + 1);
    return {.id = relativePath,
            .url = Location("/card/" + relativePath),
            .relativePath = relativePath,
            .fileName = name,
            .size = size,
            .createdAt = std::nullopt};
}

/// The paths of what is missing, given the records of the camera and those of the disks.
Paths missing(const VideoList& source, const VideoList& reviewed)
{
    Paths paths;
    for (const VideoFile& found : VideoSyncService::missingVideos(source, reviewed))
        paths.push_back(found.relativePath);
    return paths;
}

TEST(MissingVideosMatchKey, isTheLowerCaseNameAndTheSize)
{
    EXPECT_EQ(VideoSyncService::matchKey(video("MVI_0001.MOV", 1048576)), "mvi_0001.mov::1048576");
    EXPECT_EQ(VideoSyncService::matchKey(video("DCIM/X.MOV", 0)), "x.mov::0");
    EXPECT_EQ(VideoSyncService::matchKey(video("x.mov", -1)), "x.mov::-1");
    EXPECT_EQ(VideoSyncService::matchKey(video("x.mov", INT64_MAX)), "x.mov::9223372036854775807");
}

TEST(MissingVideos, areNoneIfTheCameraIsEmpty)
{
    EXPECT_EQ(missing({}, {video("a.mov")}), Paths{});
    EXPECT_EQ(missing({}, {}), Paths{});
}

TEST(MissingVideos, areAllVideosInOrderIfNothingIsReviewed)
{
    EXPECT_EQ(missing({video("b.mov"), video("a.mov")}, {}), (Paths{"a.mov", "b.mov"}));
}

TEST(MissingVideos, ignoreLetterCaseButNotSize)
{
    EXPECT_EQ(missing({video("CLIP.MOV", 100)}, {video("clip.mov", 100)}), Paths{});
    EXPECT_EQ(missing({video("CLIP.MOV", 100)}, {video("clip.mov", 101)}), (Paths{"CLIP.MOV"}));
}

TEST(MissingVideos, ignoreFolderAndDate)
{
    VideoFile archived = video("archive/2024/clip.mov");
    archived.createdAt = Date(std::chrono::seconds(1));
    archived.url = Location("/disk/archive/2024/clip.mov");
    EXPECT_EQ(missing({video("DCIM/clip.mov")}, {archived}), Paths{});
}

TEST(MissingVideos, ignoreHowAccentsAreWritten)
{
    EXPECT_EQ(missing({video("Ni\u00F1o.mov")}, {video("NIN\u0303O.MOV")}), Paths{});
}

TEST(MissingVideos, distinguishDamagedNames)
{
    EXPECT_EQ(missing({video("a\xFF.mov")}, {video("a\xFE.mov"), video("a\uFFFD.mov")}), (Paths{"a\xFF.mov"}));
    EXPECT_EQ(missing({video("A\xFF.MOV")}, {video("a\xFF.mov")}), Paths{});
}

TEST(MissingVideos, ofUnknownSizeMatchByName)
{
    EXPECT_EQ(missing({video("clip.mov", 0)}, {video("CLIP.mov", 0)}), Paths{});
    EXPECT_EQ(missing({video("clip.mov", 0)}, {video("CLIP.mov", 1)}), (Paths{"clip.mov"}));
}

/// Whether the only video on the disks counts as the only one on the camera, or as one of two: the hash table is built
/// from the shorter list, so both ways are tried.
bool isTakenFor(const VideoFile& archived, const VideoFile& filmed)
{
    const VideoFile another = video("another.mov", 1);
    return missing({filmed}, {archived}).empty() || missing({filmed, another}, {archived}).size() != 2 ||
           missing({filmed}, {another, archived}).empty();
}

/// The table holds a part of the hash of each video, which is the same for sizes four gigabytes apart.
TEST(MissingVideos, areNotMatchedIfOnlyTheHashOfTheirSizesAgrees)
{
    constexpr std::int64_t fourGigabytes = std::int64_t(1) << 32U;
    for (std::int64_t times = 1; times <= 64; ++times)
        EXPECT_FALSE(isTakenFor(video("clip.mov", 100 + times * fourGigabytes), video("clip.mov", 100))) << times;
}

/// Pairs of names that agree in the lower half of their hash by chance.
std::vector<std::pair<std::string, std::string>> namesOfOneHalfHash()
{
    std::unordered_map<std::uint32_t, std::string> seen;
    std::vector<std::pair<std::string, std::string>> pairs;
    for (int number = 0; pairs.size() < 8; ++number) {
        const std::string name = "clip" + std::to_string(number) + ".mov";
        const auto [other, isNew] = seen.emplace(static_cast<std::uint32_t>(foldedHash(name)), name);
        if (!isNew)
            pairs.emplace_back(other->second, name);
    }
    return pairs;
}

TEST(MissingVideos, areNotMatchedIfOnlyTheHashOfTheirNamesAgrees)
{
    for (const auto& names : namesOfOneHalfHash())
        EXPECT_FALSE(isTakenFor(video(names.first), video(names.second))) << names.first << ", " << names.second;
}

/// The whole hash is the same: one of the sizes makes up for the difference between the hashes of the names.
TEST(MissingVideos, areNotMatchedByTheirWholeHash)
{
    for (int number = 0; number < 64; ++number) {
        const std::string name = "clip" + std::to_string(number) + ".mov";
        const std::uint64_t between = foldedHash(name) - foldedHash("clip.mov");
        EXPECT_FALSE(isTakenFor(video("clip.mov", static_cast<std::int64_t>(100 + between)), video(name, 100))) << name;
    }
}

TEST(MissingVideos, areMatchedOneByOne)
{
    EXPECT_EQ(missing({video("B/c.mov"), video("A/C.MOV")}, {}).size(), 2U);
    EXPECT_EQ(missing({video("B/c.mov"), video("A/C.MOV")}, {video("c.mov")}), Paths{});
}

TEST(MissingVideos, ignoreExtraVideosOnTheDisks)
{
    EXPECT_EQ(missing({video("a.mov")}, {video("a.mov"), video("b.mov")}), Paths{});
}

TEST(MissingVideos, areOrderedByNameWithNumbersByValue)
{
    EXPECT_EQ(missing({video("C10.MP4"), video("C2.MP4"), video("c1.MP4")}, {}),
              (Paths{"c1.MP4", "C2.MP4", "C10.MP4"}));
    EXPECT_EQ(missing({video("A/Z.mov"), video("Z/A.mov")}, {}), (Paths{"Z/A.mov", "A/Z.mov"}));
}

TEST(MissingVideos, ofTheSameNameAreOrderedByPath)
{
    EXPECT_EQ(missing({video("B/C0001.MP4"), video("A/C0001.MP4")}, {}), (Paths{"A/C0001.MP4", "B/C0001.MP4"}));
    EXPECT_EQ(missing({video("100/C.MP4"), video("99/C.MP4")}, {}), (Paths{"99/C.MP4", "100/C.MP4"}));
}

TEST(MissingVideos, whoseNamesDifferInCaseAreOrderedByNameAndNotByPath)
{
    EXPECT_EQ(missing({video("A/Clip.mov"), video("B/clip.mov")}, {}), (Paths{"B/clip.mov", "A/Clip.mov"}));
    EXPECT_EQ(missing({video("B/Clip.mov"), video("A/clip.mov")}, {}), (Paths{"A/clip.mov", "B/Clip.mov"}));
}

TEST(MissingVideos, thatCollateAsEqualAreOrderedByTheirBytes)
{
    EXPECT_EQ(missing({video("A/C1.mov"), video("B/C01.mov")}, {}), (Paths{"B/C01.mov", "A/C1.mov"}));
    EXPECT_EQ(missing({video("A/a\xFF.mov"), video("B/a\xFE.mov")}, {}), (Paths{"B/a\xFE.mov", "A/a\xFF.mov"}));
}

TEST(MissingVideos, thatAreEqualInOrderKeepTheirOrder)
{
    std::vector<VideoFile> alike;
    for (const std::int64_t size : {3, 1, 2}) // Enough of them that an unstable sort would mix them.
        alike.insert(alike.end(), 100, video("c.mov", size));
    EXPECT_EQ(VideoSyncService::missingVideos(alike, {}), VideoList(alike));
}

TEST(MissingVideos, areOrderedTheSameWayWhenThereAreMany)
{
    setenv("LC_ALL", "es_ES.UTF-8", 1);
    std::vector<VideoFile> videos;
    for (int number = 0; number < 12'000; ++number) {
        const std::string folder = std::to_string(number * 7919 % 12'000) + "/";
        const std::string letter = std::vector<std::string>{"n", "ñ", "N", "o", "n\u0303"}[std::size_t(number % 5)];
        videos.push_back(video(folder + letter + std::to_string(number * 31 % 3'000) + ".mov", number % 2));
    }
    const FileBrowserOrder order("es_ES.UTF-8");
    std::vector<VideoFile> expected = videos;
    std::stable_sort(expected.begin(), expected.end(), [&order](const VideoFile& one, const VideoFile& other) {
        return one.fileName == other.fileName ? order.sortKey(one.relativePath) < order.sortKey(other.relativePath)
                                              : order.sortKey(one.fileName) < order.sortKey(other.fileName);
    });
    EXPECT_EQ(VideoSyncService::missingVideos(videos, {}), VideoList(expected));
    unsetenv("LC_ALL");
}

TEST(MissingVideos, areOrderedInTheLanguageOfTheUser)
{
    setenv("LC_ALL", "cs_CZ.UTF-8", 1); // In Czech, "ch" is a letter that follows "h".
    EXPECT_EQ(missing({video("ch.mov"), video("d.mov"), video("hz.mov"), video("i.mov")}, {}),
              (Paths{"d.mov", "hz.mov", "ch.mov", "i.mov"}));
    setenv("LC_ALL", "C", 1);
    EXPECT_EQ(missing({video("ch.mov"), video("d.mov"), video("hz.mov"), video("i.mov")}, {}),
              (Paths{"ch.mov", "d.mov", "hz.mov", "i.mov"}));
    unsetenv("LC_ALL");
}

/// Few different letters, so that equal and nearly equal names are frequent.
rc::Gen<std::string> nearlyEqualNames()
{
    return rc::gen::container<std::string>(rc::gen::element('a', 'A', 'b', '0', '1', '/', '.', '\xC3', '\xB1', '\xFF'));
}

RC_GTEST_PROP(MissingVideos, haveTheSameOrderWhateverTheOrderOfTheWalk, ())
{
    std::vector<VideoFile> videos;
    for (const std::string& path : *rc::gen::unique<std::vector<std::string>>(nearlyEqualNames()))
        videos.push_back(video(path));
    const Paths once = missing(videos, {});
    std::reverse(videos.begin(), videos.end());
    RC_ASSERT(missing(videos, {}) == once);
}

RC_GTEST_PROP(MissingVideos, areExactlyThoseWhoseKeyIsOnNoDisk, ())
{
    const auto records = rc::gen::container<std::vector<VideoFile>>(
        rc::gen::map(rc::gen::pair(nearlyEqualNames(), rc::gen::inRange(0, 2)),
                     [](const std::pair<std::string, int>& record) { return video(record.first, record.second); }));
    const VideoList source = *records;
    const VideoList reviewed = *records;
    std::vector<VideoFile> expected;
    for (const VideoFile& candidate : source) {
        if (std::none_of(reviewed.begin(), reviewed.end(), [&](const VideoFile& other) {
                return VideoSyncService::matchKey(other) == VideoSyncService::matchKey(candidate);
            }))
            expected.push_back(candidate);
    }
    const VideoList found = VideoSyncService::missingVideos(source, reviewed);
    RC_ASSERT(std::is_permutation(found.begin(), found.end(), expected.begin(), expected.end()));
}

} // namespace
} // namespace reelkeep
