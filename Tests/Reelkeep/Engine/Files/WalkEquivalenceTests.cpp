#include "Files/FileError.h"
#include "Fixtures/Faults.h"
#include "Fixtures/LongRuns.h"
#include "Fixtures/TemporaryFolder.h"
#include "Fixtures/Unprivileged.h"
#include "Fixtures/Walks.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace reelkeep {
namespace {

namespace fs = std::filesystem;

using Lines = std::vector<std::string>;

/// Names for which one function always fails, on any thread.
const std::string unreadableVideo = "unreadable.mov";
const std::string lockedFolder = "locked";
const std::string deadFolder = "dead"; // Its attributes can be read, as cached ones can.
const faults::Plan namedFailures = {
    .brokenNames = {{"fstatat", {{unreadableVideo, EIO}}}, {"openat", {{lockedFolder, EACCES}, {deadFolder, EIO}}}}};

bool isMovie(std::string_view name)
{
    return name.size() > 4 && name.substr(name.size() - 4) == ".mov";
}

/// The rules, step by step and with one thread: the attributes of every entry are read in the order of the listing, and
/// the first failure ends the walk. Shares no code with the real walk.
class PlainWalk {
public:
    explicit PlainWalk(bool hasNamedFailures) : failsByName(hasNamedFailures) {}

    void enter(const std::string& folder)
    {
        const std::unique_ptr<DIR, int (*)(DIR*)> open(::opendir(folder.c_str()), ::closedir);
        if (!open) // Not permitted; dead folders are not entered.
            return;
        while (const struct dirent* entry = ::readdir(open.get())) {
            const std::string name = entry->d_name;
            if (name.front() == '.')
                continue;
            const std::string path = folder + "/" + name;
            struct stat status = {};
            if (::lstat(path.c_str(), &status) != 0)
                throw readError(path, errno, 0);
            if (failsByName && (name == unreadableVideo || name == deadFolder))
                throw readError(path, EIO, 0);
            if (S_ISREG(status.st_mode) && isMovie(name))
                found.push_back(path + " " + std::to_string(status.st_size));
            if (S_ISDIR(status.st_mode) && fs::path(name).extension() != ".app" &&
                !(failsByName && name == lockedFolder))
                enter(path);
        }
    }

    Lines found;

private:
    bool failsByName;
};

Lines plainOutcome(const Location& root, bool hasNamedFailures)
{
    PlainWalk walk(hasNamedFailures);
    try {
        walk.enter(root.path());
        return walk.found;
    } catch (const FileError& error) {
        return {"error", error.what()};
    }
}

Lines outcomeOf(const Location& root, unsigned walkers)
{
    try {
        Lines found;
        for (const FileManager::Entry& entry : entriesBelow(root, isMovie, FixedWalkers(walkers)))
            found.push_back(entry.url.path() + " " + std::to_string(entry.size));
        return found;
    } catch (const FileError& error) {
        return {"error", error.what()};
    }
}

/// A tree of any shape. Most have one failure in them or none, some have many.
class RandomTree {
public:
    RandomTree(const Location& root, unsigned seed, bool hasNamedFailures)
        : random(seed), failsByName(hasNamedFailures), badPerThousand(below(3) * below(30))
    {
        fill(root.path(), 0);
    }

private:
    unsigned below(unsigned limit) { return std::uniform_int_distribution<unsigned>(0, limit - 1)(random); }

