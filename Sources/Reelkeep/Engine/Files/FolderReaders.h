#pragma once

#include "Files/FileDescriptor.h"
#include "Files/FolderListing.h"
#include "Files/Location.h"

#include <atomic>
#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <vector>

namespace reelkeep {

/// One folder of a walk, with what was read of it. It knows its path only through those above it: in a tree that is
/// deeper than any path all the paths would take the square of its depth.
struct WalkedFolder {
    WalkedFolder* above = nullptr; ///< None for the root.
    const char* name = nullptr;    ///< In the listing of the folder above.
    FolderListing listing;
    std::vector<std::unique_ptr<WalkedFolder>> below; ///< One for each folder in the listing, in its order.

private:
    friend class FolderReaders;
    enum class State { waiting, taken, read };

    State state = State::waiting;
    std::list<WalkedFolder*>::iterator place; ///< Among the waiting ones, as long as it is one.
    std::list<WalkedFolder*> waitingBelow;    ///< Those below, until they can be taken.
    FileDescriptor open;                      ///< For those below; none where too many are open.
    struct stat identity = {};                ///< To know it again where it was closed.
    std::size_t unread = 0;                   ///< How many of those below have not been read.
};

/// Reads the folders of one tree with several threads. Which thread reads which folder is left to chance, yet each
/// folder has its own place for what was read of it, so that whoever goes through the tree in its order sees the same
/// as if they had been read in that order.
class FolderReaders {
public:
    /// `count` threads, of which the caller's is one. With 1 each folder is read when it is waited for, and not before.
    FolderReaders(const Location& root, const NameFilter& wanted, const std::stop_token& stop, unsigned count);
    FolderReaders(const FolderReaders&) = delete;
    FolderReaders& operator=(const FolderReaders&) = delete;
    /// Waits for the folders that are being read.
    ~FolderReaders();

    WalkedFolder& topFolder() { return *top; }

    /// Returns once `folder` is read. Until then the caller's thread reads too: that folder first of all, unless
    /// another has begun it. What went wrong is the listing's failure.
    void waitFor(WalkedFolder& folder);

private:
    void readWhileOthersDo();
    void take(WalkedFolder& folder, std::unique_lock<std::mutex>& lock);
    void read(WalkedFolder& folder);
    void list(WalkedFolder& folder, FileDescriptor opened, const FolderPlace& place, const std::string& path);
    FileDescriptor reopened(const WalkedFolder& closed) const;
    std::string pathOf(const WalkedFolder& folder) const;

    const Location& root;
    const NameFilter& wanted;
    const std::stop_token& stop;
    std::unique_ptr<WalkedFolder> top;
    std::atomic<int> keptOpen = 0; ///< How many folders are.

    std::mutex mutex; ///< Of what follows, and of the folders' private members but for `open` and `identity`.
    std::condition_variable oneCame;
    std::condition_variable oneWasRead;
    std::list<WalkedFolder*> waiting; ///< Those first that are met first.
    bool isEnding = false;
    std::vector<std::thread> helpers;
};

} // namespace reelkeep
