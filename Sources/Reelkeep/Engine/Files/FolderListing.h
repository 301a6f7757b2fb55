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
#include <sys/types.h>
#include <vector>

namespace reelkeep {

/// Whether a walk reports a file of that name.
using NameFilter = std::function<bool(std::string_view fileName)>;

/// The entries of one folder that matter to a walk, in the order of the file system.
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

/// Reads the open folder `folder`, which is on `device`, to its end. `path` is its path, ending in "/". Throws Stopped.
FolderListing listFolder(int folder, dev_t device, const std::string& path, const NameFilter& wanted,
                         const std::stop_token& stop);

/// Names that the user does not see: with a leading dot, and the bookkeeping of another system (its trash above all,
/// which must never count as an archive).
bool isHidden(std::string_view name);
/// Folders that another system shows as one file. A camera's own structures are not among them.
bool isPackage(std::string_view folderName);

} // namespace reelkeep
