#include "Files/FolderReaders.h"

#include "Files/FileError.h"
#include "Files/SystemCalls.h"

#include <cerrno>
#include <fcntl.h>
#include <iterator>
#include <string_view>
#include <system_error>
#include <utility>

namespace reelkeep {

namespace {

/// A tree may be deeper than the number of files that a program may open.
constexpr int mostKeptOpen = 32;

} // namespace

FolderReaders::FolderReaders(const Location& rootLocation, const NameFilter& wantedNames,
                             const std::stop_token& stopToken, unsigned count)
    : root(rootLocation), wanted(wantedNames), stop(stopToken), top(std::make_unique<WalkedFolder>())
{
    top->place = waiting.insert(waiting.end(), top.get());
    try {
        while (helpers.size() + 1 < count)
            helpers.emplace_back([this] { readWhileOthersDo(); });
    } catch (const std::system_error&) { // No thread left: those that there are do it.
    }
}

FolderReaders::~FolderReaders()
{
    {
        const std::lock_guard lock(mutex);
        isEnding = true;
        oneCame.notify_all();
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
            std::move(folder->below.begin(), folder->below.end(), std::back_inserter(rest));
    }
}

void FolderReaders::waitFor(WalkedFolder& folder)
{
    std::unique_lock lock(mutex);
    while (folder.state != WalkedFolder::State::read) {
        if (folder.state == WalkedFolder::State::waiting)
            take(folder, lock);
        else if (!waiting.empty())
            take(*waiting.front(), lock);
        else
            oneWasRead.wait(lock);
    }
}

void FolderReaders::readWhileOthersDo()
{
    std::unique_lock lock(mutex);
    for (;;) {
        oneCame.wait(lock, [this] { return isEnding || !waiting.empty(); });
        if (isEnding)
            return;
        take(*waiting.front(), lock);
    }
}

void FolderReaders::take(WalkedFolder& folder, std::unique_lock<std::mutex>& lock)
{
    folder.state = WalkedFolder::State::taken;
    waiting.erase(folder.place);
    if (!waiting.empty())
        oneCame.notify_one(); // One wakes the next, as long as there is more to do.
    lock.unlock();
    try {
        read(folder);
    } catch (...) {
        folder.waitingBelow.clear();
        folder.below.clear();
        folder.listing = {.names = {}, .items = {}, .failure = std::current_exception()};
    }
    lock.lock();
    folder.state = WalkedFolder::State::read;
    folder.unread = folder.below.size();
    waiting.splice(waiting.begin(), folder.waitingBelow);
    if (waiting.size() > 1) // One is this thread's own.
        oneCame.notify_one();
    oneWasRead.notify_one();
    if (folder.above && --folder.above->unread == 0 && folder.above->open) {
        folder.above->open.close();
        --keptOpen;
    }
}

void FolderReaders::read(WalkedFolder& folder)
{
    const std::string path = pathOf(folder);
    if (!folder.above) {
        const ReachablePath reachable(root.path());
        FileDescriptor opened = openQuietly(reachable.folder(), reachable.rest(), O_RDONLY | O_DIRECTORY);
        if (opened)
            list(folder, std::move(opened), {reachable.folder(), reachable.rest()}, path);
        return;
    }
    const FileDescriptor again = folder.above->open ? FileDescriptor() : reopened(*folder.above);
    // Relative to the folder above: by its whole path the kernel takes an eighth longer.
    const FolderPlace place{(again ? again : folder.above->open).get(), folder.name, AT_SYMLINK_NOFOLLOW};
    FileDescriptor opened = openQuietly(place.parent, place.name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
    if (opened)
        list(folder, std::move(opened), place, path);
    else
        requireStillThere(place, path, errno);
}

void FolderReaders::list(WalkedFolder& folder, FileDescriptor opened, const FolderPlace& place, const std::string& path)
{
    folder.listing = listFolder(opened.get(), place, path, wanted, stop);
    for (const FolderListing::Item& item : folder.listing.items) {
        if (!item.isFolder)
            continue;
        folder.below.push_back(std::make_unique<WalkedFolder>());
        WalkedFolder* const below = folder.below.back().get();
        below->above = &folder;
        below->name = folder.listing.nameOf(item);
        below->place = folder.waitingBelow.insert(folder.waitingBelow.end(), below);
    }
    if (folder.below.empty())
        return;
    if (++keptOpen <= mostKeptOpen) {
        folder.open = std::move(opened);
        return;
    }
    --keptOpen;
    if (::fstat(opened.get(), &folder.identity) != 0)
        throw FileError(path, errno);
}

/// Finds a closed folder again, by its path. Meanwhile something else may have come to stand there.
FileDescriptor FolderReaders::reopened(const WalkedFolder& closed) const
{
    const std::string path = pathOf(closed);
    const ReachablePath reachable(path);
    FileDescriptor opened = openQuietly(reachable.folder(), reachable.rest(), O_RDONLY | O_DIRECTORY);
    struct stat now = {};
    if (!opened || ::fstat(opened.get(), &now) != 0)
        throw FileError(path, errno);
    if (now.st_dev != closed.identity.st_dev || now.st_ino != closed.identity.st_ino)
        throw FileError(path, ENOENT);
    return opened;
}

std::string FolderReaders::pathOf(const WalkedFolder& folder) const
{
    std::vector<std::string_view> names;
    for (const WalkedFolder* one = &folder; one->above; one = one->above)
        names.emplace_back(one->name);
    std::string path = root.path();
    if (path.back() != '/')
        path += '/';
    for (auto name = names.rbegin(); name != names.rend(); ++name)
        (path += *name) += '/';
    return path;
}

} // namespace reelkeep
