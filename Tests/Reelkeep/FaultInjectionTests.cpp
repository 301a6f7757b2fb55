#include "CopyJob.h"
#include "Fixtures/Faults.h"
#include "Fixtures/LongRuns.h"
#include "Fixtures/TemporaryFolder.h"
#include "Fixtures/Walks.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <linux/magic.h>
#include <map>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <utility>

namespace reelkeep {
namespace {

namespace fs = std::filesystem;

/// Every way in which one call of a recorded sequence may fail.
std::vector<faults::Plan> plansFor(const std::vector<std::string>& calls)
{
    std::vector<faults::Plan> plans;
    std::map<std::string, std::size_t> occurrences;
    for (const std::string& call : calls) {
        const std::size_t occurrence = ++occurrences[call];
        for (const int errorNumber : faults::plausibleErrors(call)) {
            plans.push_back({.call = call, .occurrence = occurrence, .times = 1, .errorNumber = errorNumber});
            if (errorNumber == EINTR) // for ever would be a wait for ever
                continue;
            plans.push_back(
                {.call = call, .occurrence = occurrence, .times = faults::forEver, .errorNumber = errorNumber});
            if (call != "openat") // which would leave us without what it opened
                plans.push_back({.call = call,
                                 .occurrence = occurrence,
                                 .times = 1,
                                 .errorNumber = errorNumber,
                                 .happensFirst = true});
        }
    }
    return plans;
}

/// The disk dies at one call, for whatever comes after it.
std::vector<faults::Plan> deathsDuring(const std::vector<std::string>& calls)
{
    std::vector<faults::Plan> plans;
    for (std::size_t number = 1; number <= calls.size(); ++number)
        for (const int errorNumber : {EIO, ENODEV, ENXIO, ENOTCONN, ESHUTDOWN})
            plans.push_back({.call = "", .occurrence = number, .times = faults::forEver, .errorNumber = errorNumber});
    return plans;
}

std::string describe(const faults::Plan& plan)
{
    return (plan.call.empty() ? "every call" : plan.call) + " from occurrence " + std::to_string(plan.occurrence) +
           (plan.times == 1 ? " once" : " for ever") + (plan.happensFirst ? ", done but" : "") + " with " +
           ::strerrorname_np(plan.errorNumber);
}

/// What a file system may lack, and what an earlier run may have left.
struct Situation {
    const char* name;
    std::map<std::string, int> refusals;
    std::vector<std::pair<std::string, std::string>> leftovers;
    std::size_t size = (std::size_t(1) << 20) + 5; ///< Of the video, in bytes.
};

void PrintTo(const Situation& situation, std::ostream* stream)
{
    *stream << situation.name;
}

const std::vector<Situation> situations = {
    {"everythingSupported", {}, {}},
    {"largeEnoughToBeWrittenDirectly", {}, {}, (std::size_t(9) << 20) + 5},
    {"largeEnoughToBeFlushedInBetween", {{"fcntl", EINVAL}}, {}, (std::size_t(17) << 20) + 5},
    {"renameReplaces", {{"renameat2", EINVAL}}, {}},
    {"renameReplacesAndNoLinks", {{"renameat2", EINVAL}, {"linkat", EPERM}}, {}},
    {"simpleDisk", {{"ioctl", EOPNOTSUPP}, {"sync_file_range", ESPIPE}, {"fchmod", EPERM}, {"futimens", ENOSYS}}, {}},
    {"leftoverOfAKilledRun", {}, {{".x.mov.reelkeep-copia", "half"}}},
    {"abandonedReservation",
     {{"renameat2", EINVAL}, {"linkat", EPERM}},
     {{".x.mov.reelkeep-lista", "whole"}, {"x.mov", ""}}},
};

class CopyFaultTest : public testing::TestWithParam<Situation> {
protected:
    CopyFaultTest() : memory("/dev/shm"), content(GetParam().size, '\0')
    {
        for (std::size_t i = 0; i < content.size(); i += 4096)
            content[i] = static_cast<char>(i / 4096);
        memory.file("card/new/x.mov", content);
        modified = fs::last_write_time((memory / "card/new/x.mov").path());
    }

