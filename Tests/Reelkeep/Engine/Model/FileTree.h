#pragma once

#include "Fixtures/TemporaryFolder.h"

#include <map>
#include <string>
#include <vector>

namespace reelkeep {

/// One entry to be made below some folder.
struct TreeEntry {
    enum class Kind { file, folder, link, pipe };
    Kind kind = Kind::file;
    std::vector<std::string> path; ///< Its components; `cardPath` means the whole path of the folder "card".
    int size = 0;                  ///< Of a file.
    std::string leadsTo;           ///< Of a link.
    int mode = -1;                 ///< Of a folder, set after the tree is complete; -1 for the usual one.
};

/// A component that makes the path of the card occur again below it.
extern const std::string cardPath;

/// A folder in memory with a tree in it. Entries whose path is taken are left out.
class FileTree {
public:
    explicit FileTree(const std::vector<TreeEntry>& entries);
    ~FileTree();

    /// "" for the whole tree.
    std::string path(const std::string& relative) const;
    /// Every entry by path: the content of a file, "folder", or the target of a link. Equal trees give equal results.
    std::map<std::string, std::string> everything() const;

private:
    TemporaryFolder folder{"/dev/shm"};
    std::vector<std::string> restricted;
};

} // namespace reelkeep
