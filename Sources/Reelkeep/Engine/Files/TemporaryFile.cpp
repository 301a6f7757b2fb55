#include "Files/TemporaryFile.h"

#include "Files/FileIdentity.h"
#include "Files/SourceFile.h"
#include "Files/SystemCalls.h"

#include <cerrno>
#include <fcntl.h>
#include <linux/fs.h>
#include <linux/magic.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace reelkeep {

namespace {

using Clock = std::chrono::steady_clock;

/// At most twice this is unwritten at any time, less on a slow disk, so that the last sync is short, and so is the end
/// of the program during a copy.
constexpr std::int64_t flushedAtOnce = std::int64_t(8) << 20;
constexpr std::chrono::milliseconds flushingTime(100);
/// The program of a FUSE disk keeps unwritten data too, which only a sync writes. A sync costs more, and no data moves
/// during it.
constexpr std::int64_t syncedAtOnce = std::int64_t(32) << 20;
constexpr std::chrono::milliseconds syncingTime(120);

/// Whether the file system does not support the operation, or never allows it.
bool isRefusedHere(int errorNumber)
{
    return errorNumber == EPERM || errorNumber == ENOSYS || errorNumber == ENOTSUP || errorNumber == EINVAL ||
           errorNumber == ESPIPE;
}

FileDescriptor openTargetFolder(const Location& folder)
{
    const ReachablePath path(folder.path());
    FileDescriptor opened = openAt(path.folder(), path.rest(), O_RDONLY | O_DIRECTORY);
    if (!opened && errno == EACCES) // one may be allowed to make files in a folder but not to list it
        opened = openAt(path.folder(), path.rest(), O_PATH | O_DIRECTORY);
    if (!opened)
        throw FileError(folder.path(), errno);
    return opened;
}

struct statfs fileSystemOf(const FileDescriptor& folder, const std::string& path)
{
    struct statfs status = {};
    if (::fstatfs(folder.get(), &status) != 0)
        throw writeError(path, errno, 0);
    return status;
}

} // namespace

WritingPace::WritingPace() : flushing(flushedAtOnce, flushingTime), syncing(syncedAtOnce, syncingTime) {}

TemporaryFile::TemporaryFile(const Location& to, std::int64_t bytes, WritingPace& paces)
    : target(to), targetName(to.lastPathComponent()), size(bytes),
      folder(openTargetFolder(to.deletingLastPathComponent())), fileSystem(fileSystemOf(folder, to.path())),
      pace(isFuse() ? paces.syncing : paces.flushing)
{
    const auto largest = largestFile(fileSystem.f_type);
    struct rlimit own = {};
    const bool isBeyondOwnLimit = ::getrlimit(RLIMIT_FSIZE, &own) == 0 && own.rlim_cur != RLIM_INFINITY &&
                                  static_cast<std::uint64_t>(size) > own.rlim_cur;
    if (isBeyondOwnLimit || (largest && size > *largest))
        throw failure(EFBIG);
}

bool TemporaryFile::clone(int source)
{
    return ::ioctl(file.get(), FICLONE, source) == 0;
}

bool TemporaryFile::hasRoom() const
{
    struct statvfs disk = {};
    if (::fstatvfs(file.get(), &disk) != 0 || disk.f_blocks == 0)
        return true; // it is not reported
    return static_cast<std::uint64_t>(size) <= std::uint64_t(disk.f_bavail) * disk.f_frsize;
}

void TemporaryFile::refuseWithoutRoom()
{
    if (!hasRoom()) {
        ::syncfs(file.get()); // frees the space of files that have just been removed
        if (!hasRoom())
            throw failure(ENOSPC);
    }
    // Two to four times as fast as through the page cache. The sync writes a small video faster, in one go; a FUSE disk
    // uses the memory of a program in any case.
    if (size > flushedAtOnce && !isFuse())
        goDirectly(true);
}

void TemporaryFile::write(std::span<const std::byte> bytes)
{
    constexpr std::size_t block = 4096;
    while (!bytes.empty()) {
        if (isDirect && bytes.size() < block)
            goDirectly(false); // the end of a video that does not fill a block
        const std::size_t whole = isDirect ? bytes.size() / block * block : bytes.size();
        const auto began = Clock::now();
        const auto count = uninterrupted([&] { return ::write(file.get(), bytes.data(), whole); });
        if (count < 0 && errno == EINVAL && isDirect) {
            goDirectly(false); // its blocks are larger, or it wrote no whole ones last time
            continue;
        }
        if (count < 0)
            throw failure(errno);
        if (count == 0)
            throw failure(EIO);
        bytes = bytes.subspan(static_cast<std::size_t>(count));
        written += count;
        if (isDirect) {
            pace.took(count, Clock::now() - began);
            flushing = flushed = written;
        }
    }
    if (!isDirect)
        flush();
}

