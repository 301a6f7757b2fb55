#include "Fixtures/EventLoop.h"
#include "Fixtures/ScriptedFolderDialogs.h"
#include "Model/SessionCommand.h"
#include "Model/SessionModel.h"
#include "Model/SessionState.h"
#include "Model/SteppedFiles.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace reelkeep {
namespace {

/// Names of letters in both cases, nested folders, a path that repeats its root, and files that are not videos.
const std::vector<std::string> allPaths = {"/card/a.mov",          "/card/B.mov",   "/card/x/a.mov", "/card/x/b.MOV",
                                           "/card/x/card/c.mov",   "/card/y/a.mov", "/card/d.txt",   "/A/A.mov",
                                           "/A/x/a.mov",           "/A/x/B.mov",    "/A/extra.mp4",  "/B/b.mov",
                                           "/B/x/card/c.mov",      "/B/A/x/a.mov",  "/a/a.mov",      "/card/xc.mov",
                                           "/A/deep/er/A/x/b.mov", "/B/a.txt",      "/a/B.mov",      "/B/y/a.mov"};
const std::vector<std::string> allFolders = {"/card", "/A", "/B", "/A/x", "/a", "/card/x", "/"};

template <typename Value>
const Value& pick(const std::vector<Value>& values, int number)
{
    return values[static_cast<std::size_t>(number) % values.size()];
}

/// A session and its model, given the same commands.
class SessionMachine {
public:
    SessionMachine() { begin(); }
    ~SessionMachine() { session.reset(); }

    void perform(const Command& command)
    {
        const auto start = std::chrono::system_clock::now();
        const int dates = model.state().scanDates;
        fatalWrite = static_cast<std::size_t>(command.fatalWrite);
        model.destroyAt(fatalWrite);
        std::ostringstream line;
        showValue(command, line);
        trace += line.str() + "\n";
        act(command);
        settle();
        fatalWrite = 0;
        compare();
        if (session && model.state().scanDates > dates)
            require(*session->lastScanDate() >= start && *session->lastScanDate() <= std::chrono::system_clock::now(),
                    "the date of the scan is not that of its end");
        if (!session)
            begin();
        compare();
    }

    /// Lets everything finish: a copy may be followed by a scan, and that by nothing.
    void finish()
    {
        for (int round = 0; round < 2; ++round) {
            perform({.deed = Deed::resumeAllWorkers});
            perform({.deed = Deed::serve});
        }
        require(model.runs().empty() && !model.state().isScanning && !model.state().isCopying, "it does not end");
    }

    std::size_t writeCount() const { return writes; }

private:
    void act(const Command& command)
    {
        switch (command.deed) {
        case Deed::resumeWorker:
            return resumeWorker(command);
        case Deed::resumeAllWorkers:
            return resumeAllWorkers();
        case Deed::serve:
            return serve();
        case Deed::scan:
            return scan();
        case Deed::analyse:
            return analyse();
        case Deed::copy:
            return copy();
        case Deed::chooseSource:
            return chooseSource(command);
        case Deed::chooseDestination:
            return chooseDestination(command);
        case Deed::addReviewFolders:
            return addReviewFolders(command);
        case Deed::useOnlyCopyDestination:
            return useOnlyCopyDestination();
        case Deed::removeReviewFolder:
            return removeReviewFolder(pick(allFolders, command.target));
        case Deed::pickDestination:
            return pickDestination(pick(allFolders, command.target));
        case Deed::pickNoDestination:
            return pickDestination(std::nullopt);
        case Deed::preserveFolders:
            return preserve(true);
        case Deed::flattenFolders:
            return preserve(false);
        case Deed::addFile:
            return addFile(pick(allPaths, command.target), command.size);
        case Deed::removeFile:
            return removeFile(pick(allPaths, command.target));
        case Deed::destroy:
            return destroy();
        }
    }

    void begin()
    {
        session = std::make_unique<VideoSyncViewModel>(dialogs.factory(), files);
        reader = {};
        QObject::connect(session.get(), &VideoSyncViewModel::objectWillChange, [this] {
            announced.push_back(reader.read(*session));
            if (announced.size() == fatalWrite)
                session.reset();
        });
        model.begin();
    }

