#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// The engine's rules once more, in the plainest way: loops over what the file system shows, no index, no shortcut. It
/// shares no code with the engine; only Unicode's tables are the same.
namespace reelkeep::naive {

struct Video {
    std::string url;
    std::string relativePath;
    std::string fileName;
    std::int64_t size = 0;
    std::int64_t modified = 0; ///< Nanoseconds since 1970.

    bool operator==(const Video&) const = default;
};

/// Absent where the scan fails. `isPrivileged`: whether permissions are not looked at; else those of all others count.
std::optional<std::vector<Video>> scan(const std::vector<std::string>& roots, bool isPrivileged);

/// In the order of `language`, "es_ES" for example.
std::vector<Video> missing(const std::vector<Video>& source, const std::vector<Video>& reviewed,
                           const std::string& language);

/// Whether names are the same but for letter case and normal form.
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
