#pragma once

#include "Files/FileDescriptor.h"
#include "Files/Location.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <sys/stat.h>

namespace reelkeep {

/// The video to copy, open for reading and watched for changes. Every operation throws FileError about it.
class SourceFile {
public:
    /// If another program has a lease on the file, waits until the kernel has revoked it; throws Stopped meanwhile.
    SourceFile(const Location& location, const std::stop_token& stop);

    int descriptor() const { return file.get(); }
    std::int64_t size() const { return before.st_size; }

    /// Fills `room` from `position` on, or as much of it as the file has bytes.
    std::span<const std::byte> read(std::int64_t position, std::span<std::byte> room) const;
    /// Lets the kernel read `count` bytes from `position` on in the background.
    void fetch(std::int64_t position, std::int64_t count) const;

    /// Drops everything before `position` from the page cache: it is not read again, and a whole card would evict the
    /// data of other programs.
    void forget(std::int64_t position) const;

    /// Returns the file's attributes after `count` bytes were copied; throws if those are not its content any more. If
    /// only its attributes have changed since it was opened (another program may have linked it), it is read again,
    /// into `room`, and must have the hash of the copy.
    struct stat requireUnchanged(std::int64_t count, const std::function<std::uint64_t()>& hashOfCopy,
                                 std::span<std::byte> room, const std::stop_token& stop) const;

private:
    struct stat look() const;

    std::string path;
    FileDescriptor file;
    struct stat before = {};
};

/// At most so many bytes are read, written or hashed between two checks of the stop token.
constexpr std::int64_t chunkSize = std::int64_t(4) << 20;
/// How long one read should take, so that a copy from a slow disk can be stopped in between.
constexpr std::chrono::milliseconds readingTime(100);

/// Memory for one chunk, or for a whole file of `size` bytes if that is less. It is aligned for direct reads and writes
/// of any usual disk. Reuse it for many files: new memory costs more than copying a small one.
class ChunkBuffer {
public:
    explicit ChunkBuffer(std::int64_t size);
    ~ChunkBuffer();
    ChunkBuffer(const ChunkBuffer&) = delete;
    ChunkBuffer& operator=(const ChunkBuffer&) = delete;

    std::span<std::byte> bytes() const { return memory; }

private:
    std::span<std::byte> memory;
};

/// The hash of an open file, which is read into `room`. Absent if it does not have exactly `size` bytes. Throws
/// FileError about `path`, and Stopped.
std::optional<std::uint64_t> hashOf(int file, std::int64_t size, const std::string& path, std::span<std::byte> room,
                                    const std::stop_token& stop);

/// Lets the kernel read an open file from `begin` to `end` in the background.
void fetch(int file, std::int64_t begin, std::int64_t end);

} // namespace reelkeep
