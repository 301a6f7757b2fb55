#include "Fixtures/Faults.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <mutex>
#include <pthread.h>
#include <string_view>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>

namespace reelkeep::faults {

namespace {

struct State {
    bool isArmed = false;
    bool hasStruck = false;
    Plan plan;
    std::size_t matching = 0;
    std::vector<std::string> calls;
};

State state;
std::mutex mutex; // Guards what changes while it is armed.

enum class Verdict { pass, fail, failAfterwards };

Verdict judge(const char* call)
{
    if (!state.isArmed)
        return Verdict::pass;
    const std::lock_guard lock(mutex);
    state.calls.emplace_back(call);
    const auto refusal = state.plan.refusals.find(call);
    if (refusal != state.plan.refusals.end()) {
        errno = refusal->second;
        return Verdict::fail;
    }
    const Plan& plan = state.plan;
    if (plan.occurrence == 0 || (!plan.call.empty() && plan.call != call))
        return Verdict::pass;
    ++state.matching;
    if (state.matching < plan.occurrence || state.matching - plan.occurrence >= plan.times)
        return Verdict::pass;
    state.hasStruck = true;
    if (plan.deed) {
        state.isArmed = false;
        plan.deed();
        state.isArmed = true;
        return Verdict::pass;
    }
    return plan.happensFirst ? Verdict::failAfterwards : Verdict::fail;
}

template <typename Result, typename Call>
Result faulty(const char* name, Call call)
{
    const Verdict verdict = judge(name);
    if (verdict == Verdict::pass)
        return call();
    if (verdict == Verdict::failAfterwards)
        call();
    if (state.plan.refusals.count(name) == 0)
        errno = state.plan.errorNumber;
    return -1;
}

std::size_t moved(std::size_t count)
{
    return state.isArmed && state.plan.most > 0 ? std::min(count, state.plan.most) : count;
}

/// For calls with a path.
template <typename Result, typename Call>
Result faulty(const char* name, std::string_view path, Call call)
{
    const auto broken = state.plan.brokenNames.find(name);
    if (state.isArmed && broken != state.plan.brokenNames.end()) {
        path = path.substr(0, path.find_last_not_of('/') + 1);
        const auto found = broken->second.find(std::string(path.substr(path.rfind('/') + 1)));
        if (found != broken->second.end()) {
            errno = found->second;
            return -1;
        }
    }
    return faulty<Result>(name, call);
}

} // namespace

void arm(const Plan& plan)
{
    state = {.isArmed = true, .hasStruck = false, .plan = plan, .matching = 0, .calls = {}};
}

std::vector<std::string> disarm()
{
    state.isArmed = false;
    return state.calls;
}

bool struck()
{
    return state.hasStruck;
}

std::vector<int> plausibleErrors(const std::string& call)
{
    static const std::map<std::string, std::vector<int>> particular = {
        {"openat",
         {EACCES, EPERM, ENOENT, ENOTDIR, ELOOP, EMFILE, ENFILE, EINTR, ENOSPC, EROFS, EILSEQ, EEXIST, ESTALE,
          ETIMEDOUT, EUCLEAN, EBADMSG, ENOMEDIUM}},
        {"fstatat", {EACCES, ENOENT, ESTALE, EUCLEAN, EBADMSG, ETIMEDOUT}},
        {"statx", {EACCES, ENOENT, ESTALE, EUCLEAN, EBADMSG, ETIMEDOUT}},
        {"getdents64", {ENOENT, EINVAL, EACCES, EPERM, EINTR, ENOMEDIUM, EUCLEAN, EBADMSG, ETIMEDOUT}},
        {"mkdirat", {EACCES, ENOSPC, EDQUOT, EROFS, ENOENT, EILSEQ, EMLINK}},
        {"mknodat", {EACCES, ENOSPC, EROFS, ENOENT, EILSEQ, EPERM, ENOSYS}},
        {"unlinkat", {EACCES, EPERM, EBUSY, EROFS}},
        {"linkat", {EPERM, EMLINK, ENOSPC, EEXIST, EOPNOTSUPP, EROFS}},
        {"renameat", {EACCES, ENOSPC, EROFS, ENOENT, EINVAL, EILSEQ, EBUSY}},
        {"renameat2", {EACCES, EEXIST, EINVAL, ENOSYS, ENOSPC, EROFS, EILSEQ}},
        {"pread", {EINTR, ESTALE}},
        {"write", {EINTR, ENOSPC, EDQUOT, EFBIG, EROFS, EINVAL}},
        {"fsync", {EINTR, ENOSPC, EDQUOT, EINVAL, EROFS}},
        {"fdatasync", {EINTR, ENOSPC, EDQUOT, EINVAL}},
        {"syncfs", {ENOSPC, EDQUOT}},
        {"sync_file_range", {ENOSPC, ESPIPE, EINVAL}},
        {"fcntl", {EINVAL}},
        {"fchmod", {EPERM, EROFS, EOPNOTSUPP}},
        {"futimens", {EPERM, EACCES, EROFS, ENOSYS}},
        {"flock", {EWOULDBLOCK, ENOLCK, EOPNOTSUPP}},
        {"fstatfs", {ENOSYS, EOVERFLOW}},
        {"fstatvfs", {ENOSYS, EOVERFLOW}},
    };
    std::vector<int> errors = {EIO, ENODEV, ENXIO, ENOTCONN, ENOMEM}; // any call may get these from a dying disk
    const auto found = particular.find(call);
    if (found != particular.end())
        errors.insert(errors.end(), found->second.begin(), found->second.end());
    return errors;
}

} // namespace reelkeep::faults

