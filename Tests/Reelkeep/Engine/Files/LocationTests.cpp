#include "Files/Location.h"

#include <gtest/gtest.h>

namespace reelkeep {
namespace {

TEST(Location, dropsSeparatorsAtItsEnd)
{
    EXPECT_EQ(Location("/media/A//").path(), "/media/A");
    EXPECT_EQ(Location("/").path(), "/");
}

TEST(Location, isTheSameOnlyByteForByte)
{
    EXPECT_EQ(Location("/Volumes/A"), Location("/Volumes/A/"));
    EXPECT_NE(Location("/Volumes/A"), Location("/volumes/a"));
    EXPECT_NE(Location("/Volumes/A"), Location("/Volumes/./A"));
}

TEST(Location, ofTheRootHasNoLastComponent)
{
    EXPECT_EQ(Location("/").lastPathComponent(), "");
    EXPECT_EQ(Location("/media/A").lastPathComponent(), "A");
}

TEST(Location, leadsToItsParent)
{
    EXPECT_EQ(Location("/media/A").deletingLastPathComponent().path(), "/media");
    EXPECT_EQ(Location("/media").deletingLastPathComponent().path(), "/");
    EXPECT_EQ(Location("/").deletingLastPathComponent().path(), "/");
}

TEST(Location, appendsTextsThatBeginWithASeparator)
{
    EXPECT_EQ(Location("/media/A").appending("DCIM/x.mov").path(), "/media/A/DCIM/x.mov");
    EXPECT_EQ(Location("/media/A").appending("/card/x.mov").path(), "/media/A/card/x.mov");
    EXPECT_EQ(Location("/").appending("/card/x.mov").path(), "/card/x.mov");
    EXPECT_EQ(Location("/media/A").appending("").path(), "/media/A");
}

} // namespace
} // namespace reelkeep
