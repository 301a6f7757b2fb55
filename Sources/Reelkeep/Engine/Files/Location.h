#pragma once

#include "Text/SharedText.h"

#include <functional>
#include <string>
#include <string_view>

namespace reelkeep {

/// An absolute path in the file system, kept as bytes.
/// Two locations are the same exactly when their paths are equal byte for byte: letter case counts, links are not
/// resolved, "." and ".." are not removed.
class Location {
public:
    Location() = default;
    /// Takes an absolute path; separators at its end are dropped, except the root's own.
    explicit Location(SharedText absolutePath);

    /// Absolute, without a separator at the end. Empty only for a default-made location.
    std::string path() const { return text; }
    /// The same without a copy.
    const SharedText& sharedPath() const { return text; }
    /// The name after the last separator; empty for the root "/".
    std::string_view lastPathComponent() const;
    /// What the user calls it: its last component, or its whole path if that is empty.
    std::string_view name() const;
    Location deletingLastPathComponent() const;
    /// `relative` put below this location, even if it begins with a separator: it never replaces this path.
    Location appending(std::string_view relative) const;

    bool operator==(const Location&) const = default;

private:
    SharedText text;
};

} // namespace reelkeep

template <>
struct std::hash<reelkeep::Location> {
    std::size_t operator()(const reelkeep::Location& location) const
    {
        return std::hash<reelkeep::SharedText>{}(location.sharedPath());
    }
};
