#include "VideoSyncModels.h"

#include <gtest/gtest.h>

#include <unordered_set>

namespace reelkeep {
namespace {

VideoFile clip()
{
    return {.id = "DCIM/CLIP.MOV",
            .url = Location("/media/card/DCIM/CLIP.MOV"),
            .relativePath = "DCIM/CLIP.MOV",
            .fileName = "CLIP.MOV",
            .size = 100,
            .createdAt = Date(std::chrono::seconds(1'700'000'000))};
}

/// The records that differ from `clip()` in one field each, in the order of the fields.
std::vector<VideoFile> clipsWithOneFieldChanged()
{
    std::vector<VideoFile> changed(6, clip());
    changed[0].id = "other";
    changed[1].url = Location("/media/card/other");
    changed[2].relativePath = "other";
    changed[3].fileName = "other";
    changed[4].size = 101;
    changed[5].createdAt = Date(std::chrono::seconds(1'700'000'001));
    return changed;
}

TEST(VideoSyncModelsVideoFile, isEqualOnlyIfAllSixFieldsAre)
{
    EXPECT_EQ(clip(), clip());
    for (const VideoFile& other : clipsWithOneFieldChanged())
        EXPECT_NE(clip(), other);
}

TEST(VideoSyncModelsVideoFile, hashesEveryFieldAndAgreesWithEquality)
{
    const std::hash<VideoFile> hash;
    EXPECT_EQ(hash(clip()), hash(clip()));
    for (const VideoFile& other : clipsWithOneFieldChanged())
        EXPECT_NE(hash(clip()), hash(other));
}

TEST(VideoSyncModelsVideoFile, withoutADateDiffersFromOneWithADate)
{
    VideoFile undated = clip();
    undated.createdAt.reset();
    VideoFile atTheEpoch = clip();
    atTheEpoch.createdAt = Date();
    EXPECT_NE(undated, clip());
    EXPECT_NE(undated, atTheEpoch);
    EXPECT_NE(std::hash<VideoFile>{}(undated), std::hash<VideoFile>{}(atTheEpoch));
}

TEST(VideoSyncModelsVideoFile, distinguishesLetterCaseInItsName)
{
    VideoFile lower = clip();
    lower.fileName = "clip.mov";
    EXPECT_NE(clip(), lower);
}

TEST(VideoSyncModelsVideoList, comparesItsRecords)
{
    EXPECT_EQ(VideoList(), VideoList(std::vector<VideoFile>()));
    EXPECT_EQ(VideoList({clip()}), VideoList({clip()}));
    EXPECT_NE(VideoList({clip()}), VideoList());
    EXPECT_NE(VideoList({clip()}), VideoList({clip(), clip()}));
}

TEST(VideoSyncModelsVideoList, sharesItsRecordsWithItsCopies)
{
    const VideoList list = {clip()};
    const VideoList copy = list;
    EXPECT_EQ(&*list.begin(), &*copy.begin());
}

TEST(VideoSyncModelsVideoSyncError, hasOneTextPerCase)
{
    EXPECT_EQ(errorDescription(VideoSyncError::sourceFolderMissing), "Selecciona primero la carpeta de origen.");
    EXPECT_EQ(errorDescription(VideoSyncError::destinationFolderMissing),
              "Selecciona primero el HD o carpeta donde quieres copiar.");
    EXPECT_EQ(errorDescription(VideoSyncError::destinationReviewFoldersMissing),
              "Selecciona al menos una ubicacion para revisar.");
}

TEST(VideoSyncModelsVideoSyncError, keepsTheOrderOfItsCasesAndIsHashable)
{
    EXPECT_LT(VideoSyncError::sourceFolderMissing, VideoSyncError::destinationFolderMissing);
    EXPECT_LT(VideoSyncError::destinationFolderMissing, VideoSyncError::destinationReviewFoldersMissing);
    EXPECT_EQ(std::unordered_set<VideoSyncError>({VideoSyncError::sourceFolderMissing,
                                                  VideoSyncError::destinationFolderMissing,
                                                  VideoSyncError::destinationReviewFoldersMissing})
                  .size(),
              3U);
}

} // namespace
} // namespace reelkeep