    void fill(const std::string& folder, int depth)
    {
        const unsigned count = below(depth == 0 ? 12 : 7);
        for (unsigned i = 0; i < count && made < 80; ++i) {
            ++made;
            const std::string number = std::to_string(below(1000));
            if (below(1000) < badPerThousand)
                addBad(folder, depth);
            else if (below(5) < 2 && depth < 6)
                addFolder(folder + "/" + std::array{"d", "Film.app", ".hidden", "e"}[below(4)] + number, depth);
            else
                addFile(folder + "/" + std::array{"x", ".y", "z"}[below(3)] + number +
                        std::array{".mov", ".txt"}[below(2)]);
        }
    }
    void addBad(const std::string& folder, int depth)
    {
        if (!failsByName) { // Listed but not entered, neither, or entered but not listed.
            const std::string path = folder + "/p" + std::to_string(made);
            addFolder(path, depth);
            fs::permissions(path, fs::perms(std::array{0444U, 0000U, 0111U}[below(3)]));
            return;
        }
        switch (below(3)) {
        case 0:
            return addFile(folder + "/" + unreadableVideo);
        case 1:
            return addFolder(folder + "/" + lockedFolder, depth);
        default:
            return addFolder(folder + "/" + deadFolder, depth);
        }
    }
    void addFolder(const std::string& path, int depth)
    {
        if (fs::create_directory(path))
            fill(path, depth + 1);
    }
    void addFile(const std::string& path)
    {
        if (!fs::exists(path)) {
            const int file = ::creat(path.c_str(), 0644);
            EXPECT_EQ(::ftruncate(file, below(1'000'000)), 0);
            ::close(file);
        }
    }

    std::mt19937 random;
    bool failsByName;
    unsigned badPerThousand;
    unsigned made = 0;
};

/// How walks of a tree differ from the plain walk; empty if they do not.
std::string difference(const Location& root, const Lines& expected)
{
    for (const unsigned walkers : {1U, 2U, 8U})
        if (outcomeOf(root, walkers) != expected)
            return std::to_string(walkers) + " walkers: " + testing::PrintToString(outcomeOf(root, walkers)) +
                   "\ninstead of " + testing::PrintToString(expected);
    return {};
}

TEST(WalkEquivalence, findsTheSameInTheSameOrderWithTheSameFirstFailureForAnyNumberOfThreads)
{
    int failed = 0;
    const int trees = rounds(1000, 10'000);
    for (int seed = 0; seed < trees; ++seed) {
        const TemporaryFolder tree("/dev/shm");
        const RandomTree filled(tree.location(), static_cast<unsigned>(seed), true);
        const Lines expected = plainOutcome(tree.location(), true);
        faults::arm(namedFailures);
        const std::string different = difference(tree.location(), expected);
        faults::disarm();
        ASSERT_EQ(different, "") << "tree " << seed;
        failed += !expected.empty() && expected[0] == "error" ? 1 : 0;
    }
    EXPECT_GT(failed, trees / 10);
    EXPECT_LT(failed, trees * 9 / 10);
    std::printf("%d trees, %d of them with a failure\n", trees, failed);
}

TEST(WalkEquivalence, holdsForFoldersWithoutPermission)
{
    int failed = 0;
    const int batches = rounds(10, 100);
    for (int batch = 0; batch < batches; ++batch) {
        std::vector<std::unique_ptr<TemporaryFolder>> trees;
        for (int i = 0; i < 100; ++i) {
            trees.push_back(std::make_unique<TemporaryFolder>("/dev/shm"));
            const RandomTree filled(trees.back()->location(), static_cast<unsigned>(100 * batch + i), false);
        }
        const std::string outcome = runUnprivileged([&trees] {
            int failures = 0;
            for (const auto& tree : trees) {
                const Lines expected = plainOutcome(tree->location(), false);
                const std::string different = difference(tree->location(), expected);
                if (!different.empty())
                    return different;
                failures += !expected.empty() && expected[0] == "error" ? 1 : 0;
            }
            return std::to_string(failures);
        });
        ASSERT_EQ(outcome.find_first_not_of("0123456789"), std::string::npos) << outcome;
        failed += std::stoi(outcome);
    }
    EXPECT_GT(failed, batches);
    std::printf("%d trees, %d of them with a failure\n", 100 * batches, failed);
}

} // namespace
} // namespace reelkeep
