#include "Platform/Disk.h"

#include "Fixtures/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace reelkeep {
namespace {

TEST(Disk, isOneForAllPlacesOnIt)
{
    const TemporaryFolder memory("/dev/shm");
    const Disk one = diskHolding(memory.folder("a/b"));
    EXPECT_FALSE(one.id.empty());
    EXPECT_EQ(diskHolding(memory.file("c/x.mov")).id, one.id);
}

TEST(Disk, isAnotherForAnotherFileSystem)
{
    EXPECT_NE(diskHolding(Location("/proc")).id, diskHolding(Location("/dev/shm")).id);
}

TEST(Disk, isReadBySeveralWhereNothingTurns)
{
    EXPECT_GT(diskHolding(Location("/dev/shm")).walkers, 1U);
}

TEST(Disk, isUnknownAndReadByOneWhereNothingStands)
{
    const Disk unknown = diskHolding(Location("/nowhere/at all"));
    EXPECT_EQ(unknown.id, "");
    EXPECT_EQ(unknown.walkers, 1U);
}

} // namespace
} // namespace reelkeep
