#include "Files/Disk.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string_view>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace reelkeep {

namespace {

namespace fs = std::filesystem;

/// Compared with one thread, cold disks take 0.4 of the time, FUSE disks 0.1, folders in memory 0.6. Sixteen gain
/// nothing more; docs/performance.md has the figures.
constexpr unsigned manyWalkers = 8;

std::string numbersOf(unsigned majorNumber, unsigned minorNumber)
{
    return std::to_string(majorNumber) + ":" + std::to_string(minorNumber);
}

/// What the mount table says of a mounted file system.
struct Mount {
    std::string type;
    std::string source;
};

Mount mountOf(std::uint64_t mountId)
{
    std::ifstream mounts("/proc/self/mountinfo");
    for (std::string line; std::getline(mounts, line);) {
        std::istringstream fields(line);
        std::uint64_t id = 0;
        if (!(fields >> id) || id != mountId)
            continue;
        Mount mount;
        fields.str(line.substr(line.find(" - ") + 3));
        fields >> mount.type >> mount.source;
        return mount;
    }
    return {};
}

/// The block device below a mounted file system with a made-up device number, as btrfs has one for each subvolume.
std::optional<std::string> blockDeviceOf(std::uint64_t mountId)
{
    struct stat status = {};
    if (::stat(mountOf(mountId).source.c_str(), &status) != 0 || !S_ISBLK(status.st_mode))
        return std::nullopt;
    return numbersOf(major(status.st_rdev), minor(status.st_rdev));
}

/// The whole disk below a partition, an encrypted or a joined volume; empty if that is no block device.
fs::path wholeDisk(const fs::path& listedDevice)
{
    std::error_code failure;
    fs::path device = fs::canonical(listedDevice, failure);
    while (!failure) {
        if (fs::exists(device / "partition", failure))
            device = device.parent_path();
        const fs::directory_iterator below(device / "slaves", failure);
        if (failure || below == fs::directory_iterator())
            return device;
        device = fs::canonical(below->path(), failure);
    }
    return {};
}

/// Whether it has to move a head from one folder to the next. Spinning disks appear as `sd*`; virtual disks that report
/// `rotational` are ignored. USB sticks and card readers that do not report what they are count as spinning: they take
/// one request after the other in any case.
bool isSpinning(const fs::path& disk)
{
    char rotational = '0';
    std::ifstream(disk / "queue/rotational") >> rotational;
    return rotational == '1' && disk.filename().string().compare(0, 2, "sd") == 0;
}

} // namespace

Disk diskHolding(const Location& place, const std::string& blockDevices)
{
    struct statx status = {};
    if (::statx(AT_FDCWD, place.path().c_str(), 0, STATX_BASIC_STATS | STATX_MNT_ID, &status) != 0)
        return {};
    std::string device = numbersOf(status.stx_dev_major, status.stx_dev_minor);
    if (status.stx_dev_major == 0)
        device = blockDeviceOf(status.stx_mnt_id).value_or(device);
    const fs::path disk = wholeDisk(blockDevices + "/" + device);
    if (disk.empty()) // memory, a network, another program
        return {.id = device, .walkers = manyWalkers};
    return {.id = disk.filename().string(), .walkers = isSpinning(disk) ? 1 : manyWalkers};
}

bool isLocalDisk(int file)
{
    struct statx status = {};
    if (::statx(file, "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, STATX_MNT_ID, &status) != 0)
        return false;
    if (status.stx_dev_major != 0) // a block device
        return true;
    // Of the file systems without a device number: those on disks, `fuseblk` among them, and those in memory.
    static constexpr std::string_view local[] = {"fuseblk", "btrfs",   "bcachefs", "zfs",  "tmpfs",
                                                 "ramfs",   "overlay", "ecryptfs", "ubifs"};
    const std::string type = mountOf(status.stx_mnt_id).type;
    return std::find(std::begin(local), std::end(local), type) != std::end(local);
}

} // namespace reelkeep