    // --- Commands

    void resumeWorker(const Command& command)
    {
        if (model.runs().empty())
            return;
        auto run = model.runs().begin();
        std::advance(run, static_cast<std::size_t>(command.target) % model.runs().size());
        resume(*run, command.going);
    }

    void resume(SessionModel::Run& run, SteppedFiles::Going going)
    {
        model.resume(run, going);
        files->resume(*run.worker, going);
    }

    /// Runs one worker after another to its end.
    void resumeAllWorkers()
    {
        while (!model.runs().empty()) {
            resume(model.runs().front(), SteppedFiles::Going::well);
            settle();
        }
    }

    void serve()
    {
        model.serve();
        isServed = waitUntil([this] { return announced.size() >= model.announcedCount(); });
        letEventsPass();
    }

    void scan()
    {
        model.scanFolders();
        session->scanFolders();
    }

    void analyse()
    {
        scan();
        settle();
        resumeAllWorkers();
        serve();
    }

    void copy()
    {
        model.copyMissingVideos();
        session->copyMissingVideos();
    }

    void chooseSource(const Command& command)
    {
        const auto answer = answerOf(command, 1);
        session->chooseSourceFolder();
        if (model.isAlive())
            model.chooseSourceFolder(answer);
    }

    void chooseDestination(const Command& command)
    {
        const auto answer = answerOf(command, 1);
        session->chooseCopyDestinationFolder();
        if (model.isAlive())
            model.chooseCopyDestinationFolder(answer);
    }

    void addReviewFolders(const Command& command)
    {
        const auto answer = answerOf(command, 1 + command.target % 4);
        session->addDestinationReviewFolders();
        if (model.isAlive())
            model.addDestinationReviewFolders(answer);
    }

    /// Prepares the next dialog: what is chosen in it, whether it is cancelled, and what goes on meanwhile.
    SessionModel::Answer answerOf(const Command& command, int count)
    {
        ScriptedFolderDialogs::Answer answer;
        SessionModel::Folders chosen;
        for (int i = 0; i < count && command.reply != Reply::noFolder; ++i)
            chosen.push_back(pick(allFolders, command.target + i * command.step));
        answer.chosen = {chosen.begin(), chosen.end()};
        const bool isCancelled = command.reply == Reply::cancel;
        if (isCancelled)
            answer.response = FolderDialog::Response::cancel;
        if (command.meanwhile == Meanwhile::serving)
            answer.whileOpen = [this] { serve(); };
        if (command.meanwhile == Meanwhile::destruction)
            answer.whileOpen = [this] { destroy(); };
        dialogs.answers.push_back(answer);
        return isCancelled ? std::nullopt : SessionModel::Answer(chosen);
    }

    void useOnlyCopyDestination()
    {
        model.useOnlyCopyDestinationForReview();
        session->useOnlyCopyDestinationForReview();
    }

    void removeReviewFolder(const std::string& folder)
    {
        model.removeDestinationReviewFolder(folder);
        session->removeDestinationReviewFolder(Location(folder));
    }

    void pickDestination(const std::optional<std::string>& folder)
    {
        model.setCopyDestinationFolder(folder);
        session->setCopyDestinationFolder(folder ? std::optional(Location(*folder)) : std::nullopt);
    }

    void preserve(bool folderStructure)
    {
        model.setPreserveFolderStructure(folderStructure);
        session->setPreserveFolderStructure(folderStructure);
    }

    void addFile(const std::string& path, int size)
    {
        model.disk[path] = size;
        files->add(path, size);
    }

    void removeFile(const std::string& path)
    {
        model.disk.erase(path);
        files->remove(path);
    }

    void destroy()
    {
        model.destroy();
        session.reset();
    }

    // --- Checks after each command

