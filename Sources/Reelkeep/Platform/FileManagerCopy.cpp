#include "Platform/FileErrors.h"
#include "Platform/FileManager.h"
#include "Platform/PathAccess.h"
#include "Platform/TemporaryFile.h"

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

constexpr std::size_t chunkSize = std::size_t(1) << 20;

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

    /// As many bytes as the file still has, up to the size of `room`.
    std::span<const std::byte> read(std::span<std::byte> room)
    {
        const auto count = uninterrupted([&] { return ::read(file.get(), room.data(), room.size()); });
        if (count < 0)
            throw readError(path, errno, before.st_dev);
        return room.first(static_cast<std::size_t>(count));
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

void throwIfStopped(const std::stop_token& stop)
{
    if (stop.stop_requested())
        throw Stopped();
}

/// Copies what can be read, not much beyond the size it began with: a file that is being written may never end.
/// A loop of its own, not one in the kernel: only so is it known which disk failed.
std::int64_t transfer(SourceFile& source, TemporaryFile& copy, const std::stop_token& stop)
{
    copy.refuseWithoutRoom();
    std::vector<std::byte> buffer(chunkSize);
    std::int64_t copied = 0;
    while (copied <= source.attributes().st_size) {
        throwIfStopped(stop);
        const auto bytes = source.read(buffer);
        if (bytes.empty())
            break;
        copy.write(bytes);
        copied += static_cast<std::int64_t>(bytes.size());
    }
    return copied;
}

} // namespace

void FileManager::copyItem(const Location& source, const Location& target, const std::stop_token& stop) const
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

} // namespace reelkeep
