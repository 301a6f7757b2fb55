#include "MountedVolumes.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QStorageInfo>

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

/// Left to itself where it hangs.
template <class Question>
auto ask(Question question)
{
    std::packaged_task<decltype(question())()> task(std::move(question));
    auto answer = task.get_future();
    try {
        std::thread(std::move(task)).detach();
    } catch (const std::system_error&) { // No thread left: there will be no answer.
        answer = {};
    }
    return answer;
}

template <class Answer>
Answer answerUntil(std::future<Answer>& asked, Clock::time_point end)
{
    return asked.valid() && asked.wait_until(end) == std::future_status::ready ? asked.get() : Answer();
}

bool isMountedByPeople(const mntent& mount)
{
    const std::string_view place(mount.mnt_dir);
    const std::string_view kind(mount.mnt_type);
    const bool isDisk = std::string_view(mount.mnt_fsname).starts_with("/dev/");
    const bool isRemote = kind.starts_with("fuse") || kind.starts_with("nfs") || kind == "cifs";
    return (isDisk || isRemote) &&
        (place.starts_with("/media/") || place.starts_with("/run/media/") || place.starts_with("/mnt"));
}

/// Out of the kernel's table, which asks no disk.
QStringList placesMountedByPeople()
{
    QStringList places;
    const std::unique_ptr<std::FILE, decltype(&endmntent)> table(setmntent("/proc/self/mounts", "r"), endmntent);
    while (const mntent* mount = table ? getmntent(table.get()) : nullptr) {
        const QString place = QFile::decodeName(mount->mnt_dir);
        if (isMountedByPeople(*mount) && !places.contains(place))
            places.append(place);
    }
    return places;
}

QList<Volume> volumeAt(const QString& place)
{
    const QStorageInfo volume(place);
    return volume.isValid() && volume.isReady() ? QList<Volume>{{place, volume.name()}} : QList<Volume>{};
}

/// Cameras and phones that speak a protocol instead of being a disk appear as folders here.
QList<Volume> attachedDevices()
{
    const QDir mounts(QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + QStringLiteral("/gvfs"));
    QList<Volume> devices;
    for (const QString& name : mounts.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        devices.append({mounts.filePath(name), {}});
    return devices;
}

} // namespace

QList<Volume> answeringVolumes(std::chrono::milliseconds patience)
{
    const Clock::time_point end = Clock::now() + patience;
    std::vector<std::future<QList<Volume>>> questions;
    for (const QString& place : placesMountedByPeople())
        questions.push_back(ask([place] { return volumeAt(place); }));
    questions.push_back(ask(attachedDevices));
    QList<Volume> answers;
    for (auto& asked : questions)
        answers += answerUntil(asked, end);
    return answers;
}

bool isAnsweringFolder(const QString& folder, std::chrono::milliseconds patience)
{
    auto asked = ask([folder] { return QFileInfo(folder).isDir(); });
    return answerUntil(asked, Clock::now() + patience);
}

} // namespace reelkeep
