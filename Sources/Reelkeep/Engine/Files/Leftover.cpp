#include "Files/Leftover.h"

#include "Files/FileIdentity.h"
#include "Files/SystemCalls.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace reelkeep {

namespace {

FileDescriptor openHidden(int folder, const std::string& name, int access)
{
    return openAt(folder, name.c_str(), access | O_NOFOLLOW | O_NONBLOCK);
}

bool isBefore(const struct timespec& one, const struct timespec& other)
{
    return one.tv_sec != other.tv_sec ? one.tv_sec < other.tv_sec : one.tv_nsec < other.tv_nsec;
}

} // namespace

Leftover::Leftover(int openFolder, std::string hiddenName)
    : folder(openFolder), name(std::move(hiddenName)), found(examine())
{
}

Leftover::State Leftover::examine()
{
    struct stat status = {};
    if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return errno == ENOENT || errno == EINVAL || errno == EILSEQ ? State::none : State::obstacle;
    if (!S_ISREG(status.st_mode)) // opening a device may already do something
        return State::obstacle;
    file = openHidden(folder, name, O_RDWR);
    if (!file && errno == EACCES)
        file = openHidden(folder, name, O_RDONLY);
    if (!file)
        return errno == ENOENT ? State::none : State::obstacle;
    if (!lock())
        return errno == EWOULDBLOCK ? State::living : State::obstacle;
    // Between opening and locking, its run may have finished and another may have put its own file here.
    return identityOf(file.get()) == identityOf(folder, name) ? State::abandoned : State::living;
}

bool Leftover::lock()
{
    if (::flock(file.get(), LOCK_EX | LOCK_NB) == 0)
        return true;
    return errno == EBADF && reopenWritable();
}

/// Network disks lock only files that are open for writing, and a write-protected clip leaves a write-protected
/// leftover.
bool Leftover::reopenWritable()
{
    struct stat status = {};
    if (::fstat(file.get(), &status) != 0 || ::fchmod(file.get(), status.st_mode | S_IRUSR | S_IWUSR) != 0)
        return false;
    FileDescriptor writable = openHidden(folder, name, O_RDWR);
    if (!writable || identityOf(writable.get()) != identityOf(file.get()))
        return false;
    if (::flock(writable.get(), LOCK_EX | LOCK_NB) != 0) {
        const int reason = errno;
        ::fchmod(file.get(), status.st_mode); // as the living run has set it
        errno = reason;
        return false;
    }
    file = std::move(writable);
    return true;
}

bool Leftover::isUnchangedSince(const struct timespec& moment) const
{
    struct stat status = {};
    return ::fstat(file.get(), &status) == 0 && isBefore(status.st_mtim, moment) && isBefore(status.st_ctim, moment);
}

bool Leftover::remove() const
{
    const auto own = identityOf(file.get());
    const auto named = identityOf(folder, name);
    if (own && own == named)
        return ::unlinkat(folder, name.c_str(), 0) == 0;
    errno = EBUSY;
    return false;
}

} // namespace reelkeep
