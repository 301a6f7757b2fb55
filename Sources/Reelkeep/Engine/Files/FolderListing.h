#pragma once

#include "Files/Date.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace reelkeep {

/// Whether a walk reports a file of that name.
using NameFilter = std::function<bool(std::string_view fileName)>;

/// What a walk needs of one folder, in the order of the file system. It depends on no other folder's.
struct FolderListing {
    /// A wanted regular file, or a folder to go into.
    struct Item {
        std::size_t nameBegin = 0; ///< In `names`.
        bool isFolder = false;
        std::int64_t size = 0;
        std::optional<Date> contentModificationDate = {};
    };

    const char* nameOf(const Item& item) const { return names.data() + item.nameBegin; }

    std::string names; ///< Each ends with a zero byte.
    std::vector<Item> items;
    std::exception_ptr failure; ///< What ended the reading of this folder, after the items.
};

/// Where a folder was opened: its attributes are read there again when it fails.
struct FolderPlace {
    int parent;       ///< An open folder, or AT_FDCWD.
    const char* name; ///< Its path from there.
    int flags = 0;    ///< AT_SYMLINK_NOFOLLOW, except for the chosen root.
};

/// Reads the open folder `folder` once. `path` is its own, ending in "/". Throws Stopped.
FolderListing listFolder(int folder, const FolderPlace& place, const std::string& path, const NameFilter& wanted,
                         const std::stop_token& stop);

/// To be called after a folder could not be opened or read on: no failure as long as it can still be looked at, so
/// that one forbidden or damaged folder is passed over; FileError where the folder, or the whole disk, has gone.
void requireStillThere(const FolderPlace& place, const std::string& path, int errorNumber);

/// Names that the user does not see: with a leading dot, and the bookkeeping of another system (its trash above all,
/// which must never count as an archive).
bool isHidden(std::string_view name);
/// Folders that another system shows as one file. A camera's own structures are none.
bool isPackage(std::string_view folderName);

} // namespace reelkeep
