#include "Files/FileDescriptor.h"
#include "Files/LinuxFileManager.h"
#include "Fixtures/CopyRuns.h"
#include "Fixtures/LongRuns.h"
#include "Fixtures/MountedDisk.h"
#include "Fixtures/Processes.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace reelkeep {
namespace {

using Clock = std::chrono::steady_clock;

/// The disk that two runs write to, and whether it supports locks.
struct Place {
    const char* name;
    const char* disk; ///< "here", or a file system to be mounted.
    int lockError;    ///< 0 if locks work.
};

void PrintTo(const Place& place, std::ostream* stream)
{
    *stream << place.name;
}

class TwoRuns : public testing::TestWithParam<Place> {
protected:
    void SetUp() override
    {
        if (std::string(GetParam().disk) == "here")
            return;
        if (!MountedDisk::isPossible())
            GTEST_SKIP() << "SKIPPED: mounting file systems needs root, FUSE and loop devices";
        disk = std::make_unique<MountedDisk>(GetParam().disk);
    }
    TwoRuns()
    {
        card.file("1.mov", contentOfLength(std::size_t(1) << 20U, 1));
        card.file("2.mov", contentOfLength((std::size_t(9) << 20U) + 5, 2));
        card.file("3.mov", contentOfLength(5000, 3));
    }
    Location target() const { return (disk ? disk->location() : folder.location()).appending("target"); }

    pid_t startRun(const Location& log) const
    {
        std::vector<std::string> command = {COPY_PROBE, card.location().path(), target().path()};
        if (GetParam().lockError != 0) {
            const std::string error = "REELKEEP_FLOCK_ERROR=" + std::to_string(GetParam().lockError);
            // The last part: otherwise a sanitizer's runtime insists on being loaded first.
            command.insert(command.begin(), {"env", std::string("LD_PRELOAD=").append(NO_LOCKS), error,
                                             "ASAN_OPTIONS=verify_asan_link_order=0"});
        }
        const FileDescriptor output(::open(log.path().c_str(), O_CREAT | O_TRUNC | O_WRONLY | O_CLOEXEC, 0600));
        return start(command, output.get());
    }
    /// A run that was not killed has copied everything, or reports that the other one was first.
    static void expectUnderstandableEnd(int status, const Location& log)
    {
        const std::string output = contentOf(log);
        const auto failure = output.find("failed ");
        const std::string text = failure == std::string::npos ? "" : output.substr(failure);
        // The last text: two runs without locks may replace the same reservation at the same moment.
        const char* const texts[] = {": otra ventana lo esta copiando",
                                     ": ha aparecido algo con ese nombre durante la copia.",
                                     ": otro programa lo ha cambiado durante la copia."};
        const bool isOther = std::any_of(std::begin(texts), std::end(texts),
                                         [&](const char* other) { return text.find(other) != std::string::npos; });
        EXPECT_TRUE(status == 0 || isOther) << text;
    }
    void expectNoHarm() const
    {
        for (const std::string& path : everythingBelow(target())) {
            const Location found = target().appending(path);
            const bool isReservation = !LinuxFileManager().fileExists(found);
            const bool isVideo = path.front() != '.' && !isReservation;
            EXPECT_TRUE(!isVideo || contentOf(target().appending(path)) == contentOf(card / path)) << path;
        }
    }

    TemporaryFolder card{"/dev/shm"};
    TemporaryFolder folder;
    std::unique_ptr<MountedDisk> disk;
};

TEST_P(TwoRuns, leaveOnlyWholeVideosEvenIfOneIsKilledAndARerunCompletes)
{
    const Location logs[] = {folder / "log1", folder / "log2"};
    std::mt19937 random(20261122);
    long wholeTime = 60'000; // microseconds; follows the speed of the machine
    int killed = 0;
    int refused = 0;
    const int count = rounds(12, 500);
    for (int round = 0; round < count && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        std::filesystem::remove_all(target().path());
        std::filesystem::create_directory(target().path());
        const auto before = Clock::now();
        const pid_t runs[] = {startRun(logs[0]), startRun(logs[1])};
        const bool kills = round % 2 == 0;
        if (kills) {
            // The kill comes at a random moment.
            std::this_thread::sleep_for(
                std::chrono::microseconds(std::uniform_int_distribution<long>(0, wholeTime)(random)));
            ::kill(runs[0], SIGKILL);
        }
        const int ends[] = {finish(runs[0]), finish(runs[1])};
        if (!kills)
            wholeTime = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - before).count();
        killed += WIFSIGNALED(ends[0]) ? 1 : 0;
        refused += !kills && (ends[0] != 0 || ends[1] != 0) ? 1 : 0;
        if (!WIFSIGNALED(ends[0]))
            expectUnderstandableEnd(ends[0], logs[0]);
        expectUnderstandableEnd(ends[1], logs[1]);
        expectNoHarm();
        EXPECT_EQ(failureOfCopy(card.location(), target()), "none");
        EXPECT_TRUE(missing(card.location(), target()).empty());
        expectNoHarm();
    }
    std::printf("%d rounds, %d killed in mid-run, in %d of two living runs one ended early\n", count, killed, refused);
    EXPECT_GT(killed, 0);
    EXPECT_GT(refused, 0);
}

INSTANTIATE_TEST_SUITE_P(On, TwoRuns,
                         testing::Values(Place{"locks", "here", 0}, Place{"noLockService", "here", ENOLCK},
                                         Place{"unsupportedLocks", "here", EOPNOTSUPP},
                                         Place{"invalidLocks", "here", EINVAL}, Place{"ntfs", "ntfs", 0},
                                         Place{"exfat", "exfat", 0}, Place{"exfatWithoutLocks", "exfat", ENOLCK}),
                         [](const auto& tested) { return std::string(tested.param.name); });

} // namespace
} // namespace reelkeep
