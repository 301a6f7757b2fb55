#include "Fixtures/FaultyCopy.h"
#include "Fixtures/TemporaryFolder.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace reelkeep {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

/// What a disk does not support decides how a copy gets its name there.
struct Way {
    const char* name;
    std::map<std::string, int> refusals;
};

void PrintTo(const Way& way, std::ostream* stream)
{
    *stream << way.name;
}

/// Another program changes something at one exact moment of a copy.
class Interference : public testing::TestWithParam<Way> {
protected:
    Interference() : memory("/dev/shm") { memory.file("card/x.mov", "our video"); }

    void prepare() const
    {
        fs::remove_all((memory / "disk").path());
        memory.folder("disk");
        memory.file("elsewhere/empty", "");
        memory.file("elsewhere/written", "foreign");
        fs::create_symlink("nowhere", (memory / "elsewhere/link").path());
    }
    void clear() const { fs::remove_all((memory / "elsewhere").path()); }

    /// The system calls of a copy. `deed` runs right before the call of that number; refused calls are not counted.
    Names copy(std::size_t number, const std::function<void()>& deed)
    {
        const FaultyCopy copy = copyWith({.occurrence = number, .refusals = GetParam().refusals, .deed = deed},
                                         memory / "card/x.mov", target());
        failure = copy.failure;
        errorNumber = copy.errorNumber;
        return copy.calls;
    }
    Names undisturbedCalls()
    {
        prepare();
        const Names calls = copy(0, nullptr);
        EXPECT_EQ(failure, "");
        EXPECT_EQ(contentOf(target()), "our video");
        clear();
        return calls;
    }
    /// Only the calls that are not refused can be chosen as the moment.
    Names moments()
    {
        Names calls = undisturbedCalls();
        std::erase_if(calls, [](const std::string& call) { return GetParam().refusals.count(call) > 0; });
        return calls;
    }

    Location target() const { return memory / "disk/x.mov"; }
    static std::string contentAt(const Location& place)
    {
        return fs::is_regular_file(place.path()) ? contentOf(place) : "nothing";
    }
    ino_t identityOf(const Location& place) const
    {
        struct stat status = {};
        return ::lstat(place.path().c_str(), &status) == 0 ? status.st_ino : 0;
    }
    /// The hidden names in the disk's folder.
    std::vector<std::string> hidden() const
    {
        auto names = everythingBelow(memory / "disk");
        std::erase_if(names, [](const std::string& name) { return !name.starts_with('.'); });
        return names;
    }

    TemporaryFolder memory;
    std::string failure;
    int errorNumber = 0;
};

/// On a disk that can only replace, one moment cannot be guarded: that between the last check and the rename.
bool isUnguarded(const Names& moments, std::size_t number)
{
    return moments[number - 1] == "renameat" &&
           std::count(moments.begin(), moments.begin() + std::ptrdiff_t(number), "mknodat") > 0;
}

/// Whether this call comes right after the comparison: it gives the name or, on a disk that can only replace, is the
/// last check of the target.
bool isBetweenComparisonAndName(const Names& moments, std::size_t number)
{
    static const std::set<std::string> naming = {"renameat2", "linkat", "renameat"};
    const bool isReplacing = isUnguarded(moments, std::min(number + 1, moments.size()));
    return naming.count(moments[number - 1]) > 0 || isReplacing;
}

TEST_P(Interference, neverLosesAFileThatIsMovedToTheTarget)
{
    const Names calls = moments();
    for (std::size_t number = 1; number <= calls.size(); ++number) {
        for (const std::string kind : {"empty", "written", "link"}) {
            // An empty file over our reservation looks the same, and holds nothing to lose.
            const bool isReserved =
                std::count(calls.begin(), calls.begin() + std::ptrdiff_t(number) - 1, "mknodat") > 0;
            if (isUnguarded(calls, number) || (isReserved && kind == "empty"))
                continue;
            SCOPED_TRACE(kind + " before " + std::to_string(number) + ", " + calls[number - 1]);
            prepare();
            const ino_t foreign = identityOf(memory / ("elsewhere/" + kind));
            copy(number, [&] { fs::rename((memory / ("elsewhere/" + kind)).path(), target().path()); });
            EXPECT_TRUE(faults::struck());
            EXPECT_EQ(identityOf(target()), foreign) << failure;
            EXPECT_EQ(hidden(), Names());
            clear();
        }
    }
}