    /// Waits until every worker has reached the state of its model.
    void settle()
    {
        std::vector<std::thread::id> known;
        for (const SessionModel::Run& run : model.runs()) {
            if (run.worker)
                known.push_back(*run.worker);
        }
        model.runs().remove_if([](const SessionModel::Run& run) { return run.callInHand.empty(); });
        for (SessionModel::Run& run : model.runs()) {
            if (run.worker) {
                require(files->waitForCall(*run.worker, run.callInHand), "not called: " + run.callInHand);
                continue;
            }
            run.worker = files->waitForNewWorker(known, run.callInHand);
            require(run.worker.has_value(), "not called by a new worker: " + run.callInHand);
            known.push_back(*run.worker);
        }
        // Each worker keeps the files until it has posted its outcome.
        const auto holders = static_cast<long>(1 + (model.isAlive() ? 1 : 0) + model.runs().size());
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (files.use_count() != holders && std::chrono::steady_clock::now() < deadline)
            std::this_thread::yield();
        require(files.use_count() == holders, "there are more or fewer workers than runs");
        require(files->callCount() == model.runs().size(), "calls in hand that no run knows");
    }

    void compare()
    {
        require(isServed, "the announcements do not come");
        require((session != nullptr) == model.isAlive(), "alive or not");
        const std::vector<SessionState> expected = model.takeAnnounced();
        for (std::size_t i = 0; i < std::max(expected.size(), announced.size()); ++i) {
            const std::string number = "announcement " + std::to_string(i + 1) + " ";
            require(i < announced.size(), number + "is missing");
            require(i < expected.size(), number + "was not to be");
            require(announced[i] == expected[i],
                    number + "shows\n" + textOf(announced[i]) + "instead of\n" + textOf(expected[i]));
        }
        writes += announced.size();
        announced.clear();
        if (!session)
            return;
        const SessionState now = reader.read(*session);
        require(now == model.state(), "the fields are\n" + textOf(now) + "instead of\n" + textOf(model.state()));
        const DerivedValues derived = derivedValuesOf(*session);
        const DerivedValues ruled = derivedValuesOf(model.state());
        require(derived == ruled, "derived\n" + textOf(derived) + "instead of\n" + textOf(ruled));
        std::map<std::string, std::int64_t> disk;
        files->MemoryFileManager::regularFiles(
            Location(""), [](std::string_view) { return true; },
            [&](const FileManager::Entry& entry) { disk[entry.url.path()] = entry.size; }, {});
        require(disk == model.disk, "the disk is another");
        require(dialogs.openCount == 0 && dialogs.answers.empty(), "a dialog too many or too few");
    }

    void require(bool holds, const std::string& otherwise) const
    {
        if (!holds)
            RC_FAIL(otherwise + "\nafter\n" + trace);
    }

    std::shared_ptr<SteppedFiles> files = std::make_shared<SteppedFiles>();
    ScriptedFolderDialogs dialogs;
    std::unique_ptr<VideoSyncViewModel> session;
    SessionReader reader;
    SessionModel model;
    std::vector<SessionState> announced;
    std::size_t writes = 0; ///< Compared so far.
    std::size_t fatalWrite = 0;
    bool isServed = true;
    std::string trace;
};

/// Whatever users and disks do, in any order, the session writes exactly what the rules require, in their order.
TEST(SessionMachine, doesWhatItsModelDoes)
{
    std::size_t deeds = 0;
    std::size_t writes = 0;
    EXPECT_TRUE(rc::check([&] {
        const int sizes = *rc::gen::inRange(0, 3);
        const int source = *rc::gen::inRange(0, 2);
        const int destination = *rc::gen::inRange(1, 4);
        const auto sequence = *rc::gen::container<std::vector<Command>>(commands());
        SessionMachine machine;
        // Files, and the choices that most commands need.
        for (const int path : {0, 1, 2, 3, 5, 7, 9, 10})
            machine.perform({.deed = Deed::addFile, .target = path, .size = (path + sizes) % 3});
        machine.perform({.deed = Deed::chooseSource, .target = source});
        machine.perform({.deed = Deed::chooseDestination, .target = destination});
        for (const Command& command : sequence)
            machine.perform(command);
        machine.finish();
        deeds += sequence.size();
        writes += machine.writeCount();
    }));
    std::printf("%zu deeds, %zu writes compared\n", deeds, writes);
}

} // namespace
} // namespace reelkeep
