#include "Files/TemporaryFile.h"

#include "Files/FileError.h"
#include "Files/SystemCalls.h"
#include "Files/TemporaryNames.h"

#include <cerrno>
#include <fcntl.h>
#include <linux/fs.h>
#include <linux/magic.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace reelkeep {

namespace {

/// At most twice this is unwritten at any time: so the last sync is short, and so is the end of the program in
/// mid-copy.
constexpr std::int64_t flushedAtOnce = std::int64_t(8) << 20;
/// A FUSE disk hands everything to a program that keeps unwritten data of its own; only a sync reaches that.
constexpr std::int64_t syncedAtOnce = std::int64_t(32) << 20;

/// The file system does not know the operation, or does not allow it to anybody.
bool isRefusedHere(int errorNumber)
{
    return errorNumber == EPERM || errorNumber == ENOSYS || errorNumber == ENOTSUP || errorNumber == EINVAL ||
           errorNumber == ESPIPE;
}

FileDescriptor openTargetFolder(const Location& folder)
{
    const ReachablePath path(folder.path());
    const auto open = [&](int access) {
        return FileDescriptor(
            uninterrupted([&] { return ::openat(path.folder(), path.rest(), access | O_DIRECTORY | O_CLOEXEC); }));
    };
    FileDescriptor opened = open(O_RDONLY);
    if (!opened && errno == EACCES) // one may be allowed to put files into a folder that one cannot list
        opened = open(O_PATH);
    if (!opened)
        throw FileError(folder.path(), errno);
    return opened;
}

} // namespace

TemporaryFile::TemporaryFile(const Location& to, std::int64_t bytes)
    : target(to), targetName(to.lastPathComponent()), size(bytes),
      folder(openTargetFolder(to.deletingLastPathComponent()))
{
    if (::fstatfs(folder.get(), &fileSystem) != 0)
        throw failure(errno);
    const auto largest = largestFile(fileSystem.f_type);
    struct rlimit own = {};
    const bool isBeyondOwnLimit = ::getrlimit(RLIMIT_FSIZE, &own) == 0 && own.rlim_cur != RLIM_INFINITY &&
                                  static_cast<std::uint64_t>(size) > own.rlim_cur;
    if (isBeyondOwnLimit || (largest && size > *largest))
        throw failure(EFBIG);
}