TEST_P(Interference, neverLosesWhatIsWrittenToTheTarget)
{
    const Names calls = moments();
    for (std::size_t number = 1; number <= calls.size(); ++number) {
        if (isUnguarded(calls, number))
            continue;
        SCOPED_TRACE("before " + std::to_string(number) + ", " + calls[number - 1]);
        prepare();
        copy(number, [&] { std::ofstream(target().path(), std::ios::app) << "foreign"; });
        const std::string content = contentOf(target());
        const bool isAdded = failure.empty() && content == "our videoforeign"; // to the finished copy
        EXPECT_TRUE(content == "foreign" || isAdded) << content << "; " << failure;
        EXPECT_EQ(errorNumber, isAdded ? 0 : EEXIST) << failure;
        EXPECT_EQ(hidden(), Names());
        clear();
    }
}

TEST_P(Interference, neverPublishesAFileThatWasRemovedMeanwhile)
{
    const Names calls = moments();
    for (std::size_t number = 1; number <= calls.size(); ++number) {
        SCOPED_TRACE("before " + std::to_string(number) + ", " + calls[number - 1]);
        prepare();
        copy(number, [&] { fs::remove(target().path()); });
        const bool isThere = identityOf(target()) != 0;
        EXPECT_TRUE(!isThere || contentOf(target()) == "our video") << contentOf(target());
        EXPECT_EQ(hidden(), Names()) << failure;
        clear();
    }
}

TEST_P(Interference, reportsThatItsOwnFileIsGone)
{
    const Names calls = moments();
    std::size_t told = 0;
    for (std::size_t number = 1; number <= calls.size(); ++number) {
        SCOPED_TRACE("before " + std::to_string(number) + ", " + calls[number - 1]);
        prepare();
        copy(number, [&] {
            for (const std::string& name : hidden())
                fs::remove((memory / ("disk/" + name)).path());
        });
        if (failure.empty())
            EXPECT_EQ(contentOf(target()), "our video");
        else
            EXPECT_EQ(identityOf(target()), 0U) << failure;
        told += failure == target().path() + ": ha desaparecido durante la copia." ? 1 : 0;
        EXPECT_EQ(hidden(), Names());
        clear();
    }
    EXPECT_GT(told, 0U);
}

/// Steps by name publish or remove only our own open file, whatever the hidden name refers to by then.
TEST_P(Interference, neitherPublishesNorRemovesAFileThatReplacesItsHiddenOne)
{
    const Names calls = moments();
    std::size_t noticed = 0;
    for (std::size_t number = 1; number <= calls.size(); ++number) {
        for (const std::string content : {"foreign", "their one"}) { // of another size, and of the same
            SCOPED_TRACE(content + " before " + std::to_string(number) + ", " + calls[number - 1]);
            prepare();
            Location swapped;
            copy(number, [&] {
                for (const std::string& name : hidden()) {
                    swapped = memory / ("disk/" + name);
                    fs::rename(memory.file("elsewhere/theirs", content).path(), swapped.path());
                }
            });
            const bool isTheirsThere = !swapped.path().empty() && contentAt(swapped) == content;
            if (failure.empty()) {
                EXPECT_EQ(contentAt(target()), "our video");
                EXPECT_TRUE(swapped.path().empty() || isTheirsThere || calls[number - 1] == "unlinkat");
            } else if (isBetweenComparisonAndName(calls, number)) { // no call prevents it, but it is noticed afterwards
                EXPECT_TRUE(contentAt(target()) == content || contentAt(target()) == "nothing");
                EXPECT_NE(failure.find(": otro programa lo ha cambiado durante la copia."), std::string::npos)
                    << failure;
            } else {
                ++noticed;
                EXPECT_TRUE(isTheirsThere);
                EXPECT_EQ(contentAt(target()), "nothing") << failure;
            }
            clear();
        }
    }
    EXPECT_GT(noticed, 10U);
}

/// Another program marks it, links it or changes its permissions; the video stays the same.
TEST_P(Interference, copiesASourceIfOnlyItsAttributesChange)
{
    const std::string video = (memory / "card/x.mov").path();
    const std::vector<std::function<void()>> deeds = {
        [&] { fs::permissions(video, fs::perms(0640)); },
        [&] { fs::create_hard_link(video, (memory / "card/second.mov").path()); },
    };
    for (const auto& deed : deeds) {
        const Names calls = moments();
        for (std::size_t number = 1; number <= calls.size(); ++number) {
            SCOPED_TRACE("before " + std::to_string(number) + ", " + calls[number - 1]);
            fs::permissions(video, fs::perms(0600));
            fs::remove((memory / "card/second.mov").path());
            prepare();
            copy(number, deed);
            EXPECT_EQ(failure, "");
            EXPECT_EQ(contentOf(target()), "our video");
            clear();
        }
    }
}

