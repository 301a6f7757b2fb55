#include "Fixtures/PrivateView.h"
#include "Fixtures/TemporaryFolder.h"
#include "Fixtures/Widgets.h"
#include "MountedVolumes.h"

#include <QDir>
#include <QStandardPaths>

#include <gtest/gtest.h>

#include <algorithm>
#include <fcntl.h>
#include <iterator>
#include <list>
#include <string>
#include <sys/mount.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace reelkeep {
namespace {

constexpr std::chrono::seconds patience{10};

/// Devices that are not disks, as the desktop shows them, for the duration of a test.
class MountedVolumes : public testing::Test {
protected:
    ~MountedVolumes() override { devices.removeRecursively(); }

    Volume device(const char* name)
    {
        const QString path = devices.filePath(QLatin1String(name));
        EXPECT_TRUE(QDir().mkpath(path));
        const QList<Volume> volumes = answeringVolumes(patience);
        const auto found =
            std::find_if(volumes.begin(), volumes.end(), [&](const Volume& volume) { return volume.path == path; });
        return found == volumes.end() ? Volume{} : *found;
    }

    QDir devices{QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + QStringLiteral("/gvfs")};
};

TEST_F(MountedVolumes, includeCamerasAndPhonesByTheirNames)
{
    const Volume camera = device("gphoto2:host=Canon_Inc._Canon_EOS_R5");
    EXPECT_EQ(camera.label, QStringLiteral("Canon Inc. Canon EOS R5"));
    EXPECT_TRUE(camera.isCard);
    const Volume phone = device("mtp:host=SONY_ILCE-7M4_%5Busb%5D");
    EXPECT_EQ(phone.label, QStringLiteral("SONY ILCE-7M4 [usb]"));
    EXPECT_TRUE(phone.isCard);
}

TEST_F(MountedVolumes, includeSharesByTheirNames)
{
    const Volume share = device("smb-share:server=nas,share=Video%20y_fotos");
    EXPECT_EQ(share.label, QStringLiteral("Video y_fotos"));
    EXPECT_FALSE(share.isCard);
}

/// Mounts a volume for the duration of a test and reports `device` as its device. By default it is in memory.
class Mount {
public:
    Mount(const char* device, std::string at, const char* type = "tmpfs", const std::string& options = "")
        : place(std::move(at))
    {
        QDir().mkpath(path());
        EXPECT_EQ(::mount(device, place.c_str(), type, 0, options.c_str()), 0);
    }
    Mount(const Mount&) = delete;
    Mount& operator=(const Mount&) = delete;
    ~Mount() { ::umount2(place.c_str(), MNT_DETACH); }

    QString path() const { return QString::fromStdString(place); }
    void make(const char* folder) const { EXPECT_TRUE(QDir(path()).mkpath(QLatin1String(folder))); }

private:
    std::string place;
};

/// A disk whose driver never replies. Calls that wait for it fail once it is removed.
class HangingDisk {
public:
    explicit HangingDisk(const char* place) : mount("hanging", place, "fuse", options()) {}
    HangingDisk(const HangingDisk&) = delete;
    HangingDisk& operator=(const HangingDisk&) = delete;
    ~HangingDisk() { ::close(driver); }

private:
    std::string options() const { return "fd=" + std::to_string(driver) + ",rootmode=40000,user_id=0,group_id=0"; }

    int driver = ::open("/dev/fuse", O_RDWR | O_CLOEXEC);
    Mount mount;
};

/// Volumes that only this process sees.
class MountedVolumesDisks : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        mayMount = ::access("/dev/fuse", R_OK | W_OK) == 0 && takePrivateView() &&
                   ::mount("none", "/mnt", "tmpfs", 0, nullptr) == 0 &&
                   ::mount("none", "/media", "tmpfs", 0, nullptr) == 0;
    }

    void SetUp() override
    {
        if (!mayMount)
            GTEST_SKIP() << "SKIPPED: mounting needs root and FUSE";
    }

    static std::vector<Volume> found()
    {
        const QList<Volume> volumes = answeringVolumes(patience);
        std::vector<Volume> disks;
        std::copy_if(volumes.begin(), volumes.end(), std::back_inserter(disks),
                     [](const Volume& volume) { return !volume.path.contains(QLatin1String("/gvfs/")); });
        return disks;
    }

    static inline bool mayMount = false;
};

TEST_F(MountedVolumesDisks, areThoseThatPeopleMount)
{
    const TemporaryFolder elsewhere;
    const Mount disk("/dev/sdz1", "/media/someone/Archivo");
    const Mount other("/dev/sdz2", "/mnt/disk");
    const Mount noDisk("memory", "/mnt/memory");
    const Mount system("/dev/sdz3", elsewhere.location().path());
    const std::vector<Volume> disks = found();
    ASSERT_EQ(disks.size(), 2u);
    EXPECT_EQ(disks[0].path, disk.path());
    EXPECT_EQ(disks[1].path, other.path());
    EXPECT_FALSE(disks[0].isCard);
}

TEST_F(MountedVolumesDisks, areListedOnceIfMountedTwiceAtOnePlace)
{
    const Mount disk("/dev/sdz1", "/mnt/disk");
    const Mount above("/dev/sdz1", "/mnt/disk");
    EXPECT_EQ(found().size(), 1u);
}

TEST_F(MountedVolumesDisks, areCardsInACardSlotOrWithTheFoldersOfACamera)
{
    const Mount slot("/dev/mmcblk0p1", "/mnt/slot");
    const Mount photos("/dev/sdy1", "/mnt/photos");
    photos.make("DCIM/100CANON");
    const Mount camcorder("/dev/sdz1", "/mnt/camcorder");
    camcorder.make("PRIVATE/AVCHD/BDMV");
    const std::vector<Volume> cards = found();
    EXPECT_EQ(cards.size(), 3u);
    for (const Volume& card : cards)
        EXPECT_TRUE(card.isCard) << card.path.toStdString();
}

TEST_F(MountedVolumesDisks, areWaitedForTogetherIfSeveralHang)
{
    const Mount disk("/dev/sdz1", "/mnt/z");
    std::list<HangingDisk> hanging;
    for (const char* place : {"/mnt/a", "/mnt/b", "/mnt/c", "/mnt/d", "/mnt/e"})
        hanging.emplace_back(place);
    constexpr std::chrono::milliseconds each{400};
    const auto began = std::chrono::steady_clock::now();
    const QList<Volume> volumes = answeringVolumes(each);
    EXPECT_LT(std::chrono::steady_clock::now() - began, 3 * each);
    ASSERT_EQ(volumes.size(), 1);
    EXPECT_EQ(volumes.first().path, disk.path());
}

TEST_F(MountedVolumesDisks, haveNoFolderToOpenWhileTheyHang)
{
    const Mount disk("/dev/sdz1", "/mnt/z");
    const HangingDisk hanging("/mnt/a");
    EXPECT_TRUE(isAnsweringFolder(QStringLiteral("/mnt/z"), patience));
    EXPECT_FALSE(isAnsweringFolder(QStringLiteral("/mnt/z/gone"), patience));
    EXPECT_FALSE(isAnsweringFolder(QStringLiteral("/mnt/a"), std::chrono::milliseconds(50)));
}

} // namespace
} // namespace reelkeep
