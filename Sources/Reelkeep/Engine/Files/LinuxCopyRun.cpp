#include "Files/LinuxCopyRun.h"

#include "Files/ContentHash.h"
#include "Files/FileIdentity.h"
#include "Files/LinuxFileManager.h"
#include "Files/SourceFile.h"
#include "Files/Stopped.h"
#include "Files/SystemCalls.h"
#include "Files/TemporaryNames.h"
#include "Text/TextOrder.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <fcntl.h>
#include <system_error>
#include <utility>

namespace reelkeep {

namespace {

using Clock = std::chrono::steady_clock;

/// A group is complete when it reaches any of these. docs/performance.md has the cost and gain of each.
constexpr std::size_t groupCount = 128;
constexpr std::int64_t groupBytes = std::int64_t(128) << 20;
constexpr std::chrono::seconds groupTime(5); ///< Limits what is lost if the program is killed.
/// How long the disk may be busy with unsynced data when the program is to end.
constexpr std::chrono::milliseconds groupSyncingTime(200);

/// Copies what can be read, but little more than the original size: a file that is being written may never end. A loop
/// instead of one call to the kernel, which would not report which disk failed.
std::int64_t transfer(const SourceFile& source, TemporaryFile& copy, ContentHash& hash, std::span<std::byte> memory,
                      TransferPace& reading, const std::stop_token& stop)
{
    copy.refuseWithoutRoom();
    std::int64_t copied = 0;
    for (bool isAtEnd = false; !isAtEnd && copied <= source.size();) {
        throwIfStopped(stop);
        const std::int64_t portion = std::min({chunkSize, reading.portion(), copy.portion()});
        const auto room = memory.first(static_cast<std::size_t>(portion));
        const auto began = Clock::now();
        const auto bytes = source.read(copied, room);
        reading.took(static_cast<std::int64_t>(bytes.size()), Clock::now() - began);
        isAtEnd = bytes.size() < room.size();
        copied += static_cast<std::int64_t>(bytes.size());
        source.fetch(copied, portion); // reading during the write takes two thirds of the time
        throwIfStopped(stop);
        hash.add(bytes);
        copy.write(bytes);
        source.forget(copied - chunkSize); // the kernel does not drop what was read last
    }
    source.forget(copied);
    throwIfStopped(stop); // before the rest is synced
    return copied;
}

/// Opens the folder that holds `place`. As long as it is missing, `place` becomes that folder. None on failure.
FileDescriptor openFolderOf(Location& place)
{
    for (;;) {
        const Location above = place.deletingLastPathComponent();
        const ReachablePath path(above.path());
        FileDescriptor folder = openAt(path.folder(), path.rest(), O_PATH | O_DIRECTORY);
        if (folder || errno != ENOENT || above == place)
            return folder;
        place = above;
    }
}

bool isLackOfDescriptors(const FileError& error)
{
    return error.code() == EMFILE || error.code() == ENFILE;
}

} // namespace

std::unique_ptr<CopyRun> LinuxFileManager::beginCopying(const std::stop_token& stop)
{
    return std::make_unique<LinuxCopyRun>(stop);
}

LinuxCopyRun::LinuxCopyRun(const std::stop_token& stop)
    : forwarding(stop, [this] { end.request_stop(); }), buffer(chunkSize), reading(chunkSize, readingTime),
      syncing(groupBytes, groupSyncingTime), growing(std::make_unique<CopyGroup>())
{
}

LinuxCopyRun::~LinuxCopyRun()
{
    end.request_stop();
    if (completion.valid())
        completion.wait();
}

/// Looks for copies by their hidden names, so that the disk itself decides which spellings are the same name. A file
/// moves from the first hidden name to the second and then to its final one, so in this order it cannot be missed.
void LinuxCopyRun::completeCopiesTo(const Location& target)
{
    throwIfFailed();
    if (isDueBefore(0))
        beginCompletion(std::launch::async);
    if (isIdle())
        return;
    Location place = target;
    const FileDescriptor folder = openFolderOf(place);
    struct statfs fileSystem = {};
    const bool isKnown = folder && ::fstatfs(folder.get(), &fileSystem) == 0;
    const std::string name(place.lastPathComponent());
    const Location growingPlace = place.deletingLastPathComponent().appending(growingName(name, fileSystem));
    const std::string spot = caseless(growingPlace.path());
    const auto isUnderWay = [&](const std::string& hiddenName) {
        const auto found = identityOf(folder.get(), hiddenName);
        return growing->contains(found, spot) || (completing && completing->contains(found, spot));
    };
    if (!isKnown || isUnderWay(growingName(name, fileSystem)) || isUnderWay(sealedName(name, fileSystem)))
        finish();
}

void LinuxCopyRun::copyItem(const Location& source, const Location& target)
{
    throwIfFailed();
    try {
        write(source, target);
    } catch (const Stopped&) {
        awaitCompletion(); // it may have stopped us by failing
        throw;
    } catch (const FileError& error) {
        if (!isLackOfDescriptors(error) || isIdle())
            throw;
        finish();
        write(source, target);
    }
    if (growing->hasSpareName()) // `completeCopiesTo` would not find it
        finish();
    else if (isFull())
        beginCompletion(std::launch::async);
}

void LinuxCopyRun::write(const Location& source, const Location& target)
{
    const std::stop_token stop = end.get_token();
    throwIfStopped(stop);
    const SourceFile original(source, stop);
    if (isDueBefore(original.size()))
        beginCompletion(std::launch::async);
    auto copy = std::make_unique<TemporaryFile>(target, original.size(), writing);
    copy->create();
    ContentHash hash;
    const bool isClone = copy->clone(original.descriptor());
    const std::int64_t copied =
        isClone ? original.size() : transfer(original, *copy, hash, buffer.bytes(), reading, stop);
    const auto hashOfCopy = [&] { return isClone ? copy->hash(buffer.bytes(), stop) : hash.value(); };
    copy->finish(original.requireUnchanged(copied, hashOfCopy, buffer.bytes(), stop));
    growing->add(std::move(copy), isClone ? std::nullopt : std::optional(hash.value()), original.size());
}

void LinuxCopyRun::readAhead(const Location& source)
{
    const std::string path = source.path();
    const ReachablePath reachable(path);
    const FileDescriptor file = openQuietly(reachable.folder(), reachable.rest(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    struct stat status = {};
    if (file && ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode))
        fetch(file.get(), 0, std::min(chunkSize, status.st_size));
}

bool LinuxCopyRun::isDueBefore(std::int64_t nextSize) const
{
    return !growing->isEmpty() &&
           (growing->bytes() + nextSize > groupBytes || Clock::now() - growing->began() > groupTime);
}

bool LinuxCopyRun::isFull() const
{
    return growing->count() >= groupCount || growing->bytes() >= groupBytes ||
           growing->unsyncedBytes() >= syncing.portion();
}

/// On this thread, which has nothing else to do.
void LinuxCopyRun::finish()
{
    throwIfFailed();
    beginCompletion(std::launch::deferred);
    awaitCompletion();
}

void LinuxCopyRun::beginCompletion(std::launch where)
{
    awaitCompletion();
    completing = std::exchange(growing, std::make_unique<CopyGroup>());
    const auto work = [this] {
        try {
            completing->complete(end.get_token());
        } catch (...) {
            end.request_stop();
            throw;
        }
    };
    try {
        completion = std::async(where, work);
    } catch (const std::system_error&) { // no thread could be started
        completion = std::async(std::launch::deferred, work);
    }
}

void LinuxCopyRun::awaitCompletion()
{
    if (!completion.valid())
        return;
    try {
        completion.get();
        syncing.took(completing->unsyncedBytes(), completing->syncDuration());
        completing.reset();
    } catch (...) {
        failure = std::current_exception();
        growing = std::make_unique<CopyGroup>();
        completing.reset();
        throw;
    }
}

void LinuxCopyRun::throwIfFailed() const
{
    if (failure)
        std::rethrow_exception(failure);
}

} // namespace reelkeep
