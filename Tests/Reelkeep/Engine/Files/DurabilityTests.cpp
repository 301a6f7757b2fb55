#include "Files/LinuxFileManager.h"
#include "Fixtures/CopyRuns.h"
#include "Fixtures/MountedDisk.h"
#include "Fixtures/Processes.h"

#include <algorithm>
#include <cstddef>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <ostream>
#include <regex>
#include <sstream>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace reelkeep {
namespace {

/// The calls of a trace, one per line. The trace has two lines for a call that other threads interrupt.
std::string wholeCalls(const std::string& trace)
{
    const std::string parted = " <unfinished ...>";
    const std::string continued = " resumed>";
    std::map<std::string, std::string> beginnings; // by thread
    std::string calls;
    std::istringstream lines(trace);
    for (std::string line; std::getline(lines, line);) {
        std::string& beginning = beginnings[line.substr(0, line.find(' '))];
        if (const auto end = line.find(parted); end != std::string::npos)
            beginning = line.substr(0, end);
        else if (const auto rest = line.find(continued); rest != std::string::npos)
            calls += beginning + line.substr(rest + continued.size()) + "\n";
        else
            calls += line + "\n";
    }
    return calls;
}

/// What a run did to the disk: for each system call that matters, in order, a word and the video it was done to. Syncs
/// have the name of their folder, since a change of its entries lasts only once that very folder is synced.
std::vector<std::string> essenceOf(const std::string& trace)
{
    static const std::pair<std::regex, const char*> calls[] = {
        {std::regex(R"~(openat\(.*"\.([^"]*)\.reelkeep-copia", O_RDWR\|O_CREAT\|O_EXCL.* += [0-9]+)~"), "create "},
        {std::regex(R"~(\bwrite\([0-9]+<[^>]*/\.([^>]*)\.reelkeep-copia>)~"), "write "},
        {std::regex(R"~(fsync\([0-9]+<[^>]*/\.([^>]*)\.reelkeep-copia>\) += 0)~"), "sync-file "},
        {std::regex(R"~(fadvise64\([0-9]+<[^>]*/\.([^>]*)\.reelkeep-copia>, 0, 0, POSIX_FADV_DONTNEED\))~"), "drop "},
        {std::regex(R"~(pread64\([0-9]+<[^>]*/\.([^>]*)\.reelkeep-copia>.* += [1-9])~"), "read-back "},
        {std::regex(R"~(renameat2\(.*"\.([^"]*)\.reelkeep-copia".*RENAME_NOREPLACE\) += 0)~"), "publish "},
        {std::regex(R"~(\blinkat\(.*"\.([^"]*)\.reelkeep-copia".* += 0)~"), "link "},
        {std::regex(R"~(\bunlinkat\(.*"\.([^"]*)\.reelkeep-copia".* += 0)~"), "unlink "},
        {std::regex(R"~(renameat\(.*"\.([^"]*)\.reelkeep-copia".*reelkeep-lista"\) += 0)~"), "seal "},
        {std::regex(R"~(mknodat\(.*"([^"]*)", S_IFREG.* += 0)~"), "reserve "},
        {std::regex(R"~(renameat\([^"]*"\.([^"]*)\.reelkeep-lista".*\) += 0)~"), "replace "},
        {std::regex(R"~(fsync\([0-9]+<[^>]*/(disk[^>.]*)>\) += 0)~"), "sync "},
        {std::regex(R"~(mkdirat\(.*, "([^"]*)".* += 0)~"), "make "},
        {std::regex(R"~(write\(1.*"(report [0-9]))~"), ""},
    };
    std::vector<std::string> essence;
    std::istringstream lines(wholeCalls(trace));
    for (std::string line; std::getline(lines, line);)
        for (const auto& [call, word] : calls) {
            std::smatch found;
            if (std::regex_search(line, found, call))
                essence.push_back(word + found[1].str());
        }
    return essence;
}

/// Expects all `steps`, in this order.
void expectInOrder(const std::vector<std::string>& essence, const std::vector<std::string>& steps)
{
    auto place = essence.begin();
    for (const std::string& step : steps) {
        place = std::find(place, essence.end(), step);
        ASSERT_NE(place, essence.end()) << step << " in " << testing::PrintToString(essence);
        ++place;
    }
}

/// What a disk does not support decides how a copy gets its name there.
struct Way {
    const char* name;
    std::vector<std::string> refusals; ///< Calls that fail, in the syntax of strace.
    std::vector<std::string> naming;   ///< The steps that give the name, before the last sync.
    const char* fileSystem = nullptr;  ///< Mounted for the test; null for a plain folder.
};

void PrintTo(const Way& way, std::ostream* stream)
{
    *stream << way.name;
}

class Durability : public testing::TestWithParam<Way> {};

TEST_P(Durability, everyVideoIsOnTheDiskBeforeItIsCounted)
{
    const TemporaryFolder folder;
    if (!run({"strace", "-o", "/dev/null", "true"}))
        GTEST_SKIP() << "SKIPPED: system calls cannot be traced here";
    std::optional<MountedDisk> mounted;
    if (GetParam().fileSystem && !MountedDisk::isPossible())
        GTEST_SKIP() << "SKIPPED: mounting file systems needs root, FUSE and loop devices";
    if (GetParam().fileSystem)
        mounted.emplace(GetParam().fileSystem);
    folder.file("card/a/b/1.mov", contentOfLength(3U << 20U, 1));
    folder.file("card/a/b/2.mov", contentOfLength(10, 2));
    folder.file("card/a/b/3.mov", contentOfLength((9U << 20U) + 5, 3));
    const Location disk = (mounted ? mounted->location() : folder.location()).appending("disk");
    LinuxFileManager().createDirectory(disk);
    const Location trace = folder / "trace";
    std::vector<std::string> command = {"strace",
                                        "-y",
                                        "-f",
                                        "-o",
                                        trace.path(),
                                        "-E",
                                        "ASAN_OPTIONS=detect_leaks=0"}; // leaks cannot be found while traced
    for (const std::string& refusal : GetParam().refusals)
        command.insert(command.end(), {"-e", "inject=" + refusal});
    command.insert(command.end(), {COPY_PROBE, (folder / "card").path(), disk.path()});
    ASSERT_TRUE(run(command));
    const auto essence = essenceOf(contentOf(trace));
    expectInOrder(essence, {"report 0", "make a", "sync disk", "make b", "sync disk/a", "create 1.mov", "report 1",
                            "create 2.mov", "report 2", "create 3.mov", "report 3"});
    std::vector<std::string> namings;
    for (const char* name : {"1.mov", "2.mov", "3.mov"}) {
        std::vector<std::string> steps = {"create ", "write ", "sync-file ", "drop ", "read-back "};
        steps.insert(steps.end(), GetParam().naming.begin(), GetParam().naming.end());
        for (std::string& step : steps)
            step += step.back() == ' ' ? name : "";
        namings.push_back(steps.back());
        steps.insert(steps.end(), {"sync disk/a/b", "report 3"});
        expectInOrder(essence, steps);
    }
    expectInOrder(essence, namings);
    EXPECT_EQ(essence.back(), "report 3");
    for (const char* name : {"1.mov", "2.mov", "3.mov"})
        EXPECT_TRUE(contentOf(disk.appending("a/b").appending(name)) ==
                    contentOf(folder / ("card/a/b/" + std::string(name))));
}

INSTANTIATE_TEST_SUITE_P(Ways, Durability,
                         testing::Values(Way{"byRename", {}, {"publish "}},
                                         Way{"byLink", {"renameat2:error=EINVAL"}, {"link ", "unlink "}},
                                         Way{"onNtfs", {}, {"link ", "unlink "}, "ntfs"},
                                         Way{"overAReservation",
                                             {"renameat2:error=EINVAL", "linkat:error=EPERM"},
                                             {"seal ", "sync disk/a/b", "reserve ", "replace "}}),
                         [](const auto& tested) { return std::string(tested.param.name); });

} // namespace
} // namespace reelkeep
