#include "Files/CopyGroup.h"

#include "Files/SourceFile.h"
#include "Files/Stopped.h"
#include "Parallel.h"
#include "Text/TextOrder.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <utility>

namespace reelkeep {

namespace {

/// A single reader of small files would leave the disk idle most of the time. More readers gain nothing.
constexpr std::int64_t mostReaders = 4;
/// Of all readers together, in bytes.
constexpr std::int64_t readingMemory = chunkSize;

/// How many copies, in order, have succeeded so far, and the failure of the next one.
struct Outcome {
    explicit Outcome(std::size_t count) : good(count) {}

    /// Calls `step`. If it throws, only the copies before `index` are still good. Thread-safe.
    template <typename Step>
    void attempt(std::size_t index, Step step)
    {
        try {
            step();
        } catch (...) {
            const std::lock_guard lock(mutex);
            if (index < good) {
                good = index;
                failure = std::current_exception();
            }
        }
    }

    std::atomic<std::size_t> good;
    std::exception_ptr failure;
    std::mutex mutex;
};

} // namespace

void CopyGroup::add(std::unique_ptr<TemporaryFile> file, std::optional<std::uint64_t> hash, std::int64_t size)
{
    if (isEmpty())
        beginning = Clock::now();
    totalBytes += size;
    largestSize = std::max(largestSize, size);
    totalUnsynced += file->unsyncedBytes();
    isAnySpare = isAnySpare || file->isUnderSpareName();
    const FileIdentity identity = file->identity();
    std::string place = caseless(file->hiddenPlace().path());
    copies.push_back({std::move(file), hash, identity, std::move(place)});
}

/// Compares both: two paths may lead to one folder over a link, and on some FUSE disks each spelling of a name has its
/// own inode number.
bool CopyGroup::contains(const std::optional<FileIdentity>& file, const std::string& caselessPlace) const
{
    return std::any_of(copies.begin(), copies.end(), [&](const Copy& copy) {
        return isSameFile(copy.identity, file) || copy.caselessPlace == caselessPlace;
    });
}

std::size_t CopyGroup::readers() const
{
    const std::int64_t affordable = readingMemory / std::clamp(largestSize, std::int64_t(1), chunkSize);
    return std::min(copies.size(), static_cast<std::size_t>(std::min(affordable, mostReaders)));
}

void CopyGroup::complete(const std::stop_token& stop)
{
    Outcome outcome(copies.size());
    const auto sync = [&](const Copy& copy) {
        throwIfStopped(stop);
        copy.file->sync();
    };
    const auto began = Clock::now();
    if (!isEmpty()) // the first sync puts all of them on the disk in most file systems
        outcome.attempt(0, [&] { sync(copies[0]); });
    syncing = Clock::now() - began;

    std::atomic<std::size_t> next = 0;
    inParallel(readers(), [&](std::size_t) {
        const ChunkBuffer buffer(largestSize);
        for (std::size_t index = next++; index < outcome.good; index = next++)
            outcome.attempt(index, [&] {
                const Copy& copy = copies[index];
                if (index > 0)
                    sync(copy);
                if (copy.hash)
                    copy.file->requireOnDisk(*copy.hash, buffer.bytes(), stop);
            });
    });

    for (std::size_t index = 0; index < outcome.good; ++index)
        outcome.attempt(index, [&] {
            throwIfStopped(stop);
            copies[index].file->publish();
        });

    std::vector<FileIdentity> synced;
    for (std::size_t index = 0; index < outcome.good; ++index)
        outcome.attempt(index, [&] {
            const FileIdentity folder = copies[index].file->folderIdentity();
            const bool isDone = std::any_of(synced.begin(), synced.end(),
                                            [&](const FileIdentity& other) { return isSameFile(folder, other); });
            if (!isDone)
                copies[index].file->syncNames();
            synced.push_back(folder);
        });
    if (outcome.failure)
        std::rethrow_exception(outcome.failure);
}

} // namespace reelkeep
