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
    /// Waits for a program that holds a lease on the file to give it up, as the kernel makes it do after a while;
    /// throws Stopped meanwhile.
    SourceFile(const Location& location, const std::stop_token& stop);

    int descriptor() const { return file.get(); }
    std::int64_t size() const { return before.st_size; }

    /// Fills `room` from `position` on, or as much of it as the file has bytes.
    std::span<const std::byte> read(std::int64_t position, std::span<std::byte> room) const;
    /// Lets the kernel read `count` bytes from `position` on while we do something else.
    void fetch(std::int64_t position, std::int64_t count) const;

    /// Drops everything before `position` from the kernel's memory: it is not read again, and a whole card would evict
    /// what other programs use.
    void forget(std::int64_t position) const;

    /// The file's attributes now that `count` bytes of it were copied; throws if they are not what it holds. If only
    /// its attributes have changed since it was opened (another program has marked or linked it), it is read once more
    /// and must have the hash of the copy. `room` is for that.
    struct stat requireUnchanged(std::int64_t count, const std::function<std::uint64_t()>& hashOfCopy,
                                 std::span<std::byte> room, const std::stop_token& stop) const;

private:
    struct stat look() const;

    std::string path;
    FileDescriptor file;
    struct stat before = {};
};

/// How much is read, written or hashed between two looks at the stop token, at most.
constexpr std::int64_t chunkSize = std::int64_t(4) << 20;
/// How long one system call shall read, so that a slow disk too can be stopped in between.
constexpr std::chrono::milliseconds readingTime(100);

/// Memory for one chunk, or for a whole file of `size` bytes if that is less. It begins at the border of a block, so
/// that it can go to any usual disk past the kernel's memory. Kept for many files: new memory costs more than the copy
/// of a small one.
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

/// Hashes an open file of `size` bytes from beginning to end, by way of `room`. Absent if it has fewer or more; throws
/// FileError about `path`, and Stopped.
std::optional<std::uint64_t> hashOf(int file, std::int64_t size, const std::string& path, std::span<std::byte> room,
                                    const std::stop_token& stop);

/// Lets the kernel read an open file from `begin` to `end` while we do something else.
void fetch(int file, std::int64_t begin, std::int64_t end);

} // namespace reelkeep
