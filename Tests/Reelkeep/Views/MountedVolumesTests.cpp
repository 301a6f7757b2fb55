#include "Fixtures/Widgets.h"
#include "MountedVolumes.h"

#include <QDir>
#include <QStandardPaths>

#include <gtest/gtest.h>

#include <algorithm>

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

} // namespace
} // namespace reelkeep