    CopyJob job() const
    {
        const VideoFile video{.id = "new/x.mov",
                              .url = memory / "card/new/x.mov",
                              .relativePath = "new/x.mov",
                              .fileName = "x.mov",
                              .size = std::int64_t(content.size()),
                              .createdAt = std::nullopt};
        return {.videos = {video}, .sourceRoot = memory / "card", .destinationRoot = memory / "disk"};
    }
    void prepareDisk() const
    {
        fs::remove_all((memory / "disk").path());
        memory.file("disk/neighbour.mov", "foreign");
        for (const auto& [name, leftover] : GetParam().leftovers)
            memory.file("disk/new/" + name, leftover);
    }
    /// "done", or the text of the failure.
    std::string outcome() const
    {
        try {
            const CopySummary summary = job().run(FileManager(), [](const CopyProgress&) {});
            return summary.copiedCount == 1 ? "done" : "skipped";
        } catch (const FileError& error) {
            return error.what();
        }
    }
    bool isWhole() const { return contentOf(target()) == content; }
    Location target() const { return memory / "disk/new/x.mov"; }
    std::vector<std::string> hiddenNames() const
    {
        std::vector<std::string> hidden;
        for (const std::string& path : everythingBelow(memory / "disk"))
            if (path.find("/.") != std::string::npos)
                hidden.push_back(path.substr(path.rfind('/') + 1));
        return hidden;
    }
    bool isLeftoverFromBefore(const std::string& name) const
    {
        return std::any_of(GetParam().leftovers.begin(), GetParam().leftovers.end(),
                           [&](const auto& leftover) { return leftover.first == name; });
    }

    void expectSafe(const faults::Plan& plan, const std::string& result) const
    {
        const bool exists = FileManager().fileExists(target());
        EXPECT_TRUE(!exists || isWhole()) << "a final name with wrong content";
        EXPECT_TRUE(exists || result != "done") << "counted, but not there";
        EXPECT_TRUE(result == "done" || result.find(": ") != std::string::npos) << result;
        EXPECT_EQ(contentOf(memory / "disk/neighbour.mov"), "foreign");
        EXPECT_EQ(fs::last_write_time((memory / "card/new/x.mov").path()), modified);
        const bool isTakenOver = plan.call == "flock" && plan.errorNumber == EWOULDBLOCK; // by whoever has the lock
        const bool cannotRemove =
            plan.times > 1 && (plan.call.empty() || plan.call == "unlinkat" || plan.call == "statx");
        for (const std::string& name : hiddenNames())
            EXPECT_TRUE(isTakenOver || cannotRemove || isLeftoverFromBefore(name)) << "left behind: " << name;
    }
    void expectRerunCompletes() const
    {
        const bool wasThere = FileManager().fileExists(target());
        EXPECT_EQ(outcome(), wasThere ? "skipped" : "done");
        EXPECT_TRUE(isWhole());
        EXPECT_TRUE(wasThere || hiddenNames().empty());
    }