using reelkeep::faults::faulty;
using reelkeep::faults::moved;
using reelkeep::faults::state;

// Called from within other libraries too, so it is replaced as a whole.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                              void* argument)
{
    if (state.isArmed && state.plan.hasNoThreads)
        return EAGAIN;
    using Create = decltype(&pthread_create);
    static const auto real = reinterpret_cast<Create>(::dlsym(RTLD_NEXT, "pthread_create"));
    return real(thread, attributes, start, argument);
}

// The linker prescribes these names.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" {

// A hardened build calls `openat` by this name if it cannot see the flags.
int __real___openat_2(int folder, const char* path, int flags);
int __wrap___openat_2(int folder, const char* path, int flags)
{
    return faulty<int>("openat", path, [&] { return __real___openat_2(folder, path, flags); });
}

int __real_openat(int folder, const char* path, int flags, ...);
int __wrap_openat(int folder, const char* path, int flags, ...)
{
    va_list more;
    va_start(more, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;
    va_end(more);
    return faulty<int>("openat", path, [&] { return __real_openat(folder, path, flags, mode); });
}

int __real_fcntl(int descriptor, int command, ...);
int __wrap_fcntl(int descriptor, int command, ...)
{
    va_list more;
    va_start(more, command);
    const int flags = va_arg(more, int);
    va_end(more);
    return faulty<int>("fcntl", [&] { return __real_fcntl(descriptor, command, flags); });
}

// This one returns its error.
int __real_posix_fadvise(int descriptor, off_t offset, off_t count, int advice);
int __wrap_posix_fadvise(int descriptor, off_t offset, off_t count, int advice)
{
    const auto call = [&] { return __real_posix_fadvise(descriptor, offset, count, advice); };
    const int result = faulty<int>("posix_fadvise", call);
    return result < 0 ? errno : result;
}

int __real_ioctl(int descriptor, unsigned long request, ...);
int __wrap_ioctl(int descriptor, unsigned long request, ...)
{
    va_list more;
    va_start(more, request);
    const int source = va_arg(more, int);
    va_end(more);
    return faulty<int>("ioctl", [&] { return __real_ioctl(descriptor, request, source); });
}

ssize_t __real_getdents64(int folder, void* entries, size_t count);
ssize_t __wrap_getdents64(int folder, void* entries, size_t count)
{
    const auto length = faulty<ssize_t>("getdents64", [&] { return __real_getdents64(folder, entries, count); });
    for (ssize_t at = 0; state.isArmed && state.plan.hidesTypes && at < length;) {
        auto* entry = reinterpret_cast<struct dirent64*>(static_cast<char*>(entries) + at);
        entry->d_type = DT_UNKNOWN;
        at += entry->d_reclen;
    }
    return length;
}

int __real_fstat(int descriptor, struct stat* status);
int __wrap_fstat(int descriptor, struct stat* status)
{
    const int result = faulty<int>("fstat", [&] { return __real_fstat(descriptor, status); });
    if (state.isArmed && state.plan.device != 0)
        status->st_dev = state.plan.device;
    if (state.isArmed && state.plan.clockAhead != 0 && status->st_size == 0)
        status->st_ctim.tv_sec += state.plan.clockAhead;
    return result;
}

int __real_fstatat(int folder, const char* path, struct stat* status, int flags);
int __wrap_fstatat(int folder, const char* path, struct stat* status, int flags)
{
    const int result = faulty<int>("fstatat", path, [&] { return __real_fstatat(folder, path, status, flags); });
    if (state.isArmed && state.plan.device != 0)
        status->st_dev = state.plan.device;
    return result;
}

int __real_statx(int folder, const char* path, int flags, unsigned mask, struct statx* status);
int __wrap_statx(int folder, const char* path, int flags, unsigned mask, struct statx* status)
{
    const int result = faulty<int>("statx", path, [&] { return __real_statx(folder, path, flags, mask, status); });
    if (state.isArmed && state.plan.device != 0) {
        status->stx_dev_major = major(state.plan.device);
        status->stx_dev_minor = minor(state.plan.device);
    }
    if (state.isArmed && state.plan.mount != 0)
        status->stx_mnt_id = state.plan.mount;
    return result;
}

int __real_mkdirat(int folder, const char* path, mode_t mode);
int __wrap_mkdirat(int folder, const char* path, mode_t mode)
{
    return faulty<int>("mkdirat", [&] { return __real_mkdirat(folder, path, mode); });
}

int __real_mknodat(int folder, const char* path, mode_t mode, dev_t device);
int __wrap_mknodat(int folder, const char* path, mode_t mode, dev_t device)
{
    return faulty<int>("mknodat", [&] { return __real_mknodat(folder, path, mode, device); });
}

int __real_unlinkat(int folder, const char* path, int flags);
int __wrap_unlinkat(int folder, const char* path, int flags)
{
    return faulty<int>("unlinkat", [&] { return __real_unlinkat(folder, path, flags); });
}

int __real_linkat(int from, const char* path, int to, const char* newPath, int flags);
int __wrap_linkat(int from, const char* path, int to, const char* newPath, int flags)
{
    return faulty<int>("linkat", [&] { return __real_linkat(from, path, to, newPath, flags); });
}

int __real_renameat(int from, const char* path, int to, const char* newPath);
int __wrap_renameat(int from, const char* path, int to, const char* newPath)
{
    return faulty<int>("renameat", [&] { return __real_renameat(from, path, to, newPath); });
}

int __real_renameat2(int from, const char* path, int to, const char* newPath, unsigned flags);
int __wrap_renameat2(int from, const char* path, int to, const char* newPath, unsigned flags)
{
    return faulty<int>("renameat2", [&] { return __real_renameat2(from, path, to, newPath, flags); });
}

ssize_t __real_pread(int descriptor, void* bytes, size_t count, off_t offset);
ssize_t __wrap_pread(int descriptor, void* bytes, size_t count, off_t offset)
{
    return faulty<ssize_t>("pread", [&] { return __real_pread(descriptor, bytes, moved(count), offset); });
}

ssize_t __real_write(int descriptor, const void* bytes, size_t count);
ssize_t __wrap_write(int descriptor, const void* bytes, size_t count)
{
    return faulty<ssize_t>("write", [&] { return __real_write(descriptor, bytes, moved(count)); });
}

int __real_fsync(int descriptor);
int __wrap_fsync(int descriptor)
{
    return faulty<int>("fsync", [&] { return __real_fsync(descriptor); });
}

int __real_fdatasync(int descriptor);
int __wrap_fdatasync(int descriptor)
{
    return faulty<int>("fdatasync", [&] { return __real_fdatasync(descriptor); });
}

int __real_syncfs(int descriptor);
int __wrap_syncfs(int descriptor)
{
    return faulty<int>("syncfs", [&] { return __real_syncfs(descriptor); });
}

int __real_sync_file_range(int descriptor, off64_t offset, off64_t count, unsigned flags);
int __wrap_sync_file_range(int descriptor, off64_t offset, off64_t count, unsigned flags)
{
    return faulty<int>("sync_file_range", [&] { return __real_sync_file_range(descriptor, offset, count, flags); });
}

int __real_fchmod(int descriptor, mode_t mode);
int __wrap_fchmod(int descriptor, mode_t mode)
{
    return faulty<int>("fchmod", [&] { return __real_fchmod(descriptor, mode); });
}

int __real_futimens(int descriptor, const struct timespec* times);
int __wrap_futimens(int descriptor, const struct timespec* times)
{
    return faulty<int>("futimens", [&] { return __real_futimens(descriptor, times); });
}

int __real_flock(int descriptor, int operation);
int __wrap_flock(int descriptor, int operation)
{
    if (state.isArmed && state.plan.locksOnlyWritable && (__real_fcntl(descriptor, F_GETFL) & O_ACCMODE) == O_RDONLY) {
        errno = EBADF;
        return -1;
    }
    return faulty<int>("flock", [&] { return __real_flock(descriptor, operation); });
}

int __real_fstatfs(int descriptor, struct statfs* status);
int __wrap_fstatfs(int descriptor, struct statfs* status)
{
    const int result = faulty<int>("fstatfs", [&] { return __real_fstatfs(descriptor, status); });
    if (state.isArmed && state.plan.fileSystemType != 0)
        status->f_type = state.plan.fileSystemType;
    return result;
}

int __real_fstatvfs(int descriptor, struct statvfs* status);
int __wrap_fstatvfs(int descriptor, struct statvfs* status)
{
    const int result = faulty<int>("fstatvfs", [&] { return __real_fstatvfs(descriptor, status); });
    if (state.isArmed && state.plan.freeBlocks != 0) {
        status->f_frsize = 4096;
        status->f_bsize = 1 << 20; // the preferred size of transfers, which no count is in
        status->f_bfree = state.plan.freeBlocks;
        status->f_bavail = state.plan.freeToAll;
    }
    return result;
}

} // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
