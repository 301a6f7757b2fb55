#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// The engine's rules a second time, as plain loops over the file system, without index or shortcut. It shares no code
/// with the engine, only Unicode's tables.
namespace reelkeep::naive {

struct Video {
    std::string url;
    std::string relativePath;
    std::string fileName;
    std::int64_t size = 0;
    std::int64_t modified = 0; ///< Nanoseconds since 1970.

    bool operator==(const Video&) const = default;
};

/// Absent if the scan fails. `isPrivileged`: ignores permissions; otherwise those for others apply.
std::optional<std::vector<Video>> scan(const std::vector<std::string>& roots, bool isPrivileged);

/// In the order of `language`, "es_ES" for example.
std::vector<Video> missing(const std::vector<Video>& source, const std::vector<Video>& reviewed,
                           const std::string& language);

/// Whether names are the same except for letter case and normal form.
bool isSameName(const std::string& one, const std::string& other);

/// Whether a file browser lists `one` before `other`.
bool isBefore(const std::string& one, const std::string& other, const std::string& language);

struct Copy {
    std::vector<std::string> reports; ///< "0/2 CLIP.MOV"
    std::vector<Video> copied;
    std::vector<Video> skipped;
    bool failed = false;
};

/// Copies on the disk.
Copy copy(const std::vector<Video>& videos, const std::string& source, const std::string& destination,
          bool preservesStructure);

} // namespace reelkeep::naive