    TemporaryFolder memory;
    std::string content;
    fs::file_time_type modified;
};

TEST_P(CopyFaultTest, neverHurtsAVideoWhateverFails)
{
    prepareDisk();
    faults::arm({.refusals = GetParam().refusals});
    ASSERT_EQ(outcome(), "done");
    const auto calls = faults::disarm();
    auto plans = plansFor(calls);
    const auto deaths = deathsDuring(calls);
    plans.insert(plans.end(), deaths.begin(), deaths.end());
    std::size_t injected = 0;
    std::size_t survived = 0;
    const auto stride = static_cast<std::size_t>(GetParam().size > (std::size_t(4) << 20) ? rounds(30, 1) : 1);
    for (std::size_t number = 0; number < plans.size(); number += stride) {
        faults::Plan& plan = plans[number];
        if ((plan.call == "fstatat" || plan.call == "statx") && plan.errorNumber == ENOENT)
            continue; // not a failure but an answer, and a false one
        SCOPED_TRACE(describe(plan));
        plan.refusals = GetParam().refusals;
        prepareDisk();
        faults::arm(plan);
        const std::string result = outcome();
        faults::disarm();
        injected += faults::struck() ? 1 : 0;
        survived += faults::struck() && result == "done" ? 1 : 0;
        expectSafe(plan, result);
        expectRerunCompletes();
        if (HasFailure())
            break;
    }
    EXPECT_GT(injected, plans.size() / stride / 2);
    RecordProperty("injectedFaults", std::to_string(injected));
    std::printf("%zu calls, %zu injected faults, %zu of them with a whole copy all the same\n", calls.size(), injected,
                survived);
}

INSTANTIATE_TEST_SUITE_P(Situations, CopyFaultTest, testing::ValuesIn(situations),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(ReadAhead, neverFailsWhateverFails)
{
    const TemporaryFolder memory("/dev/shm");
    const Location video = memory.file("x.mov", std::string(300'000, 'x'));
    faults::arm({});
    FileManager().readAhead(video);
    const auto calls = faults::disarm();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "posix_fadvise"), 4); // one for the order, three for the bytes
    auto plans = plansFor(calls);
    const auto deaths = deathsDuring(calls);
    plans.insert(plans.end(), deaths.begin(), deaths.end());
    for (const faults::Plan& plan : plans) {
        faults::arm(plan);
        EXPECT_NO_THROW(FileManager().readAhead(video)) << describe(plan);
        faults::disarm();
    }
    FileManager().readAhead(memory / "missing.mov");
    FileManager().readAhead(memory.folder("folder.mov"));
}

/// No FAT32 driver is at hand where this is tested, so a disk in memory says it is one.
TEST(Fat32, refusesAtOnceAFileOfFourGigabytes)
{
    const TemporaryFolder memory("/dev/shm");
    const Location source = memory.file("card/x.mov", "");
    const Location target = memory.folder("disk").appending("x.mov");
    constexpr std::uintmax_t fourGigabytes = std::uintmax_t(1) << 32U;
    const auto failureOf = [&](std::uintmax_t size) -> std::string {
        fs::resize_file(source.path(), size);
        faults::arm({.refusals = {{"write", ENOSPC}}, .fileSystemType = MSDOS_SUPER_MAGIC});
        try {
            FileManager().copyItem(source, target);
            return "none";
        } catch (const FileError& error) {
            return error.what();
        }
    };
    EXPECT_EQ(failureOf(fourGigabytes), target.path() + ": el archivo es demasiado grande para este disco.");
    const auto calls = faults::disarm();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "write"), 0);
    EXPECT_EQ(failureOf(fourGigabytes - 1), target.path() + ": no queda espacio en el disco."); // as far as writing
    faults::disarm();
    EXPECT_TRUE(everythingBelow(memory / "disk").empty());
}

/// With one thread the N-th call is the same each time. With several it is not, but what may come of it is.
struct Walking {
    bool hidesTypes;
    unsigned walkers;
};

void PrintTo(const Walking& walking, std::ostream* stream)
{
    *stream << walking.walkers << (walking.hidesTypes ? ", types unknown" : "");
}

class WalkFaultTest : public testing::TestWithParam<Walking> {
protected:
    WalkFaultTest()
    {
        tree.file("1.mov");
        tree.file("a/2.mov");
        tree.file("a/b/3.mov");
        tree.file("a/b/photo.jpg");
        tree.file("photos/photo.jpg");
        tree.file("Film.fcpbundle/4.mov");
        tree.file("z/5.mov");
        for (int i = 0; i < 5; ++i)
            tree.file("c" + std::to_string(i) + "/in.mov");
        tree.folder("empty");
        complete = walk();
    }

    using Paths = std::vector<std::string>;

    /// The paths found; throws FileError.
    Paths walk() const
    {
        Paths paths;
        const auto isMovie = [](std::string_view name) { return name.find(".mov") != std::string_view::npos; };
        for (const auto& entry : entriesBelow(tree.location(), isMovie, FixedWalkers(GetParam().walkers)))
            paths.push_back(entry.url.path());
        return paths;
    }
    /// The same, or nothing where it failed with a text.
    std::optional<Paths> outcome(faults::Plan plan) const
    {
        plan.hidesTypes = GetParam().hidesTypes;
        faults::arm(plan);
        try {
            Paths paths = walk();
            faults::disarm();
            return paths;
        } catch (const FileError& error) {
            faults::disarm();
            EXPECT_NE(std::string(error.what()).find(": "), std::string::npos);
            return std::nullopt;
        }
    }
    std::vector<std::string> callsOfWalk() const
    {
        faults::arm({.hidesTypes = GetParam().hidesTypes});
        walk();
        return faults::disarm();
    }
    bool isPartOfComplete(const Paths& paths) const
    {
        std::size_t at = 0;
        for (const std::string& path : complete)
            if (at < paths.size() && paths[at] == path)
                ++at;
        return at == paths.size();
    }

