#include "Fixtures/CopyRuns.h"
#include "Fixtures/Processes.h"

#include <cstddef>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <unistd.h>

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

/// What a copy did to the disk, as one word per system call that matters, in order.
std::string essenceOf(const std::string& trace)
{
    static const std::pair<std::regex, const char*> calls[] = {
        {std::regex("openat\\(.*reelkeep-copia\", O_RDWR\\|O_CREAT\\|O_EXCL.* = [0-9]+"), "create"},
        {std::regex("fsync\\([0-9]+<[^>]*reelkeep-copia>\\) += 0"), "sync-file"},
        {std::regex("renameat2\\(.*reelkeep-copia\".*RENAME_NOREPLACE\\) = 0"), "publish"},
        {std::regex("fsync\\([0-9]+<[^>]*/disk[^.]*>\\) += 0"), "sync-folder"},
        {std::regex("mkdirat\\(.* = 0"), "make-folder"},
        {std::regex("write\\([0-9]+<[^>]*reelkeep-copia>"), "write"},
        {std::regex("write\\(1.*report"), "report"},
    };
    std::string essence;
    std::istringstream lines(wholeCalls(trace));
    for (std::string line; std::getline(lines, line);)
        for (const auto& [call, word] : calls)
            if (std::regex_search(line, call)) {
                const bool isRepeated = essence.size() > 6 && essence.substr(essence.size() - 6) == "write " &&
                                        std::string(word) == "write";
                essence += isRepeated ? "" : word + std::string(" ");
            }
    return essence;
}

TEST(Durability, everyVideoIsOnTheDiskBeforeItIsCounted)
{
    const TemporaryFolder folder;
    if (!run({"strace", "-o", "/dev/null", "true"}))
        GTEST_SKIP() << "SKIPPED: system calls cannot be traced here";
    folder.file("card/a/1.mov", contentOfLength(3U << 20U, 1));
    folder.file("card/a/2.mov", contentOfLength(10, 2));
    folder.file("card/a/3.mov", contentOfLength((9U << 20U) + 5, 3));
    folder.folder("disk");
    const Location trace = folder / "trace";
    ASSERT_TRUE(run({"strace", "-y", "-f", "-o", trace.path(), "-E",
                     "ASAN_OPTIONS=detect_leaks=0", // which cannot be told while traced
                     COPY_PROBE, (folder / "card").path(), (folder / "disk").path()}));
    EXPECT_EQ(essenceOf(contentOf(trace)), "report make-folder sync-folder "
                                           "create write sync-file publish sync-folder report "
                                           "create write sync-file publish sync-folder report "
                                           "create write sync-file publish sync-folder report ");
}

} // namespace
} // namespace reelkeep
