#include "Files/SourceFile.h"

#include "Files/ContentHash.h"
#include "Files/FileError.h"
#include "Files/Stopped.h"
#include "Files/SystemCalls.h"
#include "Files/TransferPace.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <new>
#include <sys/mman.h>
#include <thread>
#include <unistd.h>

namespace reelkeep {

namespace {

constexpr std::size_t blockSize = 4096;
constexpr std::size_t largePage = std::size_t(2) << 20;
constexpr std::align_val_t alignment{largePage};

/// Longer than the kernel lets a program keep a lease that another one waits for (45 seconds unless configured).
constexpr std::chrono::minutes leasePatience{2};
constexpr std::chrono::milliseconds leasePause{20};

/// O_NONBLOCK, since opening must not wait for a writer if the file has become a pipe. With it a lease fails the call
/// instead of blocking it, but the attempt makes the kernel revoke the lease.
FileDescriptor openSource(const std::string& path, const std::stop_token& stop)
{
    const ReachablePath reachable(path);
    const auto end = std::chrono::steady_clock::now() + leasePatience;
    for (;;) {
        FileDescriptor opened = openQuietly(reachable.folder(), reachable.rest(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
        if (opened || errno != EWOULDBLOCK || std::chrono::steady_clock::now() > end)
            return opened;
        throwIfStopped(stop);
        std::this_thread::sleep_for(leasePause);
    }
}

bool isLink(const std::string& path)
{
    const ReachablePath reachable(path);
    struct stat status = {};
    return ::fstatat(reachable.folder(), reachable.rest(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISLNK(status.st_mode);
}

/// Fills `room`, or as much of it as the file has bytes.
std::span<const std::byte> readFrom(int file, std::int64_t position, std::span<std::byte> room, const std::string& path,
                                    dev_t device)
{
    std::size_t filled = 0;
    for (ssize_t count = 1; count > 0 && filled < room.size(); filled += static_cast<std::size_t>(count)) {
        count = uninterrupted([&] {
            return ::pread(file, room.data() + filled, room.size() - filled,
                           position + static_cast<std::int64_t>(filled));
        });
        if (count < 0)
            throw readError(path, errno, device);
    }
    return room.first(filled);
}

bool isSame(const struct timespec& one, const struct timespec& other)
{
    return one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
}

} // namespace

SourceFile::SourceFile(const Location& location, const std::stop_token& stop)
    : path(location.path()), file(openSource(path, stop))
{
    if (!file && errno == ELOOP && isLink(path))
        throw FileError(path, ELOOP, "es un enlace, no un archivo");
    if (!file)
        throw readError(path, errno, 0);
    before = look();
    if (!S_ISREG(before.st_mode))
        throw FileError(path, S_ISDIR(before.st_mode) ? EISDIR : 0, "ya no es un archivo");
    ::posix_fadvise(file.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
}

std::span<const std::byte> SourceFile::read(std::int64_t position, std::span<std::byte> room) const
{
    return readFrom(file.get(), position, room, path, before.st_dev);
}

void SourceFile::fetch(std::int64_t position, std::int64_t count) const
{
    reelkeep::fetch(file.get(), position, std::min(position + count, size()));
}

void SourceFile::forget(std::int64_t position) const
{
    if (position > 0)
        ::posix_fadvise(file.get(), 0, position, POSIX_FADV_DONTNEED);
}

/// A rewrite may have restored size and modification time. Then only the change time shows it, and only the content
/// distinguishes it from a mere change of attributes.
struct stat SourceFile::requireUnchanged(std::int64_t count, const std::function<std::uint64_t()>& hashOfCopy,
                                         std::span<std::byte> room, const std::stop_token& stop) const
{
    const struct stat after = look();
    if (after.st_size != before.st_size || !isSame(after.st_mtim, before.st_mtim))
        throw FileError(path, 0, "ha cambiado durante la copia");
    if (count != before.st_size)
        throw FileError(path, 0, "no tiene tantos datos como dice su tamano");
    if (!isSame(after.st_ctim, before.st_ctim) && hashOf(file.get(), size(), path, room, stop) != hashOfCopy())
        throw FileError(path, 0, "ha cambiado durante la copia");
    return after;
}

struct stat SourceFile::look() const
{
    struct stat status = {};
    if (::fstat(file.get(), &status) != 0)
        throw readError(path, errno, 0);
    return status;
}

/// One byte larger than the file, so that a read reaches its end. In large pages, since the kernel then sends larger
/// and fewer requests: that is twice as fast on a disk that is limited by their number.
ChunkBuffer::ChunkBuffer(std::int64_t size)
{
    const std::size_t count = (static_cast<std::size_t>(std::min(size, chunkSize - 1)) / blockSize + 1) * blockSize;
    memory = {static_cast<std::byte*>(::operator new(count, alignment)), count};
    ::madvise(memory.data(), count / largePage * largePage, MADV_HUGEPAGE);
}

ChunkBuffer::~ChunkBuffer()
{
    ::operator delete(memory.data(), alignment);
}

std::optional<std::uint64_t> hashOf(int file, std::int64_t size, const std::string& path, std::span<std::byte> room,
                                    const std::stop_token& stop)
{
    ContentHash hash;
    TransferPace pace(static_cast<std::int64_t>(room.size()), readingTime);
    for (std::int64_t position = 0; position <= size;) {
        throwIfStopped(stop);
        const auto portion = room.first(static_cast<std::size_t>(pace.portion()));
        const auto began = std::chrono::steady_clock::now();
        const auto bytes = readFrom(file, position, portion, path, 0);
        pace.took(static_cast<std::int64_t>(bytes.size()), std::chrono::steady_clock::now() - began);
        hash.add(bytes);
        position += static_cast<std::int64_t>(bytes.size());
        if (bytes.size() < portion.size())
            return position == size ? std::optional(hash.value()) : std::nullopt;
    }
    return std::nullopt;
}

/// In portions, since the kernel reads only one per call.
void fetch(int file, std::int64_t begin, std::int64_t end)
{
    constexpr std::int64_t portion = 128 << 10;
    for (; begin < end; begin += portion)
        ::posix_fadvise(file, begin, portion, POSIX_FADV_WILLNEED);
}

} // namespace reelkeep
