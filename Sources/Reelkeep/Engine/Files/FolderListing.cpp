#include "Files/FolderListing.h"

#include "Files/FileError.h"
#include "Files/Location.h"
#include "Files/Stopped.h"
#include "Files/SystemCalls.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <utility>

namespace reelkeep {

namespace {

/// Absent for dates beyond what can be told in nanoseconds, as damaged disks show them.
std::optional<Date> dateOf(const struct timespec& time)
{
    constexpr std::int64_t farthest = 9'000'000'000; // the year 2255
    if (time.tv_sec < -farthest || time.tv_sec > farthest)
        return std::nullopt;
    return Date(std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec));
}

/// Reads one folder. Attributes are asked for only where they matter, yet the outcome is as if every entry's had been.
class FolderReader {
public:
    FolderReader(int openFolder, const std::string& folderPath, const NameFilter& wantedNames)
        : folder(openFolder), path(folderPath), wanted(wantedNames)
    {
    }

    /// Takes one entry; throws FileError where it cannot be told what it is.
    void take(const char* name, unsigned char type)
    {
        if (isHidden(name))
            return;
        if (firstVisible.empty())
            firstVisible = name;
        const bool isWanted = (type == DT_REG || type == DT_UNKNOWN) && wanted(name);
        struct stat status = {};
        if (isWanted || type == DT_UNKNOWN) {
            if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0)
                fail(name, errno);
            isEntered = true;
        }
        if (isWanted && S_ISREG(status.st_mode))
            add(name, {.size = status.st_size, .contentModificationDate = dateOf(status.st_mtim)});
        else if ((type == DT_DIR || S_ISDIR(status.st_mode)) && !isPackage(name)) {
            add(name, {.isFolder = true});
            isEntered |= firstVisible == name; // by whoever opens it, or is not able to
        }
    }

    /// A folder that one may list but not enter shows its entries' names and nothing else. Where nothing was asked for
    /// below it, that has not come to light yet.
    void requireEntered()
    {
        struct stat status = {};
        if (!isEntered && !firstVisible.empty() &&
            ::fstatat(folder, firstVisible.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0 && errno == EACCES)
            fail(firstVisible, EACCES);
    }

    FolderListing listing;

private:
    /// Where the folder may not be entered, its first entry is the first that cannot be looked at.
    [[noreturn]] void fail(const std::string& name, int errorNumber)
    {
        const bool isForbidden = errorNumber == EACCES && !isEntered;
        if (isForbidden)
            listing.items.clear();
        throw FileError(path + (isForbidden ? firstVisible : name), errorNumber);
    }
    void add(const char* name, FolderListing::Item item)
    {
        item.nameBegin = listing.names.size();
        listing.names.append(name, std::strlen(name) + 1);
        listing.items.push_back(item);
    }

    int folder;
    const std::string& path;
    const NameFilter& wanted;
    std::string firstVisible;
    bool isEntered = false;
};

void readEntries(FolderReader& reader, int folder, const FolderPlace& place, const std::string& path,
                 const std::stop_token& stop)
{
    alignas(struct dirent64) std::array<char, std::size_t(128) << 10> buffer;
    for (;;) {
        const auto count = uninterrupted([&] { return ::getdents64(folder, buffer.data(), buffer.size()); });
        if (count < 0)
            requireStillThere(place, path, errno);
        if (count <= 0)
            return;
        for (std::size_t at = 0; at < static_cast<std::size_t>(count);) {
            throwIfStopped(stop);
            const auto* entry = reinterpret_cast<const struct dirent64*>(buffer.data() + at);
            reader.take(entry->d_name, entry->d_type);
            at += entry->d_reclen;
        }
    }
}

} // namespace

FolderListing listFolder(int folder, const FolderPlace& place, const std::string& path, const NameFilter& wanted,
                         const std::stop_token& stop)
{
    throwIfStopped(stop);
    FolderReader reader(folder, path, wanted);
    try {
        readEntries(reader, folder, place, path, stop);
        reader.requireEntered();
    } catch (const FileError&) {
        reader.listing.failure = std::current_exception();
    }
    return std::move(reader.listing);
}

void requireStillThere(const FolderPlace& place, const std::string& path, int errorNumber)
{
    struct statx status = {};
    if (::statx(place.parent, place.name, place.flags | AT_STATX_FORCE_SYNC, STATX_BASIC_STATS, &status) != 0)
        throw FileError(Location(path).path(), errno);
    if (errorNumber == EIO && isDisconnected(makedev(status.stx_dev_major, status.stx_dev_minor)))
        throw FileError(Location(path).path(), ENODEV);
}

} // namespace reelkeep