    /// One thread always comes to an error. Several make their calls in another order each time, so the planned one may
    /// not come, or be the last and one that cannot tell of any file; then nothing may be missing.
    static bool isErrorOr(const std::optional<Paths>& paths, const Paths& whole)
    {
        return !paths || (GetParam().walkers > 1 && *paths == whole);
    }

    TemporaryFolder tree;
    Paths complete;
};

TEST_P(WalkFaultTest, findsTheSameWhereNothingFails)
{
    ASSERT_EQ(complete.size(), 9U);
    EXPECT_EQ(outcome({}), complete);
}

TEST_P(WalkFaultTest, isAnErrorAndNoShorterListWhenTheDiskDies)
{
    const auto plans = deathsDuring(callsOfWalk());
    for (const faults::Plan& plan : plans) {
        SCOPED_TRACE(describe(plan));
        const auto paths = outcome(plan);
        if (plan.occurrence == 1) { // the chosen folder itself cannot be opened: nothing, and no error
            EXPECT_EQ(paths, Paths());
        } else {
            EXPECT_TRUE(isErrorOr(paths, complete));
        }
    }
    std::printf("%zu deaths of the disk\n", plans.size());
}

TEST_P(WalkFaultTest, isAnErrorTooWhereFoldersWereClosedMeanwhile)
{
    std::string branch = "deep";
    for (int depth = 0; depth < 40; ++depth) {
        branch += "/d";
        tree.file(branch + "/a/x.mov");
        tree.file(branch + "/z/x.mov");
    }
    const Paths whole = walk();
    const auto calls = callsOfWalk();
    for (std::size_t number = 2; number <= calls.size(); ++number) {
        const faults::Plan plan{.occurrence = number, .times = faults::forEver, .errorNumber = EIO};
        const auto paths = outcome(plan);
        EXPECT_TRUE(isErrorOr(paths, whole)) << describe(plan);
    }
}

TEST_P(WalkFaultTest, passesOverWhatCannotBeReadAndFailsWhereAVideoCannot)
{
    const auto plans = plansFor(callsOfWalk());
    std::size_t injected = 0;
    for (const faults::Plan& plan : plans) {
        SCOPED_TRACE(describe(plan));
        const auto paths = outcome(plan);
        if (!faults::struck())
            continue;
        ++injected;
        EXPECT_TRUE(!paths || isPartOfComplete(*paths));
        const bool isRootOpening = plan.call == "openat" && plan.occurrence == 1;
        if (isRootOpening && plan.times == faults::forEver) {
            EXPECT_EQ(paths, Paths());
        } else if (plan.call == "fstatat" && plan.errorNumber == EACCES) {
            EXPECT_FALSE(paths.has_value());
        } else if (plan.call == "openat" || plan.call == "getdents64") {
            EXPECT_TRUE(paths.has_value()) << "its attributes can be read";
        }
        // The one accepted exception is the look at a file that is no video.
        EXPECT_TRUE(plan.call != "fstatat" || !paths || *paths == complete);
    }
    std::printf("%zu injected faults\n", injected);
}

/// What the kernel still remembers of a folder can outlive its disk.
TEST_P(WalkFaultTest, isAnErrorWhereADiskFailsAndIsGone)
{
    const dev_t unplugged = makedev(8, 1'000'000);
    const auto failureOf = [&](int errorNumber) {
        faults::arm({.call = "getdents64",
                     .occurrence = 2,
                     .times = faults::forEver,
                     .errorNumber = errorNumber,
                     .device = unplugged});
        std::string text = "none";
        try {
            walk();
        } catch (const FileError& error) {
            text = error.what();
        }
        faults::disarm();
        return text;
    };
    EXPECT_NE(failureOf(EIO).find("el disco se ha desconectado."), std::string::npos);
    EXPECT_EQ(failureOf(EACCES), "none");
}

INSTANTIATE_TEST_SUITE_P(Walks, WalkFaultTest,
                         testing::Values(Walking{false, 1}, Walking{true, 1}, Walking{false, 4}, Walking{true, 4}),
                         [](const auto& tested) {
                             return std::string(tested.param.hidesTypes ? "unknown" : "known") + "By" +
                                    std::to_string(tested.param.walkers);
                         });

} // namespace
} // namespace reelkeep
