#include "Files/Disk.h"

#include "Fixtures/TemporaryFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace reelkeep {
namespace {

TEST(Disk, isTheSameForEveryPathOnIt)
{
    const TemporaryFolder memory("/dev/shm");
    const Disk one = diskHolding(memory.folder("a/b"));
    EXPECT_FALSE(one.id.empty());
    EXPECT_EQ(diskHolding(memory.file("c/x.mov")).id, one.id);
}

TEST(Disk, differsBetweenFileSystems)
{
    EXPECT_NE(diskHolding(Location("/proc")).id, diskHolding(Location("/dev/shm")).id);
}

TEST(Disk, isReadBySeveralThreadsUnlessItSpins)
{
    EXPECT_GT(diskHolding(Location("/dev/shm")).walkers, 1U);
}

/// A made-up list of the system's devices, in which `place` is the entry of the one that holds the test's folder.
class DiskKnown : public testing::Test {
protected:
    DiskKnown()
    {
        struct stat status = {};
        EXPECT_EQ(::stat(system.location().path().c_str(), &status), 0);
        place = "devices/" + std::to_string(major(status.st_dev)) + ":" + std::to_string(minor(status.st_dev));
    }
    /// The disk that is found if the entry leads to `device`, a path in the list.
    Disk diskOf(const std::string& device)
    {
        system.folder("devices");
        std::filesystem::remove((system / place).path());
        std::filesystem::create_symlink((system / device).path(), (system / place).path());
        return diskHolding(system.location(), (system / "devices").path());
    }

    TemporaryFolder system{"/dev/shm"};
    std::string place;
};

TEST_F(DiskKnown, isReadByOneThreadIfItSpins)
{
    system.file("sda/queue/rotational", "1\n");
    system.file("sdb/queue/rotational", "0\n");
    system.file("vda/queue/rotational", "1\n");
    system.folder("sdc");
    EXPECT_EQ(diskOf("sda").walkers, 1U);
    EXPECT_EQ(diskOf("sdb").walkers, 8U);
    EXPECT_EQ(diskOf("vda").walkers, 8U) << "virtual disks claim to spin";
    EXPECT_EQ(diskOf("sdc").walkers, 8U) << "does not report it";
}

TEST_F(DiskKnown, isTheWholeDiskBelowPartitionsAndVolumes)
{
    system.file("sda/queue/rotational", "1\n");
    system.file("sda/sda1/partition", "1\n");
    system.folder("sda/sda1/slaves");
    system.file("dm-0/queue/rotational", "0\n");
    system.folder("dm-0/slaves");
    std::filesystem::create_symlink("../../sda/sda1", (system / "dm-0/slaves/sda1").path());
    for (const char* device : {"sda", "sda/sda1", "dm-0"}) {
        EXPECT_EQ(diskOf(device).id, "sda") << device;
        EXPECT_EQ(diskOf(device).walkers, 1U) << device;
    }
}

TEST(Disk, isUnknownAndReadByOneThreadIfThePathDoesNotExist)
{
    const Disk unknown = diskHolding(Location("/nowhere/at all"));
    EXPECT_EQ(unknown.id, "");
    EXPECT_EQ(unknown.walkers, 1U);
}

} // namespace
} // namespace reelkeep
