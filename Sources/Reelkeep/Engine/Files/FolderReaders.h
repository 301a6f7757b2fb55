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
#include <sys/types.h>
#include <thread>
#include <vector>

namespace reelkeep {

/// One folder of a walk, with its listing. Its path is known only through its parents: storing every path would take
/// memory quadratic in the depth.
struct WalkedFolder {
    WalkedFolder* parent = nullptr; ///< None for the root.
    const char* name = nullptr;     ///< In the parent's listing.
    FolderListing listing;
    std::vector<std::unique_ptr<WalkedFolder>> children; ///< One for each folder in the listing, in its order.

private:
    friend class FolderReaders;
    enum class State { waiting, taken, read };

    State state = State::waiting;
    std::list<WalkedFolder*>::iterator position; ///< In the list of waiting folders, while it is one.
    std::list<WalkedFolder*> waitingChildren;    ///< Until they join that list.
    FileDescriptor open;                         ///< For its children to be opened from; closed if too many are open.
    dev_t device = 0;                            ///< With `inode`, to recognise the folder when it is opened again.
    ino_t inode = 0;
    std::size_t unreadChildren = 0;
};

/// Reads the folders of one tree with several threads. Each folder has its own place for its listing, so going through
/// the tree in its order gives the same as reading it in that order, whichever thread reads which folder.
class FolderReaders {
public:
    /// `count` threads, of which the caller's is one. With 1 each folder is read when it is waited for, not before. If
    /// the system has no thread left, fewer do it.
    FolderReaders(const Location& root, const NameFilter& wanted, const std::stop_token& stop, unsigned count);
    FolderReaders(const FolderReaders&) = delete;
    FolderReaders& operator=(const FolderReaders&) = delete;
    /// Waits for the folders that are being read.
    ~FolderReaders();

    WalkedFolder& topFolder() { return *top; }

    /// Returns once `folder` is read. Until then the caller's thread reads too, beginning with that folder unless
    /// another thread is reading it. Errors are in the listing.
    void waitFor(WalkedFolder& folder);

private:
    /// A folder just opened, and what identifies it.
    struct Opened {
        FileDescriptor folder;
        dev_t device = 0;
        ino_t inode = 0;
        bool isVirtual = false; ///< On one of the kernel's virtual file systems, which hold no files.
    };

    void readUntilTheEnd();
    void readUnlocked(WalkedFolder& folder, std::unique_lock<std::mutex>& lock);
    void read(WalkedFolder& folder);
    Opened openTop(const std::string& path) const;
    Opened openChild(const WalkedFolder& folder, const std::string& path) const;
    FileDescriptor reopened(const WalkedFolder& closed) const;
    static void identify(Opened& opened, dev_t likelyDevice, const std::string& path);
    std::string pathOf(const WalkedFolder& folder) const;

    const Location& root;
    const NameFilter& wanted;
    const std::stop_token& stop;
    std::unique_ptr<WalkedFolder> top;
    std::atomic<int> keptOpen = 0; ///< The number of folders that are.

    std::mutex mutex; ///< Guards what follows, and the folders' private members but for `open`, `device` and `inode`.
    std::condition_variable folderArrived;
    std::condition_variable folderRead;
    std::list<WalkedFolder*> waiting; ///< In the order in which the walk needs them.
    bool isEnding = false;
    std::vector<std::thread> helpers;
};

} // namespace reelkeep
