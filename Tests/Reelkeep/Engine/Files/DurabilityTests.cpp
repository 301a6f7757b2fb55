#include "Fixtures/CopyRuns.h"
#include "Fixtures/Processes.h"

#include <cstddef>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <map>
#include <ostream>
#include <regex>
#include <sstream>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace reelkeep {
namespace {

/// The calls of a trace, one a line. Where another thread comes in between, the trace tells a call in two lines.
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

/// What a copy did to the disk, as one word per system call that matters, in order. What is done to a folder's entries
/// lasts only once that very folder is synced, so syncs name theirs.
std::string essenceOf(const std::string& trace)
{
    static const std::pair<std::regex, const char*> calls[] = {
        {std::regex("openat\\(.*reelkeep-copia\", O_RDWR\\|O_CREAT\\|O_EXCL.* = [0-9]+"), "create"},
        {std::regex("fsync\\([0-9]+<[^>]*reelkeep-copia>\\) += 0"), "sync-file"},
        {std::regex("renameat2\\(.*reelkeep-copia\".*RENAME_NOREPLACE\\) = 0"), "publish"},
        {std::regex("\\blinkat\\(.*reelkeep-copia\".* = 0"), "link"},
        {std::regex("\\bunlinkat\\(.*reelkeep-copia\".* = 0"), "unlink"},
        {std::regex("renameat\\(.*reelkeep-copia\".*reelkeep-lista\"\\) = 0"), "seal"},
        {std::regex("mknodat\\(.*S_IFREG.* = 0"), "reserve"},
        {std::regex("renameat\\([^\"]*\"[^\"]*reelkeep-lista\".*\\) = 0"), "replace"},
        {std::regex("fsync\\([0-9]+<[^>]*/(disk[^>.]*)>\\) += 0"), "sync "},
        {std::regex("mkdirat\\(.*, \"([^\"]*)\".* = 0"), "make "},
        {std::regex("write\\([0-9]+<[^>]*reelkeep-copia>"), "write"},
        {std::regex("write\\(1.*report"), "report"},
    };
    std::string essence;
    std::string last;
    std::istringstream lines(wholeCalls(trace));
    for (std::string line; std::getline(lines, line);)
        for (const auto& [call, word] : calls) {
            std::smatch found;
            if (!std::regex_search(line, found, call))
                continue;
            const std::string done = word + (found.size() > 1 ? found[1].str() : "");
            if (done != "write" || last != "write")
                essence += done + "; ";
            last = done;
        }
    return essence;
}

/// What the disk does not know decides by which way a copy gets its name.
struct Way {
    const char* name;
    std::vector<std::string> refusals; ///< In the words of the tracer.
    const char* naming;                ///< What gives the name, before the last sync.
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
    folder.file("card/a/b/1.mov", contentOfLength(3U << 20U, 1));
    folder.file("card/a/b/2.mov", contentOfLength(10, 2));
    folder.file("card/a/b/3.mov", contentOfLength((9U << 20U) + 5, 3));
    folder.folder("disk");
    const Location trace = folder / "trace";
    std::vector<std::string> command = {"strace",
                                        "-y",
                                        "-f",
                                        "-o",
                                        trace.path(),
                                        "-E",
                                        "ASAN_OPTIONS=detect_leaks=0"}; // which cannot be told while traced
    for (const std::string& refusal : GetParam().refusals)
        command.insert(command.end(), {"-e", "inject=" + refusal});
    command.insert(command.end(), {COPY_PROBE, (folder / "card").path(), (folder / "disk").path()});
    ASSERT_TRUE(run(command));
    const std::string copy =
        std::string("create; write; sync-file; ") + GetParam().naming + "; sync disk/a/b; report; ";
    EXPECT_EQ(essenceOf(contentOf(trace)), "report; make a; sync disk; make b; sync disk/a; " + copy + copy + copy);
    for (const char* name : {"1.mov", "2.mov", "3.mov"})
        EXPECT_TRUE(contentOf(folder / ("disk/a/b/" + std::string(name))) ==
                    contentOf(folder / ("card/a/b/" + std::string(name))));
}

INSTANTIATE_TEST_SUITE_P(Ways, Durability,
                         testing::Values(Way{"byRename", {}, "publish"},
                                         Way{"byLink", {"renameat2:error=EINVAL"}, "link; unlink"},
                                         Way{"overAReservation",
                                             {"renameat2:error=EINVAL", "linkat:error=EPERM"},
                                             "seal; sync disk/a/b; reserve; replace"}),
                         [](const auto& tested) { return std::string(tested.param.name); });

} // namespace
} // namespace reelkeep
