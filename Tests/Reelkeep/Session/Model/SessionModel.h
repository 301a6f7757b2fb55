#pragma once

#include "Model/SessionState.h"
#include "Model/SteppedFiles.h"

#include <deque>
#include <functional>
#include <list>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace reelkeep {

/// A second, plain implementation of the session's rules. It knows each write and its order, the call that every worker
/// is executing, and what the workers have posted. It shares no code with the session or the engine.
class SessionModel {
public:
    /// A scan or a copy on its worker.
    struct Run {
        std::string callInHand;                ///< "walk /card"; empty once the worker has posted its outcome.
        std::optional<std::thread::id> worker; ///< Set by the test that found it.

        bool isCopy = false;
        bool endsACopy = false; ///< A scan that follows a copy.
        // Of a scan:
        std::vector<std::string> roots; ///< The source, then what is reviewed.
        std::vector<std::vector<Video>> found;
        // Of a copy:
        std::vector<Video> videos;
        std::string source;
        std::string destination;
        bool preservesStructure = true;
        std::size_t handled = 0;
        std::size_t copied = 0;
    };
    using Folders = std::vector<std::string>;
    /// The user's answer in a dialog; absent if it is cancelled.
    using Answer = std::optional<Folders>;

    std::map<std::string, std::int64_t> disk;

    bool isAlive() const { return alive; }
    const SessionState& state() const { return fields; }
    /// The fields before each write since the last call.
    std::vector<SessionState> takeAnnounced() { return std::exchange(announced, {}); }
    std::size_t announcedCount() const { return announced.size(); }
    /// Of the workers that still run.
    std::list<Run>& runs() { return running; }

    void chooseSourceFolder(const Answer& answer);
    void chooseCopyDestinationFolder(const Answer& answer);
    void addDestinationReviewFolders(const Answer& answer);
    void useOnlyCopyDestinationForReview();
    void removeDestinationReviewFolder(const std::string& folder);
    void setCopyDestinationFolder(const std::optional<std::string>& folder);
    void setPreserveFolderStructure(bool preserve);
    void scanFolders() { beginScan(false); }
    void copyMissingVideos();

    /// The call that this worker is executing continues.
    void resume(Run& run, SteppedFiles::Going going);
    /// The interface thread runs what the workers have posted so far.
    void serve();

    /// The session ends, with everything that runs and waits.
    void destroy();
    /// The session is destroyed in the slot of the write with this number among those not taken yet, from 1; 0 for
    /// none.
    void destroyAt(std::size_t write) { fatalWrite = write; }
    /// A new session on the same disk.
    void begin();

private:
    void write(const std::function<void()>& store);
    void setStatus(const std::string& text);
    void beginScan(bool endsACopy);
    void postScan(Run& run);
    void postFailure(Run& run, const std::string& error);
    void goOnCopying(Run& run);
    void post(std::function<void()> job) { posted.push_back(std::move(job)); }
    void endCopy();
    std::vector<Video> videosBelow(const std::string& root) const;

    SessionState fields;
    std::vector<SessionState> announced;
    std::list<Run> running;
    std::deque<std::function<void()>> posted;
    std::size_t fatalWrite = 0; ///< Among `announced`; 0 for none.
    bool alive = true;
};

} // namespace reelkeep
