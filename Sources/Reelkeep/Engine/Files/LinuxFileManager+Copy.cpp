#include "Files/FileError.h"
#include "Files/LinuxFileManager.h"
#include "Files/Stopped.h"
#include "Files/SystemCalls.h"
#include "Files/TemporaryFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <span>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace reelkeep {

namespace {

/// Data that lies so in memory can go to any usual disk past the kernel's memory.
struct alignas(4096) Block {
    std::array<std::byte, 4096> bytes;
};

constexpr std::int64_t chunkSize = std::int64_t(4) << 20;

/// The video to copy, read from its beginning and watched for changes.
class SourceFile {
public:
    explicit SourceFile(const Location& location) : path(location.path())
    {
        const ReachablePath reachable(path);
        // O_NONBLOCK: should it have become a pipe, opening must not wait for a writer.
        file = openQuietly(reachable.folder(), reachable.rest(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
        if (!file)
            throw FileError(path, errno);
        before = look();
        if (!S_ISREG(before.st_mode))
            throw FileError(path, S_ISDIR(before.st_mode) ? EISDIR : 0, "ya no es un archivo");
        ::posix_fadvise(file.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
    }

    int descriptor() const { return file.get(); }
    const struct stat& attributes() const { return before; }

    /// Fills `room`, or as much of it as the file still has bytes.
    std::span<const std::byte> read(std::span<std::byte> room)
    {
        std::size_t filled = 0;
        for (ssize_t count = 1; count > 0 && filled < room.size(); filled += static_cast<std::size_t>(count)) {
            count = uninterrupted([&] { return ::read(file.get(), room.data() + filled, room.size() - filled); });
            if (count < 0)
                throw readError(path, errno, before.st_dev);
        }
        return room.first(filled);
    }

    /// Lets the kernel read a chunk from `position` on while we do something else. It takes one portion at once.
    void fetch(std::int64_t position)
    {
        constexpr std::int64_t portion = 128 << 10;
        for (const std::int64_t end = std::min(position + chunkSize, before.st_size); position < end;
             position += portion)
            ::posix_fadvise(file.get(), position, portion, POSIX_FADV_WILLNEED);
    }

    /// `copied` bytes must be what the file had at the beginning and has now.
    void requireUnchanged(std::int64_t copied) const
    {
        const struct stat after = look();
        const auto isSame = [](const struct timespec& one, const struct timespec& other) {
            return one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
        };
        if (after.st_size != before.st_size || !isSame(after.st_mtim, before.st_mtim) ||
            !isSame(after.st_ctim, before.st_ctim))
            throw FileError(path, 0, "ha cambiado durante la copia");
        if (copied != before.st_size)
            throw FileError(path, 0, "no tiene tantos datos como dice su tamano");
    }

private:
    struct stat look() const
    {
        struct stat status = {};
        if (::fstat(file.get(), &status) != 0)
            throw readError(path, errno, 0);
        return status;
    }

    std::string path;
    FileDescriptor file;
    struct stat before = {};
};

/// Copies what can be read, not much beyond the size it began with: a file that is being written may never end.
/// A loop of its own, not one in the kernel: only so is it known which disk failed.
std::int64_t transfer(SourceFile& source, TemporaryFile& copy, const std::stop_token& stop)
{
    copy.refuseWithoutRoom();
    const std::int64_t size = source.attributes().st_size;
    std::vector<Block> blocks(static_cast<std::size_t>(std::min(size, chunkSize - 1)) / sizeof(Block) + 1);
    const std::span<std::byte> buffer = std::as_writable_bytes(std::span(blocks));
    std::int64_t copied = 0;
    while (copied <= size) {
        throwIfStopped(stop);
        const auto bytes = source.read(buffer);
        copied += static_cast<std::int64_t>(bytes.size());
        source.fetch(copied); // reading and writing at the same time take two thirds of one after the other
        copy.write(bytes);
        if (bytes.size() < buffer.size())
            break;
    }
    return copied;
}

} // namespace

void LinuxFileManager::copyItem(const Location& source, const Location& target, const std::stop_token& stop)
{
    throwIfStopped(stop);
    SourceFile original(source);
    const std::int64_t size = original.attributes().st_size;
    TemporaryFile copy(target, size);
    copy.create();
    const std::int64_t copied = copy.clone(original.descriptor()) ? size : transfer(original, copy, stop);
    original.requireUnchanged(copied);
    copy.finish(original.attributes());
    throwIfStopped(stop);
    copy.publish();
}

void LinuxFileManager::readAhead(const Location& source)
{
    try {
        SourceFile(source).fetch(0);
    } catch (const FileError&) { // will be met again, and told, when its turn comes
    }
}

} // namespace reelkeep