void TemporaryFile::create()
{
    removeLeftover(sealedName(targetName, fileSystem));
    const std::string name = growingName(targetName, fileSystem);
    removeLeftover(name);
    struct stat status = {};
    if (::fstatat(folder.get(), targetName.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0)
        throw publishingFailure(EEXIST);
    constexpr mode_t nobodyElse = 0600;
    file = FileDescriptor(uninterrupted([&] {
        return ::openat(folder.get(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, nobodyElse);
    }));
    if (!file)
        throw creationError(folder.get(), target.path(), errno);
    currentName = name;
    lock(file.get(), name);
    // Two to four times as fast as through the kernel's memory. What is small is faster written by its sync, at one go;
    // a FUSE disk has a program's memory before it in any case.
    if (size > flushedAtOnce && fileSystem.f_type != FUSE_SUPER_MAGIC)
        writeDirectly(true);
}

void TemporaryFile::removeLeftover(const std::string& name)
{
    const auto open = [&](int access) {
        return FileDescriptor(uninterrupted(
            [&] { return ::openat(folder.get(), name.c_str(), access | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC); }));
    };
    FileDescriptor leftover = open(O_RDWR); // some network disks lock only what may be written
    if (!leftover && errno == EACCES)
        leftover = open(O_RDONLY);
    if (!leftover && (errno == ENOENT || errno == EINVAL || errno == EILSEQ))
        return; // the last two: a name that the disk does not admit, as making it will tell
    if (!leftover)
        throw failure(errno);
    lock(leftover.get(), name);
    // A reservation goes before the sealed file, which is all that tells it from somebody's empty file.
    struct stat status = {};
    if (::fstatat(folder.get(), targetName.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno != ENOENT)
            throw failure(errno);
    } else if (isAbandonedReservation(target, status) && ::unlinkat(folder.get(), targetName.c_str(), 0) != 0) {
        throw failure(errno);
    }
    if (::unlinkat(folder.get(), name.c_str(), 0) != 0)
        throw failure(errno);
}

void TemporaryFile::lock(int descriptor, const std::string& name)
{
    const bool isLocked = ::flock(descriptor, LOCK_EX | LOCK_NB) == 0;
    const bool isHeldElsewhere = !isLocked && errno == EWOULDBLOCK;
    if (!isLocked && !isHeldElsewhere && errno != ENOLCK && !isRefusedHere(errno))
        throw failure(errno);
    // Between opening and locking another run may have put its own file in this place.
    struct stat opened = {};
    struct stat named = {};
    if (::fstat(descriptor, &opened) != 0 || ::fstatat(folder.get(), name.c_str(), &named, AT_SYMLINK_NOFOLLOW) != 0)
        throw failure(errno);
    const bool isStillNamed = S_ISREG(named.st_mode) && opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
    if (isHeldElsewhere || !isStillNamed) {
        currentName.clear(); // the other's now, so not ours to remove
        throw FileError(target.path(), EBUSY, "otra ventana lo esta copiando");
    }
}

bool TemporaryFile::clone(int source)
{
    return ::ioctl(file.get(), FICLONE, source) == 0;
}

bool TemporaryFile::hasRoom() const
{
    struct statvfs disk = {};
    if (::fstatvfs(file.get(), &disk) != 0 || disk.f_blocks == 0)
        return true; // it does not tell
    return static_cast<std::uint64_t>(size) <= std::uint64_t(disk.f_bavail) * disk.f_frsize;
}

void TemporaryFile::refuseWithoutRoom()
{
    if (hasRoom())
        return;
    ::syncfs(file.get()); // what was removed a moment ago may give back its room only now
    if (!hasRoom())
        throw failure(ENOSPC);
}

void TemporaryFile::write(std::span<const std::byte> bytes)
{
    constexpr std::size_t block = 4096;
    while (!bytes.empty()) {
        if (isDirect && bytes.size() < block)
            writeDirectly(false); // the end of a video that does not fill a block
        const std::size_t whole = isDirect ? bytes.size() / block * block : bytes.size();
        const auto count = uninterrupted([&] { return ::write(file.get(), bytes.data(), whole); });
        if (count < 0 && errno == EINVAL && isDirect) {
            writeDirectly(false); // its blocks are larger, or it wrote no whole ones last time
            continue;
        }
        if (count < 0)
            throw failure(errno);
        if (count == 0)
            throw failure(EIO);
        bytes = bytes.subspan(static_cast<std::size_t>(count));
        written += count;
    }
    if (!isDirect)
        flush();
}

void TemporaryFile::writeDirectly(bool directly)
{
    // Not on opening: where that is refused, some file systems have already made the file.
    const bool isDone = ::fcntl(file.get(), F_SETFL, directly ? O_DIRECT : 0) == 0;
    if (!isDone && !(directly && isRefusedHere(errno)))
        throw failure(errno);
    isDirect = isDone && directly;
}

void TemporaryFile::flush()
{
    int result = 0;
    if (fileSystem.f_type == FUSE_SUPER_MAGIC) {
        if (written - flushing < syncedAtOnce)
            return;
        result = uninterrupted([&] { return ::fdatasync(file.get()); });
    } else {
        if (written - flushing < flushedAtOnce)
            return;
        result = ::sync_file_range(file.get(), flushing, written - flushing, SYNC_FILE_RANGE_WRITE);
        if (result == 0 && flushing > 0)
            result = ::sync_file_range(file.get(), 0, flushing, SYNC_FILE_RANGE_WAIT_BEFORE);
    }
    if (result != 0 && !isRefusedHere(errno))
        throw failure(errno);
    flushing = written;
}

void TemporaryFile::finish(const struct stat& source)
{
    // Disks without these notions refuse them; the video is none the worse.
    constexpr mode_t readAndWrite = 0666;
    if (::fchmod(file.get(), source.st_mode & readAndWrite) != 0 && !isRefusedHere(errno))
        throw failure(errno);
    // Both: exFAT through FUSE, told to set only one, sets neither and reports success.
    const struct timespec times[] = {source.st_atim, source.st_mtim};
    if (::futimens(file.get(), times) != 0 && !isRefusedHere(errno))
        throw failure(errno);
    if (uninterrupted([&] { return ::fsync(file.get()); }) != 0)
        throw failure(errno);
    struct stat result = {};
    if (::fstat(file.get(), &result) != 0)
        throw failure(errno);
    if (result.st_size != size)
        throw FileError(target.path(), 0, "no se ha escrito entero");
}

void TemporaryFile::remove()
{
    file.close(); // first: FUSE disks turn the removal of an open file into a hidden one
    if (!currentName.empty())
        ::unlinkat(folder.get(), currentName.c_str(), 0);
    currentName.clear();
}

FileError TemporaryFile::failure(int errorNumber) const
{
    struct stat status = {};
    const bool isKnown = ::fstat(folder.get(), &status) == 0;
    return writeError(target.path(), errorNumber, isKnown ? status.st_dev : 0);
}

std::optional<std::int64_t> largestFile(std::int64_t fileSystemType)
{
    if (fileSystemType == MSDOS_SUPER_MAGIC)
        return (std::int64_t(1) << 32) - 1;
    return std::nullopt;
}

} // namespace reelkeep
