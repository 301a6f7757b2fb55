#include "Files/FileIdentity.h"
#include "Files/SystemCalls.h"
#include "Files/TemporaryFile.h"
#include "Files/TemporaryNames.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace reelkeep {

namespace {

/// Whether the file system does not support the operation. Some also report EINVAL for a name that they do not allow:
/// then all ways to publish fail with it, and the last one reports it.
bool isUnknownHere(int errorNumber)
{
    return errorNumber == EINVAL || errorNumber == ENOSYS || errorNumber == ENOTSUP;
}

} // namespace

void TemporaryFile::publish()
{
    const FileIdentity own = identity();
    if (!publishByRename() && !publishByLink())
        publishOverReservation();
    currentName.clear();
    // Another program may have swapped the file between the last comparison and the call that gives the name.
    if (!isSameFile(identityOf(folder.get(), targetName), own))
        throw FileError(target.path(), EBUSY, "otro programa lo ha cambiado durante la copia");
}

/// ext4, xfs, btrfs, tmpfs, the kernel's own FAT and exFAT.
bool TemporaryFile::publishByRename()
{
    requireOurs();
    if (::renameat2(folder.get(), currentName.c_str(), folder.get(), targetName.c_str(), RENAME_NOREPLACE) == 0)
        return true;
    if (isUnknownHere(errno))
        return false;
    throw publishingFailure(errno);
}

/// NTFS through FUSE, network disks.
bool TemporaryFile::publishByLink()
{
    requireOurs();
    if (::linkat(folder.get(), currentName.c_str(), folder.get(), targetName.c_str(), 0) != 0) {
        if (isUnknownHere(errno) || errno == EPERM || errno == EMLINK)
            return false;
        throw publishingFailure(errno);
    }
    const FileIdentity own = identity();
    const auto named = namedIdentity();
    if (isFuse()) // such disks rename an open file that is removed to a hidden one, which a kill would leave behind
        file.close();
    if (isSameFile(named, own) && ::unlinkat(folder.get(), currentName.c_str(), 0) != 0 && errno != ENOENT)
        throw failure(errno);
    return true;
}

/// exFAT through FUSE can only replace. So an empty file reserves the name, which fails if the name is taken, and our
/// file replaces that. Before, our file gets a second hidden name, which is synced. If the program is killed or the
/// power fails in between, this name shows that the empty file is ours, so neither a copy nor the existence test
/// mistakes it for a video.
void TemporaryFile::publishOverReservation()
{
    seal();
    // Not opened, since FUSE disks keep an open file under another name when it is replaced.
    const bool isReserved = ::mknodat(folder.get(), targetName.c_str(), S_IFREG | S_IRUSR | S_IWUSR, 0) == 0;
    if (!isReserved && errno == EEXIST)
        throw publishingFailure(EEXIST);
    try {
        if (!isReserved)
            throw publishingFailure(errno);
        requireReservation();
        if (::renameat(folder.get(), currentName.c_str(), folder.get(), targetName.c_str()) != 0)
            throw publishingFailure(errno);
    } catch (const FileError&) {
        const Holder holder = holderOfTarget(AT_STATX_FORCE_SYNC);
        const bool isFree = holder == Holder::none || holder == Holder::foreign ||
                            (holder == Holder::reservation && ::unlinkat(folder.get(), targetName.c_str(), 0) == 0);
        if (!isFree)
            currentName.clear(); // the sealed file must stay as long as the empty one, which it explains
        throw;
    }
}

void TemporaryFile::seal()
{
    std::string sealed = sealedName(targetName, fileSystem);
    if (identityOf(folder.get(), sealed) || errno != ENOENT)
        sealed = spareSealedName(targetName, fileSystem);
    requireOurs();
    if (::renameat(folder.get(), currentName.c_str(), folder.get(), sealed.c_str()) != 0) {
        const FileError error = publishingFailure(errno);
        if (identityOf(folder.get(), sealed)) // over a bad connection the rename may have happened all the same
            currentName = sealed;
        throw error;
    }
    currentName = sealed;
    if (syncFolder(folder.get(), file.get()) != 0)
        throw failure(errno);
}

/// The name must still belong to our empty file. Another program may have written to it or renamed a file onto it,
/// which must stay. A file that is renamed onto it in the few microseconds after this is lost: no system call prevents
/// that on the few disks that need a reservation.
void TemporaryFile::requireReservation() const
{
    // Past the cache first: FUSE keeps sizes for a second, separately for each letter case of a name.
    Holder holder = holderOfTarget(AT_STATX_FORCE_SYNC);
    if (holder == Holder::reservation) {
        requireOurs();
        // This fails, since the name is taken, but only after any change of the folder that is under way.
        ::renameat2(folder.get(), currentName.c_str(), folder.get(), targetName.c_str(), RENAME_NOREPLACE);
        holder = holderOfTarget(0); // last, to keep the moment in which another program's file is lost short
    }
    if (holder != Holder::reservation)
        throw publishingFailure(holder == Holder::foreign ? EEXIST : holder == Holder::none ? EBUSY : errno);
}

TemporaryFile::Holder TemporaryFile::holderOfTarget(int flags) const
{
    struct statx status = {};
    if (::statx(folder.get(), targetName.c_str(), AT_SYMLINK_NOFOLLOW | flags, STATX_TYPE | STATX_SIZE, &status) != 0)
        return errno == ENOENT ? Holder::none : Holder::unknown;
    return S_ISREG(status.stx_mode) && status.stx_size == 0 ? Holder::reservation : Holder::foreign;
}

void TemporaryFile::requireOurs() const
{
    const FileIdentity own = identity();
    const auto named = identityOf(folder.get(), currentName);
    if (!named)
        throw publishingFailure(errno);
    if (named != own)
        throw FileError(target.deletingLastPathComponent().appending(currentName).path(), EBUSY,
                        "otro programa lo ha cambiado durante la copia");
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
    const FileDescriptor opened = openAt(path.folder(), path.rest(), O_PATH | O_DIRECTORY);
    struct statfs fileSystem = {};
    if (!opened || ::fstatfs(opened.get(), &fileSystem) != 0)
        throw FileError(place.path(), errno);
    const std::string sealed = sealedName(place.lastPathComponent(), fileSystem);
    struct stat sealedStatus = {};
    if (::fstatat(opened.get(), sealed.c_str(), &sealedStatus, AT_SYMLINK_NOFOLLOW) == 0)
        return S_ISREG(sealedStatus.st_mode);
    if (errno == ENOENT)
        return false;
    throw FileError(place.path(), errno);
}

} // namespace reelkeep