/// As a program does that hides its change: only the time of the last change of attributes gives it away.
TEST_P(Interference, noticesARewriteThatRestoresSizeAndTime)
{
    const Names calls = moments();
    const Location video = memory / "card/x.mov";
    std::size_t noticed = 0;
    for (std::size_t number = 1; number <= calls.size(); ++number) {
        SCOPED_TRACE("before " + std::to_string(number) + ", " + calls[number - 1]);
        memory.file("card/x.mov", "our video");
        const auto time = fs::last_write_time(video.path());
        prepare();
        copy(number, [&] {
            memory.file("card/x.mov", "their one");
            fs::last_write_time(video.path(), time);
        });
        noticed += failure == video.path() + ": ha cambiado durante la copia." ? 1 : 0;
        EXPECT_EQ(identityOf(target()) == 0, !failure.empty());
        EXPECT_EQ(hidden(), Names());
        clear();
    }
    EXPECT_GT(noticed, 2U);
    memory.file("card/x.mov", "our video");
}

TEST_P(Interference, neverPublishesASourceThatChangesMeanwhile)
{
    const Names calls = moments();
    std::size_t noticed = 0;
    for (std::size_t number = 1; number <= calls.size(); ++number) {
        SCOPED_TRACE("before " + std::to_string(number) + ", " + calls[number - 1]);
        memory.file("card/x.mov", "our video");
        prepare();
        copy(number, [&] { memory.file("card/x.mov", "their one"); });
        const std::string changed = (memory / "card/x.mov").path() + ": ha cambiado durante la copia.";
        if (!failure.empty()) {
            ++noticed;
            EXPECT_EQ(failure, changed);
            EXPECT_EQ(errorNumber, 0);
            EXPECT_EQ(identityOf(target()), 0U);
        } else {
            const std::string content = contentOf(target());
            EXPECT_TRUE(content == "our video" || content == "their one") << content;
        }
        EXPECT_EQ(hidden(), Names());
        clear();
    }
    EXPECT_GT(noticed, 5U);
    memory.file("card/x.mov", "our video");
}

INSTANTIATE_TEST_SUITE_P(Ways, Interference,
                         testing::Values(Way{"byRename", {}}, Way{"byLink", {{"renameat2", EINVAL}}},
                                         Way{"overAReservation", {{"renameat2", EINVAL}, {"linkat", EPERM}}}),
                         [](const auto& tested) { return std::string(tested.param.name); });

/// A power cut in between must not leave an empty file that no later run recognises as ours.
TEST(InterferenceReservation, isMadeOnlyOnceTheSealedNameIsOnTheDisk)
{
    const TemporaryFolder memory("/dev/shm");
    memory.folder("disk");
    const Names calls = copyWith({.refusals = {{"renameat2", EINVAL}, {"linkat", EPERM}}},
                                 memory.file("x.mov", "video"), memory / "disk/x.mov")
                            .calls;
    const auto sealed = std::find(calls.begin(), calls.end(), "renameat");
    ASSERT_GT(calls.end() - sealed, 3);
    EXPECT_EQ(Names(sealed, sealed + 3), (Names{"renameat", "fsync", "mknodat"}));
}

/// Another program that was just changing the folder at the first check has finished by the second.
TEST(InterferenceReservation, isCheckedTwiceBeforeItIsReplaced)
{
    const TemporaryFolder memory("/dev/shm");
    memory.folder("disk");
    const Names calls = copyWith({.refusals = {{"renameat2", EINVAL}, {"linkat", EPERM}}},
                                 memory.file("x.mov", "video"), memory / "disk/x.mov")
                            .calls;
    const auto reserved = std::find(calls.begin(), calls.end(), "mknodat");
    ASSERT_GT(calls.end() - reserved, 6);
    EXPECT_EQ(Names(reserved, reserved + 7),
              (Names{"mknodat", "statx", "fstat", "fstatat", "renameat2", "statx", "renameat"}));
}

/// If we may not preserve its access time, the file is opened a second time, and no less carefully.
TEST(InterferenceSourceLink, isNeverFollowed)
{
    const TemporaryFolder memory("/dev/shm");
    memory.folder("disk");
    memory.file("card/other.mov", "another video");
    const Location source = memory / "card/x.mov";
    fs::create_symlink("other.mov", source.path());
    for (std::size_t number = 1; number <= 4; ++number) {
        const faults::Plan plan = {.call = "openat", .occurrence = number, .errorNumber = EPERM};
        EXPECT_NE(copyWith(plan, source, memory / "disk/x.mov").failure, "") << number;
    }
    EXPECT_TRUE(everythingBelow(memory / "disk").empty());
}

} // namespace
} // namespace reelkeep
