#include "Files/FolderListing.h"

#include "Files/FileError.h"
#include "Files/Stopped.h"
#include "Files/SystemCalls.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

namespace reelkeep {

namespace {

/// Absent for dates that nanoseconds cannot express, as damaged disks report them.
std::optional<Date> dateOf(const struct timespec& time)
{
    constexpr std::int64_t farthest = 9'000'000'000; // the year 2255
    if (time.tv_sec < -farthest || time.tv_sec > farthest)
        return std::nullopt;
    return Date(std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec));
}

/// Builds the listing of one folder entry by entry. Attributes are read only if they matter, yet the outcome is as if
/// every entry's had been read.
class ListingBuilder {
public:
    ListingBuilder(int openFolder, dev_t folderDevice, const std::string& folderPath, const NameFilter& wantedNames)
        : folder(openFolder), device(folderDevice), path(folderPath), wanted(wantedNames)
    {
    }

    /// Throws FileError if it cannot be known what the entry is.
    void add(const char* name, unsigned char type)
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
            append(name, {.size = status.st_size, .contentModificationDate = dateOf(status.st_mtim)});
        else if ((type == DT_DIR || S_ISDIR(status.st_mode)) && !isPackage(name)) {
            append(name, {.isFolder = true});
            isEntered |= firstVisible == name; // opening the subfolder later will show whether we may enter
        }
    }

    /// A folder that one may list but not enter shows its entries' names and nothing else. If no entry's attributes
    /// were read so far, we do not know yet whether this is one, so the first entry's are read.
    void requireEntered()
    {
        struct stat status = {};
        if (!isEntered && !firstVisible.empty() &&
            ::fstatat(folder, firstVisible.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0 && errno == EACCES)
            fail(firstVisible, EACCES);
    }

    FolderListing listing;

private:
    /// In a folder that may not be entered, the first entry is the first that cannot be examined.
    [[noreturn]] void fail(const std::string& name, int errorNumber)
    {
        const bool isForbidden = errorNumber == EACCES && !isEntered;
        if (isForbidden)
            listing.items.clear();
        throw readError(path + (isForbidden ? firstVisible : name), errorNumber, device);
    }
    void append(const char* name, FolderListing::Item item)
    {
        item.nameBegin = listing.names.size();
        listing.names.append(name, std::strlen(name) + 1);
        listing.items.push_back(item);
    }

    int folder;
    dev_t device;
    const std::string& path;
    const NameFilter& wanted;
    std::string firstVisible;
    bool isEntered = false;
};

} // namespace

FolderListing listFolder(int folder, dev_t device, const std::string& path, const NameFilter& wanted,
                         const std::stop_token& stop)
{
    ListingBuilder builder(folder, device, path, wanted);
    alignas(struct dirent64) std::array<char, std::size_t(128) << 10> buffer;
    try {
        for (;;) {
            throwIfStopped(stop);
            const auto count = uninterrupted([&] { return ::getdents64(folder, buffer.data(), buffer.size()); });
            if (count < 0)
                throw readError(path, errno, device);
            if (count == 0)
                break;
            for (std::size_t at = 0; at < static_cast<std::size_t>(count);) {
                throwIfStopped(stop);
                const auto* entry = reinterpret_cast<const struct dirent64*>(buffer.data() + at);
                builder.add(entry->d_name, entry->d_type);
                at += entry->d_reclen;
            }
        }
        builder.requireEntered();
    } catch (const FileError&) {
        builder.listing.failure = std::current_exception();
    }
    return std::move(builder.listing);
}

} // namespace reelkeep
