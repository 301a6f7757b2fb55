#include "MountedVolumes.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QStorageInfo>
#include <QUrl>

#include <cstdio>
#include <future>
#include <memory>
#include <mntent.h>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace reelkeep {

namespace {

using Clock = std::chrono::steady_clock;

/// Runs the query on a detached thread; if it never returns, the thread is abandoned.
template <class Query>
auto start(Query query)
{
    std::packaged_task<decltype(query())()> task(std::move(query));
    auto result = task.get_future();
    try {
        std::thread(std::move(task)).detach();
    } catch (const std::system_error&) { // No thread left: there will be no result.
        result = {};
    }
    return result;
}

template <class Result>
Result resultBy(Clock::time_point end, std::future<Result>& query)
{
    return query.valid() && query.wait_until(end) == std::future_status::ready ? query.get() : Result();
}

bool isMountedByPeople(const mntent& mount)
{
    const std::string_view path(mount.mnt_dir);
    const std::string_view kind(mount.mnt_type);
    const bool isDisk = std::string_view(mount.mnt_fsname).starts_with("/dev/");
    const bool isRemote = kind.starts_with("fuse") || kind.starts_with("nfs") || kind == "cifs";
    return (isDisk || isRemote) &&
        (path.starts_with("/media/") || path.starts_with("/run/media/") || path.starts_with("/mnt"));
}

/// Read from /proc/self/mounts, which touches no disk.
QStringList pathsMountedByPeople()
{
    QStringList paths;
    const std::unique_ptr<std::FILE, decltype(&endmntent)> table(setmntent("/proc/self/mounts", "r"), endmntent);
    while (const mntent* mount = table ? getmntent(table.get()) : nullptr) {
        const QString path = QFile::decodeName(mount->mnt_dir);
        if (isMountedByPeople(*mount) && !paths.contains(path))
            paths.append(path);
    }
    return paths;
}

/// By the slot it is in, or by the folders that cameras make.
bool isCard(const QStorageInfo& volume)
{
    const QDir root(volume.rootPath());
    return volume.device().startsWith("/dev/mmcblk") || root.exists(QStringLiteral("DCIM")) ||
        root.exists(QStringLiteral("PRIVATE/AVCHD"));
}

QList<Volume> volumeAt(const QString& path)
{
    const QStorageInfo volume(path);
    if (!volume.isValid() || !volume.isReady())
        return {};
    return {{path, volume.name(), isCard(volume)}};
}

/// A device behind a name of the form kind:host=Sony_ILCE-7M4 or kind:server=nas,share=Video.
Volume attachedDevice(const QString& path, const QString& name)
{
    const bool isCamera = name.startsWith(QLatin1String("mtp:")) || name.startsWith(QLatin1String("gphoto2:"));
    QString label = QUrl::fromPercentEncoding(name.section(u'=', -1).toUtf8());
    if (isCamera)
        label.replace(u'_', u' ');
    return {path, label, isCamera};
}

/// Cameras and phones that are connected by a protocol and not as a disk appear as folders here; so do shares.
QList<Volume> attachedDevices()
{
    const QDir mounts(QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + QStringLiteral("/gvfs"));
    QList<Volume> devices;
    for (const QString& name : mounts.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        devices.append(attachedDevice(mounts.filePath(name), name));
    return devices;
}

} // namespace

QList<Volume> answeringVolumes(std::chrono::milliseconds patience)
{
    const Clock::time_point end = Clock::now() + patience;
    std::vector<std::future<QList<Volume>>> queries;
    for (const QString& path : pathsMountedByPeople())
        queries.push_back(start([path] { return volumeAt(path); }));
    queries.push_back(start(attachedDevices));
    QList<Volume> volumes;
    for (auto& query : queries)
        volumes += resultBy(end, query);
    return volumes;
}

bool isAnsweringFolder(const QString& folder, std::chrono::milliseconds patience)
{
    auto query = start([folder] { return QFileInfo(folder).isDir(); });
    return resultBy(Clock::now() + patience, query);
}

} // namespace reelkeep
