#include "CopyJob.h"
#include "Files/FileError.h"
#include "Fixtures/FaultPlans.h"
#include "Fixtures/LongRuns.h"
#include "Fixtures/RealFiles.h"
#include "Fixtures/TemporaryFolder.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <linux/magic.h>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <sys/stat.h>
#include <utility>

namespace reelkeep {
namespace {

namespace fs = std::filesystem;

/// What a file system may lack, and what an earlier run may have left.
struct Situation {
    const char* name;
    std::map<std::string, int> refusals;
    std::vector<std::pair<std::string, std::string>> leftovers;
    std::size_t size = (std::size_t(1) << 20) + 5; ///< The size of the video in bytes.
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

class FaultInjection : public testing::TestWithParam<Situation> {
protected:
    FaultInjection() : memory("/dev/shm"), content(GetParam().size, '\0')
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
            const CopySummary summary = runOnRealFiles(job());
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

    /// Such a name is used only if a leftover could not be examined; no later run recognises it.
    static bool isSpareName(const std::string& name)
    {
        return std::regex_match(name, std::regex(R"(\.x\.mov\.[0-9a-f]{16}\.reelkeep-(copia|lista))"));
    }

    void expectSafe(const faults::Plan& plan, const std::string& result) const
    {
        const bool exists = LinuxFileManager().fileExists(target());
        EXPECT_TRUE(!exists || isWhole()) << "a final name with wrong content";
        EXPECT_TRUE(exists || result != "done") << "counted, but missing";
        EXPECT_TRUE(result == "done" || result.find(": ") != std::string::npos) << result;
        EXPECT_EQ(contentOf(memory / "disk/neighbour.mov"), "foreign");
        EXPECT_EQ(fs::last_write_time((memory / "card/new/x.mov").path()), modified);
        const bool isTakenOver = plan.call == "flock" && plan.errorNumber == EWOULDBLOCK; // by the holder of the lock
        // A file that cannot be compared is not removed.
        static const std::set<std::string> removal = {"", "unlinkat", "statx", "fstat", "fstatat"};
        const bool cannotRemove = plan.times > 1 && removal.count(plan.call) > 0;
        for (const std::string& name : hiddenNames())
            EXPECT_TRUE(isTakenOver || cannotRemove || isLeftoverFromBefore(name)) << "left behind: " << name;
    }
    void expectRerunCompletes() const
    {
        const bool wasThere = LinuxFileManager().fileExists(target());
        EXPECT_EQ(outcome(), wasThere ? "skipped" : "done");
        EXPECT_TRUE(isWhole());
        const auto hidden = hiddenNames();
        EXPECT_TRUE(wasThere || std::all_of(hidden.begin(), hidden.end(), isSpareName));
    }

    TemporaryFolder memory;
    std::string content;
    fs::file_time_type modified;
};

TEST_P(FaultInjection, neverHurtsAVideoWhateverFails)
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
    const std::size_t step = stride(GetParam().size > (std::size_t(4) << 20) ? 30 : 1);
    for (std::size_t number = 0; number < plans.size(); number += step) {
        faults::Plan& plan = plans[number];
        if ((plan.call == "fstatat" || plan.call == "statx") && plan.errorNumber == ENOENT)
            continue; // not a failure but a wrong answer
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
    EXPECT_GT(injected, plans.size() / step / 2);
    RecordProperty("injectedFaults", std::to_string(injected));
    std::printf("%zu calls, %zu injected faults, %zu of them with a complete copy nevertheless\n", calls.size(),
                injected, survived);
}

INSTANTIATE_TEST_SUITE_P(Situations, FaultInjection, testing::ValuesIn(situations),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(FaultInjectionReadAhead, neverFails)
{
    const TemporaryFolder memory("/dev/shm");
    const Location video = memory.file("x.mov", std::string(300'000, 'x'));
    faults::arm({});
    LinuxFileManager().beginCopying({})->readAhead(video);
    const auto calls = faults::disarm();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "posix_fadvise"), 3); // portions of 128 KB
    auto plans = plansFor(calls);
    const auto deaths = deathsDuring(calls);
    plans.insert(plans.end(), deaths.begin(), deaths.end());
    for (const faults::Plan& plan : plans) {
        faults::arm(plan);
        EXPECT_NO_THROW(LinuxFileManager().beginCopying({})->readAhead(video)) << describe(plan);
        faults::disarm();
    }
    LinuxFileManager().beginCopying({})->readAhead(memory / "missing.mov");
    LinuxFileManager().beginCopying({})->readAhead(memory.folder("folder.mov"));
}

/// There may be no FAT32 driver here, so a disk in memory claims to be FAT32.
TEST(FaultInjectionFat32, refusesAtOnceAFileOfFourGigabytes)
{
    const TemporaryFolder memory("/dev/shm");
    const Location source = memory.file("card/x.mov", "");
    const Location target = memory.folder("disk").appending("x.mov");
    constexpr std::uintmax_t fourGigabytes = std::uintmax_t(1) << 32U;
    const auto failureOf = [&](std::uintmax_t size) -> std::string {
        fs::resize_file(source.path(), size);
        faults::arm({.refusals = {{"write", ENOSPC}}, .fileSystemType = MSDOS_SUPER_MAGIC});
        try {
            copyFile(source, target);
            return "none";
        } catch (const FileError& error) {
            return error.what();
        }
    };
    EXPECT_EQ(failureOf(fourGigabytes), target.path() + ": el archivo es demasiado grande para este disco.");
    const auto calls = faults::disarm();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "write"), 0);
    EXPECT_EQ(failureOf(fourGigabytes - 1), target.path() + ": no queda espacio en el disco."); // only when writing
    faults::disarm();
    EXPECT_TRUE(everythingBelow(memory / "disk").empty());
}

} // namespace
} // namespace reelkeep
