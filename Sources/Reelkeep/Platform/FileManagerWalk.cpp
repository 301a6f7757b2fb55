#include "Platform/FileManager.h"
#include "Platform/FolderListing.h"
#include "Platform/PathAccess.h"

#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

namespace reelkeep {

namespace {

/// A folder that the walk is in.
struct OpenFolder {
    FileDescriptor folder;      ///< None while the walk is far below.
    struct stat identity = {};  ///< To know it again; set while it is closed.
    std::size_t pathLength = 0; ///< Of the walk's path, up to and with this folder's "/".
    FolderListing listing;
    std::size_t next = 0; ///< The item at which the walk goes on.
};

/// Depth first, without recursion: a tree may be deeper than the stack. It keeps only the nearest folders open: it may
/// also be deeper than the number of files that a program may open.
class Walk {
public:
    Walk(const FileManager::NameFilter& wantedNames, const std::stop_token& stopToken)
        : wanted(wantedNames), stop(stopToken)
    {
    }

    std::vector<FileManager::Entry> run(const Location& root)
    {
        path = root.path();
        const ReachablePath reachable(path);
        FileDescriptor folder = openQuietly(reachable.folder(), reachable.rest(), O_RDONLY | O_DIRECTORY);
        if (path.back() != '/')
            path += '/';
        if (folder)
            enter(std::move(folder), {reachable.folder(), reachable.rest()});
        while (!folders.empty())
            step();
        return std::move(found);
    }

private:
    static constexpr std::size_t keptOpen = 32;

    void enter(FileDescriptor folder, const FolderPlace& place)
    {
        FolderListing listing = listFolder(folder.get(), place, path, wanted, stop);
        OpenFolder entered;
        entered.folder = std::move(folder);
        entered.pathLength = path.size();
        entered.listing = std::move(listing);
        folders.push_back(std::move(entered));
        if (folders.size() > keptOpen)
            close(folders[folders.size() - 1 - keptOpen]);
    }

    void close(OpenFolder& far) const
    {
        if (far.folder && ::fstat(far.folder.get(), &far.identity) != 0)
            throw FileError(path, errno);
        far.folder.close();
    }

    /// Finds a closed folder again, by its path. Meanwhile something else may have come to stand there.
    void reopen(OpenFolder& current) const
    {
        if (current.folder)
            return;
        const ReachablePath reachable(path);
        current.folder = openQuietly(reachable.folder(), reachable.rest(), O_RDONLY | O_DIRECTORY);
        struct stat now = {};
        if (!current.folder || ::fstat(current.folder.get(), &now) != 0)
            throw FileError(path, errno);
        if (now.st_dev != current.identity.st_dev || now.st_ino != current.identity.st_ino)
            throw FileError(path, ENOENT);
    }

    void step()
    {
        OpenFolder& current = folders.back();
        path.resize(current.pathLength);
        if (current.next == current.listing.items.size()) {
            if (current.listing.failure)
                std::rethrow_exception(current.listing.failure);
            folders.pop_back();
            return;
        }
        FolderListing::Item& item = current.listing.items[current.next++];
        if (auto* file = std::get_if<FileManager::Entry>(&item))
            found.push_back(std::move(*file));
        else
            descend(current, std::get<FolderListing::FolderName>(item));
    }

    void descend(OpenFolder& parent, const std::string& name)
    {
        reopen(parent);
        path += name;
        path += '/';
        const FolderPlace place{parent.folder.get(), name.c_str(), AT_SYMLINK_NOFOLLOW};
        FileDescriptor folder = openQuietly(place.parent, place.name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
        if (folder)
            enter(std::move(folder), place);
        else
            requireStillThere(place, path, errno);
    }

    const FileManager::NameFilter& wanted;
    const std::stop_token& stop;
    std::string path; ///< Of the folder in hand, ending in "/".
    std::vector<OpenFolder> folders;
    std::vector<FileManager::Entry> found;
};

} // namespace

std::vector<FileManager::Entry> FileManager::regularFiles(const Location& root, const NameFilter& wanted,
                                                          const std::stop_token& stop) const
{
    return Walk(wanted, stop).run(root);
}

} // namespace reelkeep
