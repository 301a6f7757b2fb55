#pragma once

#include "Files/Location.h"

#include <string>
#include <string_view>
#include <vector>

namespace reelkeep {

/// A new folder that is removed, with everything in it, at the end of the test, or of its
/// process if that is killed.
class TemporaryFolder {
public:
    /// In `base`, or in the system's folder for temporary files.
    explicit TemporaryFolder(const std::string& base = "");
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    const Location& location() const { return place; }
    Location operator/(std::string_view relative) const { return place.appending(relative); }
    /// Makes a file and its parent folders.
    Location file(std::string_view relative, std::string_view content = "x") const;
    Location folder(std::string_view relative) const;

private:
    Location place;
};

std::string contentOf(const Location& file);
/// The paths of everything below `folder`, hidden entries too, relative and sorted.
std::vector<std::string> everythingBelow(const Location& folder);

} // namespace reelkeep
