#include "Files/FileError.h"
#include "Files/SystemCalls.h"
#include "Files/TemporaryFile.h"
#include "Files/TemporaryNames.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace reelkeep {

namespace {

/// The file system does not know the operation. EINVAL is also the word of some for a name that they do not admit: the
/// next step of the ladder then fails with it again, and the last one tells.
bool isUnknownHere(int errorNumber)
{
    return errorNumber == EINVAL || errorNumber == ENOSYS || errorNumber == ENOTSUP;
}

} // namespace

void TemporaryFile::publish()
{
    if (!publishByRename() && !publishByLink())
        publishOverReservation();
    currentName.clear();
    if (syncFolder(folder.get(), file.get()) != 0)
        throw failure(errno);
}

/// ext4, xfs, btrfs, tmpfs, the kernel's own FAT and exFAT.
bool TemporaryFile::publishByRename()
{
    if (::renameat2(folder.get(), currentName.c_str(), folder.get(), targetName.c_str(), RENAME_NOREPLACE) == 0)
        return true;
    if (isUnknownHere(errno))
        return false;
    throw publishingFailure(errno);
}

/// NTFS through FUSE, network disks.
bool TemporaryFile::publishByLink()
{
    if (::linkat(folder.get(), currentName.c_str(), folder.get(), targetName.c_str(), 0) != 0) {
        if (isUnknownHere(errno) || errno == EPERM || errno == EMLINK)
            return false;
        throw publishingFailure(errno);
    }
    if (::unlinkat(folder.get(), currentName.c_str(), 0) != 0 && errno != ENOENT)
        throw failure(errno);
    return true;
}

/// exFAT through FUSE: it can only replace. So the name is taken by an empty file, made only if nothing stands there,
/// and that is what gets replaced. Our file first changes its hidden name: should we be killed in between, this tells
/// the empty file from somebody else's, and neither a copy nor the existence test will take it for a video.
void TemporaryFile::publishOverReservation()
{
    seal();
    // Not opened: FUSE disks keep an open file under another name when it is replaced.
    const bool isReserved = ::mknodat(folder.get(), targetName.c_str(), S_IFREG | S_IRUSR | S_IWUSR, 0) == 0;
    if (!isReserved && errno == EEXIST)
        throw publishingFailure(EEXIST);
    if (isReserved && isNothingButReserved() &&
        ::renameat(folder.get(), currentName.c_str(), folder.get(), targetName.c_str()) == 0)
        return;
    const FileError error = publishingFailure(errno);
    const Holder holder = lookAtTarget(AT_STATX_FORCE_SYNC);
    const bool isFree = holder == Holder::nobody || holder == Holder::another ||
                        (holder == Holder::reservation && ::unlinkat(folder.get(), targetName.c_str(), 0) == 0);
    if (!isFree)
        currentName.clear(); // the sealed file stays as long as the empty one does: it tells what that is
    throw error;
}

void TemporaryFile::seal()
{
    const std::string sealed = sealedName(targetName, fileSystem);
    if (::renameat(folder.get(), currentName.c_str(), folder.get(), sealed.c_str()) != 0) {
        const FileError error = publishingFailure(errno);
        ::unlinkat(folder.get(), sealed.c_str(), 0); // a failure over a bad connection may have done its work
        throw error;
    }
    currentName = sealed;
}

/// Whether the name is still held by our empty file; else `errno` tells why not. Somebody may have written to it, or
/// renamed a file onto it: that is theirs now. After this look a few microseconds remain in which a file renamed onto
/// it is lost; no call of the system closes them, on the few disks that come to this.
bool TemporaryFile::isNothingButReserved() const
{
    // First at the disk itself: FUSE remembers sizes for a second, for each letter case of a name its own.
    Holder holder = lookAtTarget(AT_STATX_FORCE_SYNC);
    if (holder == Holder::reservation) {
        // This fails, as the name is taken, but only once whoever is changing the folder at the moment is done.
        ::renameat2(folder.get(), currentName.c_str(), folder.get(), targetName.c_str(), RENAME_NOREPLACE);
        holder = lookAtTarget(0);
    }
    if (holder == Holder::another || holder == Holder::nobody)
        errno = holder == Holder::another ? EEXIST : EBUSY;
    return holder == Holder::reservation;
}

TemporaryFile::Holder TemporaryFile::lookAtTarget(int flags) const
{
    struct statx status = {};
    if (::statx(folder.get(), targetName.c_str(), AT_SYMLINK_NOFOLLOW | flags, STATX_TYPE | STATX_SIZE, &status) != 0)
        return errno == ENOENT ? Holder::nobody : Holder::unknown;
    return S_ISREG(status.stx_mode) && status.stx_size == 0 ? Holder::reservation : Holder::another;
}

FileError TemporaryFile::publishingFailure(int errorNumber) const
{
    struct stat status = {};
    if (errorNumber == EEXIST)
        return {target.path(), EEXIST, "ha aparecido algo con ese nombre durante la copia"};
    if (errorNumber == ENOENT && ::fstatat(folder.get(), currentName.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return {target.path(), ENOENT, "ha desaparecido durante la copia"};
    if (errorNumber == ENOENT || errorNumber == EINVAL || errorNumber == EILSEQ)
        return creationError(folder.get(), target.path(), errorNumber);
    return failure(errorNumber);
}

bool isAbandonedReservation(const Location& place, const struct stat& status)
{
    if (!S_ISREG(status.st_mode) || status.st_size != 0)
        return false;
    const Location folder = place.deletingLastPathComponent();
    const ReachablePath path(folder.path());
    const FileDescriptor opened(
        uninterrupted([&] { return ::openat(path.folder(), path.rest(), O_PATH | O_DIRECTORY | O_CLOEXEC); }));
    struct statfs fileSystem = {};
    if (!opened || ::fstatfs(opened.get(), &fileSystem) != 0)
        throw FileError(place.path(), errno);
    const std::string sealed = sealedName(place.lastPathComponent(), fileSystem);
    struct stat sealedStatus = {};
    if (::fstatat(opened.get(), sealed.c_str(), &sealedStatus, AT_SYMLINK_NOFOLLOW) == 0)
        return true;
    if (errno == ENOENT)
        return false;
    throw FileError(place.path(), errno);
}

} // namespace reelkeep
