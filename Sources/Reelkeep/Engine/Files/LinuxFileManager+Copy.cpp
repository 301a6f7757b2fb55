#include "Files/ContentHash.h"
#include "Files/LinuxFileManager.h"
#include "Files/SourceFile.h"
#include "Files/Stopped.h"
#include "Files/SystemCalls.h"
#include "Files/TemporaryFile.h"
#include "Files/TransferPace.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <fcntl.h>
#include <sys/stat.h>

namespace reelkeep {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds readingTime(100);

/// Copies what can be read, not much beyond the size it began with: a file that is being written may never end. A loop
/// of our own, not one in the kernel: only so is it known which disk failed.
std::int64_t transfer(const SourceFile& source, TemporaryFile& copy, ContentHash& hash, const std::stop_token& stop)
{
    copy.refuseWithoutRoom();
    const ChunkBuffer buffer(source.size());
    TransferPace reading(chunkSize, readingTime);
    std::int64_t copied = 0;
    for (bool isAtEnd = false; !isAtEnd && copied <= source.size();) {
        throwIfStopped(stop);
        const std::int64_t portion = std::min({chunkSize, reading.portion(), copy.portion()});
        const auto room = buffer.bytes().first(std::min(buffer.bytes().size(), static_cast<std::size_t>(portion)));
        const auto began = Clock::now();
        const auto bytes = source.read(copied, room);
        reading.took(static_cast<std::int64_t>(bytes.size()), Clock::now() - began);
        isAtEnd = bytes.size() < room.size();
        copied += static_cast<std::int64_t>(bytes.size());
        source.fetch(copied, portion); // reading and writing at the same time take two thirds of one after the other
        throwIfStopped(stop);
        hash.add(bytes);
        copy.write(bytes);
    }
    throwIfStopped(stop); // before all that is left has to be synced
    return copied;
}

} // namespace

void LinuxFileManager::copyItem(const Location& source, const Location& target, const std::stop_token& stop)
{
    throwIfStopped(stop);
    const SourceFile original(source, stop);
    TemporaryFile copy(target, original.size());
    copy.create();
    ContentHash hash;
    const bool isClone = copy.clone(original.descriptor());
    const std::int64_t copied = isClone ? original.size() : transfer(original, copy, hash, stop);
    const auto hashOfCopy = [&] { return isClone ? copy.hash(stop) : hash.value(); };
    copy.finish(original.requireUnchanged(copied, hashOfCopy, stop));
    throwIfStopped(stop);
    copy.publish();
}

void LinuxFileManager::readAhead(const Location& source)
{
    const std::string path = source.path();
    const ReachablePath reachable(path);
    const FileDescriptor file = openQuietly(reachable.folder(), reachable.rest(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    struct stat status = {};
    if (file && ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode))
        fetch(file.get(), 0, std::min(chunkSize, status.st_size));
}

} // namespace reelkeep
