#include "Files/Disk.h"
#include "Files/FileIdentity.h"
#include "Files/Leftover.h"
#include "Files/SystemCalls.h"
#include "Files/TemporaryFile.h"
#include "Files/TemporaryNames.h"

#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <sys/file.h>

namespace reelkeep {

namespace {

/// Longer than a living run leaves its file untouched. Used only on disks that other machines may write to, where locks
/// may not be shared.
constexpr time_t abandonedAfter = time_t{10} * 60;

/// More than enough, since random names are hardly ever taken.
constexpr int mostSpareNames = 8;

} // namespace

void TemporaryFile::create()
{
    const std::string usual = growingName(targetName, fileSystem);
    if (!createAs(usual) && !createOverLeftover(usual))
        createUnderSpareName(usual);
    lockOwn();
    takeOverSealed();
    struct stat status = {};
    if (::fstatat(folder.get(), targetName.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0)
        throw publishingFailure(EEXIST);
}

/// False if the name is taken.
bool TemporaryFile::createAs(const std::string& name)
{
    constexpr mode_t onlyUs = 0600;
    file = openAt(folder.get(), name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, onlyUs);
    if (!file && errno == EEXIST)
        return false;
    if (!file)
        throw creationError(folder.get(), target.path(), errno);
    currentName = name;
    return true;
}

/// Replaces what a killed run left at `name`. False if that cannot be taken over; throws if another run is at work.
bool TemporaryFile::createOverLeftover(const std::string& name)
{
    const Leftover leftover(folder.get(), name);
    if (leftover.state() == Leftover::State::living)
        throw takenByAnotherRun();
    if (leftover.state() == Leftover::State::obstacle)
        return false;
    if (leftover.state() == Leftover::State::abandoned) {
        if (!isLocalDisk(folder.get())) { // our new file has the current time of that disk
            createUnderSpareName(name);
            if (isOld(leftover))
                leftover.remove();
            return true;
        }
        if (!leftover.remove())
            return false;
    }
    if (!createAs(name))
        throw takenByAnotherRun();
    return true;
}

/// `usual` is the file to blame if not even a random name is free.
void TemporaryFile::createUnderSpareName(const std::string& usual)
{
    for (int attempt = 0; attempt < mostSpareNames; ++attempt)
        if (createAs(spareGrowingName(targetName, fileSystem))) {
            isSpare = true;
            return;
        }
    throw FileError(target.deletingLastPathComponent().appending(usual).path(), EEXIST,
                    "este archivo oculto impide la copia; quitalo");
}

bool TemporaryFile::isOld(const Leftover& leftover) const
{
    struct stat own = {};
    if (::fstat(file.get(), &own) != 0)
        return false;
    return leftover.isUnchangedSince({own.st_ctim.tv_sec - abandonedAfter, own.st_ctim.tv_nsec});
}

/// A run killed in the act of publishing leaves a complete file under the sealed name and perhaps, at the final name,
/// the empty file that reserved it. The reservation is removed first: only the sealed file shows that it is ours.
void TemporaryFile::takeOverSealed()
{
    const std::string sealed = sealedName(targetName, fileSystem);
    const Leftover leftover(folder.get(), sealed);
    if (leftover.state() == Leftover::State::none)
        return;
    if (leftover.state() == Leftover::State::living)
        throw takenByAnotherRun();
    struct stat status = {};
    const bool isTaken = ::fstatat(folder.get(), targetName.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
    if (!isTaken && errno != ENOENT)
        throw failure(errno);
    const bool isReserved = isTaken && isAbandonedReservation(target, status);
    const bool isOurs = leftover.state() == Leftover::State::abandoned;
    const bool mayGo = isOurs && (isLocalDisk(folder.get()) || isOld(leftover));
    const bool isGone =
        mayGo && (!isReserved || ::unlinkat(folder.get(), targetName.c_str(), 0) == 0) && leftover.remove();
    if (isReserved && !isGone)
        throw FileError(target.deletingLastPathComponent().appending(sealed).path(), EEXIST,
                        "otra ventana lo esta copiando; si no es asi, quita este archivo oculto");
}

/// Without a lock service we continue: we have created the file exclusively, and no other run removes a file that it
/// cannot lock.
void TemporaryFile::lockOwn()
{
    const bool isHeldElsewhere = ::flock(file.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    const FileIdentity own = identity();
    const auto named = namedIdentity();
    // Between creating and locking, another run may have taken it for a leftover.
    if (isHeldElsewhere || named != own) {
        currentName.clear(); // the other run removes it
        throw takenByAnotherRun();
    }
}

FileError TemporaryFile::takenByAnotherRun() const
{
    return {target.path(), EBUSY, "otra ventana lo esta copiando"};
}

} // namespace reelkeep
