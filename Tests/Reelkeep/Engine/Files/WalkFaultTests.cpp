#include "Files/FileError.h"
#include "Files/LinuxFileManager.h"
#include "Fixtures/FaultPlans.h"
#include "Fixtures/Faults.h"
#include "Fixtures/LongRuns.h"
#include "Fixtures/TemporaryFolder.h"
#include "Fixtures/Walks.h"
#include "VideoSyncService.h"

#include <cerrno>
#include <cstdio>
#include <gtest/gtest.h>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <sys/sysmacros.h>
#include <vector>

namespace reelkeep {
namespace {

/// With one thread the N-th call is the same in every run; with several it is not, but the rules for the outcome are.
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
    /// The same; absent if the walk failed with a text.
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

    /// With one thread it is always an error. Several threads make their calls in a different order each time, so the
    /// call that was to fail may not happen, or come last and concern no file; then nothing may be missing.
    static bool isErrorOr(const std::optional<Paths>& paths, const Paths& whole)
    {
        return !paths || (GetParam().walkers > 1 && *paths == whole);
    }

    static bool isForbidden(int errorNumber) { return errorNumber == EACCES || errorNumber == EPERM; }
    static bool isNoRoot(int errorNumber)
    {
        return isForbidden(errorNumber) || errorNumber == ENOENT || errorNumber == ENOTDIR || errorNumber == ELOOP;
    }
    /// Only owners may open without updating the access time, so after a first EPERM the call is repeated without that
    /// flag.
    static bool isTriedAgain(const faults::Plan& plan) { return plan.errorNumber == EPERM && plan.times == 1; }

    TemporaryFolder tree;
    Paths complete;
};

TEST_P(WalkFaultTest, findsTheSameIfNothingFails)
{
    ASSERT_EQ(complete.size(), 9U);
    EXPECT_EQ(outcome({}), complete);
}

TEST_P(WalkFaultTest, isAnErrorAndNotAShorterListIfTheDiskDies)
{
    const auto plans = deathsDuring(callsOfWalk());
    for (const faults::Plan& plan : plans)
        EXPECT_TRUE(isErrorOr(outcome(plan), complete)) << describe(plan);
    std::printf("%zu deaths of the disk\n", plans.size());
}

TEST_P(WalkFaultTest, isAnErrorInATreeWhoseFoldersAreClosedAndReopened)
{
    std::string branch = "deep";
    for (int depth = 0; depth < 40; ++depth) {
        branch += "/d";
        tree.file(branch + "/a/x.mov");
        tree.file(branch + "/z/x.mov");
    }
    const Paths whole = walk();
    const auto calls = callsOfWalk();
    for (std::size_t number = 1; number <= calls.size(); ++number) {
        const faults::Plan plan{.occurrence = number, .times = faults::forEver, .errorNumber = EIO};
        const auto paths = outcome(plan);
        EXPECT_TRUE(isErrorOr(paths, whole)) << describe(plan);
    }
}

/// Every errno at every call, once and from then on.
TEST_P(WalkFaultTest, failsUnlessAFolderIsForbiddenOrTheRootIsMissing)
{
    const auto plans = plansFor(callsOfWalk());
    std::size_t injected = 0;
    for (std::size_t number = 0; number < plans.size(); number += stride(1)) {
        const faults::Plan& plan = plans[number];
        SCOPED_TRACE(describe(plan));
        const auto paths = outcome(plan);
        if (!faults::struck())
            continue;
        ++injected;
        const bool isAtTheRoot = plan.call == "openat" && plan.occurrence == 1;
        if (plan.errorNumber == EINTR || (plan.call == "openat" && isTriedAgain(plan))) {
            EXPECT_EQ(paths, complete) << "the call is repeated";
        } else if (isAtTheRoot && isNoRoot(plan.errorNumber)) {
            EXPECT_EQ(paths, Paths());
        } else if (plan.call == "openat" && isForbidden(plan.errorNumber)) {
            ASSERT_TRUE(paths.has_value()) << "must be passed over silently";
            EXPECT_TRUE(isPartOfComplete(*paths));
        } else if (plan.call == "fstatat" && paths.has_value()) {
            EXPECT_EQ(*paths, complete) << "the one accepted exception: the inode of a non-video";
            EXPECT_NE(plan.errorNumber, EACCES);
        } else {
            EXPECT_TRUE(isErrorOr(paths, complete));
        }
    }
    std::printf("%zu injected faults\n", injected);
}

TEST_P(WalkFaultTest, reportsThatTheDiskIsGone)
{
    const dev_t unplugged = makedev(8, 1'000'000);
    for (const int errorNumber : {EIO, ENODEV}) {
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
        EXPECT_NE(text.find(": el disco se ha desconectado."), std::string::npos) << text;
    }
}

INSTANTIATE_TEST_SUITE_P(Walks, WalkFaultTest,
                         testing::Values(Walking{false, 1}, Walking{true, 1}, Walking{false, 4}, Walking{true, 4}),
                         [](const auto& tested) {
                             return std::string(tested.param.hidesTypes ? "unknown" : "known") + "By" +
                                    std::to_string(tested.param.walkers);
                         });

/// A disk for each root, none of which can be read.
class BrokenDisks : public LinuxFileManager {
public:
    Disk diskHolding(const Location& place) const override { return {.id = place.path()}; }
    void regularFiles(const Location& root, const NameFilter&, const FoundFile&, const std::stop_token&) const override
    {
        throw FileError(root.path(), EIO);
    }
};

TEST(WalkFaultRoots, failInTheirOrderEvenIfNoThreadIsLeft)
{
    for (const bool hasNoThreads : {false, true}) {
        faults::arm({.hasNoThreads = hasNoThreads});
        std::string failed;
        try {
            VideoSyncService::scanVideoFiles({Location("/c"), Location("/a"), Location("/b")}, BrokenDisks());
        } catch (const FileError& error) {
            failed = error.path();
        }
        faults::disarm();
        EXPECT_EQ(failed, "/c") << hasNoThreads;
    }
}

} // namespace
} // namespace reelkeep
