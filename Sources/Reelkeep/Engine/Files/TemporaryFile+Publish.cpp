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

/// The file system does not know the operation. EINVAL is also the word of some for a name that they do not admit: the
/// next step of the ladder then fails with it again, and the last one tells.
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
    // Between the last comparison and the call that gives the name, another program may still have swapped the file.
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
    const auto own = identityOf(file.get());
    if (!own)
        throw failure(errno);
    const auto named = identityOf(folder.get(), currentName);
    if (!named && errno != ENOENT)
        throw failure(errno);
    if (isFuse()) // such disks turn the removal of an open file into a hidden one, which a kill would leave behind
        file.close();
    if (isSameFile(named, own) && ::unlinkat(folder.get(), currentName.c_str(), 0) != 0 && errno != ENOENT)
        throw failure(errno);
    return true;
}

/// exFAT through FUSE: it can only replace. So the name is taken by an empty file, made only if nothing stands there,
/// and that is what gets replaced. Our file first changes its hidden name, and that name goes to the disk: if we are
/// killed in between or the power fails, it distinguishes the empty file from somebody else's, and neither a copy nor
/// the existence test will take it for a video.
void TemporaryFile::publishOverReservation()
{
    seal();
    // Not opened: FUSE disks keep an open file under another name when it is replaced.
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
            currentName.clear(); // the sealed file stays as long as the empty one does: it shows what that is
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
        if (identityOf(folder.get(), sealed)) // a failure over a bad connection may have done its work
            currentName = sealed;
        throw error;
    }
    currentName = sealed;
    if (syncFolder(folder.get(), file.get()) != 0)
        throw failure(errno);
}

/// The name must still be held by our empty file. Another program may have written to it, or renamed a file onto it:
/// that is theirs now. After this a few microseconds remain in which a file renamed onto it is lost; no system call
/// closes them, on the few disks that come to this.
void TemporaryFile::requireReservation() const
{
    // First at the disk itself: FUSE remembers sizes for a second, for each letter case of a name its own.
    Holder holder = holderOfTarget(AT_STATX_FORCE_SYNC);
    if (holder == Holder::reservation) {
        requireOurs();
        // This fails, as the name is taken, but only once any change of the folder that is under way is done.
        ::renameat2(folder.get(), currentName.c_str(), folder.get(), targetName.c_str(), RENAME_NOREPLACE);
        holder = holderOfTarget(0); // last, since what is lost here is another program's
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
    const auto own = identityOf(file.get());
    if (!own)
        throw failure(errno);
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
