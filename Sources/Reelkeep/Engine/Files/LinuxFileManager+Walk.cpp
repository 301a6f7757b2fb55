#include "Files/Disk.h"
#include "Files/FolderReaders.h"
#include "Files/LinuxFileManager.h"

#include <cstddef>
#include <utility>

namespace reelkeep {

namespace {

/// A folder on the way from the root to the one in hand.
struct Level {
    WalkedFolder& folder;
    std::size_t pathLength;    ///< Of the walk's path, up to and with this folder's "/".
    std::size_t nextItem = 0;  ///< Where the walk continues.
    std::size_t nextChild = 0; ///< The next folder to go into.
};

} // namespace

/// Depth first, without recursion: a tree may be deeper than the stack.
void LinuxFileManager::regularFiles(const Location& root, const NameFilter& wanted, const FoundFile& found,
                                    const std::stop_token& stop) const
{
    FolderReaders readers(root, wanted, stop, diskHolding(root).walkers);
    readers.waitFor(readers.topFolder());
    SharedTextArena paths;
    std::string path = root.path();
    if (path.back() != '/')
        path += '/';
    std::vector<Level> levels = {{readers.topFolder(), path.size()}};
    while (!levels.empty()) {
        Level& level = levels.back();
        const FolderListing& listing = level.folder.listing;
        path.resize(level.pathLength);
        if (level.nextItem == listing.items.size()) {
            if (listing.failure)
                std::rethrow_exception(listing.failure);
            levels.pop_back();
            if (!levels.empty()) // its listing is in the result
                levels.back().folder.children[levels.back().nextChild - 1].reset();
            continue;
        }
        const FolderListing::Item& item = listing.items[level.nextItem++];
        const char* name = listing.nameOf(item);
        if (!item.isFolder) {
            found({Location(paths.joined(path, name)), item.size, item.contentModificationDate});
            continue;
        }
        WalkedFolder& child = *level.folder.children[level.nextChild++];
        readers.waitFor(child);
        path += name;
        path += '/';
        levels.push_back({child, path.size()});
    }
}

Disk LinuxFileManager::diskHolding(const Location& place) const
{
    return reelkeep::diskHolding(place);
}

} // namespace reelkeep
