#include "Files/ContentHash.h"
#include "Files/LinuxFileManager.h"
#include "Files/SourceFile.h"
#include "Files/Stopped.h"
#include "Files/SystemCalls.h"
#include "Files/TemporaryFile.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>

namespace reelkeep {

namespace {

/// Copies what can be read, not much beyond the size it began with: a file that is being written may never end. A loop
/// of our own, not one in the kernel: only so is it known which disk failed.
std::int64_t transfer(const SourceFile& source, TemporaryFile& copy, ContentHash& hash, const std::stop_token& stop)
{
    copy.refuseWithoutRoom();
    const ChunkBuffer buffer(source.size());
    std::int64_t copied = 0;
    while (copied <= source.size()) {
        throwIfStopped(stop);
        const auto bytes = source.read(copied, buffer.bytes());
        copied += static_cast<std::int64_t>(bytes.size());
        source.fetch(copied); // reading and writing at the same time take two thirds of one after the other
        hash.add(bytes);
        copy.write(bytes);
        if (bytes.size() < buffer.bytes().size())
            break;
    }
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
