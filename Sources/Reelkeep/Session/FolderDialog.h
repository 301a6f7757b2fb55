#pragma once

#include "Files/Location.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace reelkeep {

/// A modal dialog in which the user chooses folders. A new one is made each time.
class FolderDialog {
public:
    enum class Response { cancel, ok };

    FolderDialog() = default;
    FolderDialog(const FolderDialog&) = delete;
    FolderDialog& operator=(const FolderDialog&) = delete;
    virtual ~FolderDialog() = default;

    std::string title;
    bool canChooseDirectories = false;
    bool canChooseFiles = true;
    bool allowsMultipleSelection = false;

    /// Shows the dialog and returns once the user has closed it. Events are processed meanwhile.
    virtual Response runModal() = 0;
    /// The chosen folder, the first if there are several; absent if there is none.
    virtual std::optional<Location> URL() const = 0;
    /// All chosen folders, in the dialog's order.
    virtual std::vector<Location> URLs() const = 0;
};

using FolderDialogFactory = std::function<std::unique_ptr<FolderDialog>()>;

} // namespace reelkeep
