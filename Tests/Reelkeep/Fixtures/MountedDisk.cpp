#include "Fixtures/MountedDisk.h"

#include "Files/FileDescriptor.h"
#include "Fixtures/FaultDisk.h"
#include "Fixtures/PrivateView.h"
#include "Fixtures/Processes.h"

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <linux/loop.h>
#include <map>
#include <stdexcept>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace reelkeep {

namespace {

void requireRun(const std::vector<std::string>& command)
{
    if (!run(command))
        throw std::runtime_error("failed: " + command[0] + " " + command.back());
}

/// A block device over `image` that the kernel detaches once it is no longer in use. `hold` keeps it in use until it is
/// closed.
std::string attach(const Location& image, bool isDirect, FileDescriptor& hold)
{
    const FileDescriptor backing(::open(image.path().c_str(), O_RDWR | O_CLOEXEC));
    const FileDescriptor control(::open("/dev/loop-control", O_RDWR | O_CLOEXEC));
    struct loop_config config = {};
    config.fd = static_cast<__u32>(backing.get());
    config.info.lo_flags = LO_FLAGS_AUTOCLEAR | (isDirect ? LO_FLAGS_DIRECT_IO : 0);
    for (int attempt = 0; attempt < 100; ++attempt) { // other processes look for a free one too
        const std::string device = "/dev/loop" + std::to_string(::ioctl(control.get(), LOOP_CTL_GET_FREE));
        hold = FileDescriptor(::open(device.c_str(), O_RDWR | O_CLOEXEC));
        if (hold && ::ioctl(hold.get(), LOOP_CONFIGURE, &config) == 0)
            return device;
    }
    throw std::runtime_error("no loop device");
}

/// These tests take long and print little. Without this, a killed runner would leave them running to their ends.
[[maybe_unused]] const bool endsWithRunner = ::prctl(PR_SET_PDEATHSIG, SIGKILL) == 0;

/// Whether a private file system in memory is mounted over /dev/shm, which is small in containers. It and its files end
/// with this process. Mounted before any test can make files there.
const bool hasPrivateMemory = takePrivateView() && ::mount("none", "/dev/shm", "tmpfs", 0, "mode=1777") == 0;

dev_t deviceOf(const Location& place)
{
    struct stat status = {};
    return ::stat(place.path().c_str(), &status) == 0 ? status.st_dev : 0;
}

} // namespace

bool MountedDisk::isPossible()
{
    const auto isThere = [](const char* device) { return ::access(device, R_OK | W_OK) == 0; };
    return hasPrivateMemory && isThere("/dev/fuse") && isThere("/dev/loop-control");
}

MountedDisk::MountedDisk(std::string fileSystem, int mebibytes)
    : kind(std::move(fileSystem)), place("/dev/shm"), image(place.file("image", "")),
      mountPoint(place.folder("mounted"))
{
    if (!isPossible())
        throw std::runtime_error("may not mount");
    std::filesystem::resize_file(image.path(), std::uintmax_t(mebibytes) << 20);
    if (kind == "tmpfs") {
        requireRun(
            {"mount", "-t", "tmpfs", "-o", "size=" + std::to_string(mebibytes) + "M", "none", mountPoint.path()});
        return;
    }
    make();
    putIn();
}

MountedDisk::MountedDisk(std::string fileSystem, FaultDisk& disk)
    : kind(std::move(fileSystem)), below(&disk), place("/dev/shm"), image(disk.image()),
      mountPoint(place.folder("mounted"))
{
    make();
    putIn();
}

MountedDisk::MountedDisk(std::string fileSystem, const Location& existing)
    : kind(std::move(fileSystem)), place("/dev/shm"), image(existing), mountPoint(place.folder("mounted"))
{
    putIn();
}

MountedDisk::~MountedDisk()
{
    if (below)
        below->heal();
    takeOut();
}

void MountedDisk::make()
{
    const std::map<std::string, std::vector<std::string>> makers = {
        {"ext4", {"mkfs.ext4", "-q", "-F"}}, {"btrfs", {"mkfs.btrfs", "-q", "-f"}},
        {"xfs", {"mkfs.xfs", "-q", "-f"}},   {"ntfs", {"mkfs.ntfs", "-Q", "-F"}},
        {"exfat", {"mkfs.exfat"}},
    };
    std::vector<std::string> maker = makers.at(kind);
    maker.push_back(image.path());
    requireRun(maker);
}

void MountedDisk::putIn()
{
    FileDescriptor hold;
    const std::string device = attach(below ? below->file() : image, below != nullptr, hold);
    if (kind == "ntfs")
        program = start({"ntfs-3g", "-o", "no_detach", device, mountPoint.path()});
    else if (kind == "exfat")
        program = start({"mount.exfat-fuse", "-d", device, mountPoint.path()});
    else
        requireRun({"mount", "-t", kind, device, mountPoint.path()});
    waitUntilMounted();
}

void MountedDisk::waitUntilMounted()
{
    const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (deviceOf(mountPoint) == deviceOf(place.location()) || deviceOf(mountPoint) == 0) {
        if (std::chrono::steady_clock::now() > patience)
            throw std::runtime_error("cannot mount " + kind);
        std::this_thread::yield();
    }
}

void MountedDisk::takeOut()
{
    if (::umount2(mountPoint.path().c_str(), 0) != 0)
        ::umount2(mountPoint.path().c_str(), MNT_DETACH);
    if (program > 0)
        finish(program); // its last writes too
    program = -1;
}

void MountedDisk::remount()
{
    takeOut();
    putIn();
}

void MountedDisk::makeReadOnly()
{
    requireRun({"mount", "-o", "remount,ro", mountPoint.path()});
}

void MountedDisk::kill()
{
    ::kill(program, SIGKILL);
    finish(program);
    program = -1;
}

void MountedDisk::detach()
{
    ::umount2(mountPoint.path().c_str(), MNT_DETACH);
}

} // namespace reelkeep
