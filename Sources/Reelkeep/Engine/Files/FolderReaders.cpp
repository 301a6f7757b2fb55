#include "Files/FolderReaders.h"

#include "Files/FileError.h"
#include "Files/SystemCalls.h"

#include <cerrno>
#include <fcntl.h>
#include <iterator>
#include <linux/magic.h>
#include <string_view>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>
#include <system_error>
#include <utility>

namespace reelkeep {

namespace {

/// A tree may be deeper than the number of files that a program may open.
constexpr int mostKeptOpen = 32;

bool isForbidden(int errorNumber)
{
    return errorNumber == EACCES || errorNumber == EPERM;
}

/// Whether the chosen folder is missing, not a folder, or not allowed. Other errors, such as a failing device or a lack
/// of descriptors or memory, say nothing about the folder.
bool isNoRoot(int errorNumber)
{
    return errorNumber == ENOENT || errorNumber == ENOTDIR || errorNumber == ELOOP || isForbidden(errorNumber);
}

/// Whether the folder is on a virtual file system of the kernel. Processes that vanish there would fail a walk of "/".
bool isVirtual(int folder)
{
    struct statfs fileSystem = {};
    if (::fstatfs(folder, &fileSystem) != 0)
        return false;
    switch (fileSystem.f_type) {
    case PROC_SUPER_MAGIC:
    case SYSFS_MAGIC:
    case DEBUGFS_MAGIC:
    case TRACEFS_MAGIC:
    case CGROUP_SUPER_MAGIC:
    case CGROUP2_SUPER_MAGIC:
        return true;
    default:
        return false;
    }
}

} // namespace

FolderReaders::FolderReaders(const Location& rootLocation, const NameFilter& wantedNames,
                             const std::stop_token& stopToken, unsigned count)
    : root(rootLocation), wanted(wantedNames), stop(stopToken), top(std::make_unique<WalkedFolder>())
{
    top->position = waiting.insert(waiting.end(), top.get());
    try {
        while (helpers.size() + 1 < count)
            helpers.emplace_back([this] { readUntilTheEnd(); });
    } catch (const std::system_error&) {
    }
}

FolderReaders::~FolderReaders()
{
    {
        const std::lock_guard lock(mutex);
        isEnding = true;
        folderArrived.notify_all();
    }
    for (std::thread& helper : helpers)
        helper.join();
    // Taken apart one by one: a tree may be deeper than the stack.
    std::vector<std::unique_ptr<WalkedFolder>> rest;
    rest.push_back(std::move(top));
    while (!rest.empty()) {
        const std::unique_ptr<WalkedFolder> folder = std::move(rest.back());
        rest.pop_back();
        if (folder)
            std::move(folder->children.begin(), folder->children.end(), std::back_inserter(rest));
    }
}

void FolderReaders::waitFor(WalkedFolder& folder)
{
    std::unique_lock lock(mutex);
    while (folder.state != WalkedFolder::State::read) {
        if (folder.state == WalkedFolder::State::waiting)
            readUnlocked(folder, lock);
        else if (!waiting.empty())
            readUnlocked(*waiting.front(), lock);
        else
            folderRead.wait(lock);
    }
}

void FolderReaders::readUntilTheEnd()
{
    std::unique_lock lock(mutex);
    for (;;) {
        folderArrived.wait(lock, [this] { return isEnding || !waiting.empty(); });
        if (isEnding)
            return;
        readUnlocked(*waiting.front(), lock);
    }
}

/// Takes a waiting folder and reads it without holding the lock.
void FolderReaders::readUnlocked(WalkedFolder& folder, std::unique_lock<std::mutex>& lock)
{
    folder.state = WalkedFolder::State::taken;
    waiting.erase(folder.position);
    if (!waiting.empty())
        folderArrived.notify_one(); // wake one more reader while work is left
    lock.unlock();
    try {
        read(folder);
    } catch (...) {
        folder.waitingChildren.clear();
        folder.children.clear();
        folder.listing = {.names = {}, .items = {}, .failure = std::current_exception()};
    }
    lock.lock();
    folder.state = WalkedFolder::State::read;
    folder.unreadChildren = folder.children.size();
    waiting.splice(waiting.begin(), folder.waitingChildren);
    if (waiting.size() > 1) // this thread takes one itself
        folderArrived.notify_one();
    folderRead.notify_one();
    if (folder.parent && --folder.parent->unreadChildren == 0 && folder.parent->open) {
        folder.parent->open.close();
        --keptOpen;
    }
}

void FolderReaders::read(WalkedFolder& folder)
{
    const std::string path = pathOf(folder);
    Opened opened = folder.parent ? openChild(folder, path) : openTop(path);
    if (!opened.folder || opened.isVirtual)
        return;
    folder.listing = listFolder(opened.folder.get(), opened.device, path, wanted, stop);
    for (const FolderListing::Item& item : folder.listing.items) {
        if (!item.isFolder)
            continue;
        folder.children.push_back(std::make_unique<WalkedFolder>());
        WalkedFolder* const child = folder.children.back().get();
        child->parent = &folder;
        child->name = folder.listing.nameOf(item);
        child->position = folder.waitingChildren.insert(folder.waitingChildren.end(), child);
    }
    folder.device = opened.device;
    folder.inode = opened.inode;
    if (folder.children.empty())
        return;
    if (++keptOpen <= mostKeptOpen)
        folder.open = std::move(opened.folder);
    else
        --keptOpen;
}

/// Returns nothing for a root that is missing or not allowed.
FolderReaders::Opened FolderReaders::openTop(const std::string& path) const
{
    const ReachablePath reachable(root.path());
    Opened opened{.folder = openQuietly(reachable.folder(), reachable.rest(), O_RDONLY | O_DIRECTORY)};
    if (opened.folder)
        identify(opened, 0, path);
    else if (!isNoRoot(errno))
        throw readError(path, errno, 0);
    return opened;
}

/// Returns nothing for a folder that is not allowed, such as `lost+found`. If not even its attributes can be read, the
/// reason is the parent, which may be listed but not entered.
FolderReaders::Opened FolderReaders::openChild(const WalkedFolder& folder, const std::string& path) const
{
    const WalkedFolder& parent = *folder.parent;
    const FileDescriptor again = parent.open ? FileDescriptor() : reopened(parent);
    // Relative to the parent, since the kernel takes an eighth longer with the whole path.
    const int parentFolder = (again ? again : parent.open).get();
    Opened opened{.folder = openQuietly(parentFolder, folder.name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW)};
    struct stat status = {};
    if (opened.folder) {
        identify(opened, parent.device, path);
        opened.isVirtual =
            opened.device != parent.device && major(opened.device) == 0 && isVirtual(opened.folder.get());
    } else if (!isForbidden(errno) || ::fstatat(parentFolder, folder.name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
        throw readError(path, errno, parent.device);
    }
    return opened;
}

/// Causes no request to the disk: the kernel has all of this in memory once a folder is open.
void FolderReaders::identify(Opened& opened, dev_t likelyDevice, const std::string& path)
{
    struct statx status = {};
    if (::statx(opened.folder.get(), "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, STATX_INO, &status) != 0)
        throw readError(path, errno, likelyDevice);
    opened.device = makedev(status.stx_dev_major, status.stx_dev_minor);
    opened.inode = status.stx_ino;
}

/// Opens a closed folder again by its path. Something else may be there by now.
FileDescriptor FolderReaders::reopened(const WalkedFolder& closed) const
{
    const std::string path = pathOf(closed);
    const ReachablePath reachable(path);
    Opened opened{.folder = openQuietly(reachable.folder(), reachable.rest(), O_RDONLY | O_DIRECTORY)};
    if (!opened.folder)
        throw readError(path, errno, closed.device);
    identify(opened, closed.device, path);
    if (opened.device != closed.device || opened.inode != closed.inode)
        throw FileError(path, ENOENT);
    return std::move(opened.folder);
}

std::string FolderReaders::pathOf(const WalkedFolder& folder) const
{
    std::vector<std::string_view> names;
    for (const WalkedFolder* one = &folder; one->parent; one = one->parent)
        names.emplace_back(one->name);
    std::string path = root.path();
    if (path.back() != '/')
        path += '/';
    for (auto name = names.rbegin(); name != names.rend(); ++name)
        (path += *name) += '/';
    return path;
}

} // namespace reelkeep