void TemporaryFile::goDirectly(bool directly)
{
    // Not when opening: some file systems refuse it then, after they have made the file.
    const int flags = ::fcntl(file.get(), F_GETFL);
    const bool isDone = ::fcntl(file.get(), F_SETFL, directly ? flags | O_DIRECT : flags & ~O_DIRECT) == 0;
    if (!isDone && !(directly && isRefusedHere(errno)))
        throw failure(errno);
    isDirect = isDone && directly;
}

void TemporaryFile::flush()
{
    if (written - flushing < pace.portion())
        return;
    const int result = isFuse() ? syncPortion() : writeOutPortion();
    if (result != 0 && !isRefusedHere(errno))
        throw failure(errno);
}

int TemporaryFile::syncPortion()
{
    const auto began = Clock::now();
    const int result = uninterrupted([&] { return ::fdatasync(file.get()); });
    pace.took(written - flushing, Clock::now() - began);
    flushed = flushing = written;
    return result;
}

/// The disk writes one portion while the next one is read.
int TemporaryFile::writeOutPortion()
{
    int result = ::sync_file_range(file.get(), flushing, written - flushing, SYNC_FILE_RANGE_WRITE);
    if (result == 0 && flushing > flushed) {
        result = ::sync_file_range(file.get(), flushed, flushing - flushed, SYNC_FILE_RANGE_WAIT_BEFORE);
        pace.took(flushing - flushed, Clock::now() - portionBegan);
    }
    portionBegan = Clock::now();
    flushed = flushing;
    flushing = written;
    return result;
}

void TemporaryFile::finish(const struct stat& source)
{
    // Disks without permissions or times refuse them, which does the video no harm.
    constexpr mode_t readAndWrite = 0666;
    if (::fchmod(file.get(), source.st_mode & readAndWrite) != 0 && !isRefusedHere(errno))
        throw failure(errno);
    // Both times: exFAT through FUSE sets neither, and reports success, if only one is given.
    const struct timespec times[] = {source.st_atim, source.st_mtim};
    if (::futimens(file.get(), times) != 0 && !isRefusedHere(errno))
        throw failure(errno);
    if (!isFuse() && written > flushing && ::sync_file_range(file.get(), flushing, 0, SYNC_FILE_RANGE_WRITE) != 0 &&
        !isRefusedHere(errno))
        throw failure(errno);
}

void TemporaryFile::sync()
{
    if (uninterrupted([&] { return ::fsync(file.get()); }) != 0)
        throw failure(errno);
    struct stat result = {};
    if (::fstat(file.get(), &result) != 0)
        throw failure(errno);
    if (result.st_size != size)
        throw FileError(target.path(), 0, "no se ha escrito entero");
}

std::uint64_t TemporaryFile::hash(std::span<std::byte> room, const std::stop_token& stop) const
{
    const auto result = hashOf(file.get(), size, target.path(), room, stop);
    if (!result)
        throw FileError(target.path(), 0, "no se ha escrito entero");
    return *result;
}

void TemporaryFile::requireOnDisk(std::uint64_t expectedHash, std::span<std::byte> room, const std::stop_token& stop)
{
    if (hashOnDisk(room, stop) != expectedHash)
        throw FileError(target.path(), 0, "lo escrito en el disco no es igual a lo leido");
}

std::uint64_t TemporaryFile::hashOnDisk(std::span<std::byte> room, const std::stop_token& stop)
{
    ::fcntl(file.get(), F_SETFL, O_NOATIME); // a disk without owners may refuse this
    // In any case: some file systems treat a direct read as an ordinary one, which the page cache would answer.
    ::posix_fadvise(file.get(), 0, 0, POSIX_FADV_DONTNEED);
    goDirectly(true);
    try {
        return hash(room, stop);
    } catch (const FileError& error) {
        if (error.code() != EINVAL || !isDirect)
            throw;
    }
    goDirectly(false); // its blocks are larger
    return hash(room, stop);
}

void TemporaryFile::syncNames()
{
    if (!file)
        file = openAt(folder.get(), targetName.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    if (syncFolder(folder.get(), file.get()) != 0)
        throw failure(errno);
}

FileIdentity TemporaryFile::identity() const
{
    const auto own = identityOf(file.get());
    if (!own)
        throw failure(errno);
    return *own;
}

std::optional<FileIdentity> TemporaryFile::namedIdentity() const
{
    const auto named = identityOf(folder.get(), currentName);
    if (!named && errno != ENOENT)
        throw failure(errno);
    return named;
}

FileIdentity TemporaryFile::folderIdentity() const
{
    const auto own = identityOf(folder.get());
    if (!own)
        throw failure(errno);
    return *own;
}

bool TemporaryFile::isFuse() const
{
    return fileSystem.f_type == FUSE_SUPER_MAGIC;
}

void TemporaryFile::remove()
{
    if (!currentName.empty()) {
        const auto own = identityOf(file.get());
        if (isFuse()) // such disks rename an open file that is removed to a hidden one
            file.close();
        if (own && identityOf(folder.get(), currentName) == own)
            ::unlinkat(folder.get(), currentName.c_str(), 0);
    }
    currentName.clear();
    file.close();
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
