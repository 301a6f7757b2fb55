#include "Files/FileError.h"
#include "Files/LinuxFileManager.h"
#include "Fixtures/CopyRuns.h"
#include "Fixtures/FaultDisk.h"
#include "Fixtures/LongRuns.h"
#include "Fixtures/MountedDisk.h"
#include "Fixtures/Processes.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace reelkeep {
namespace {

namespace fs = std::filesystem;

/// One entry of a fault disk's log.
struct Logged {
    FaultDiskLogEntry entry;
    std::uint64_t data; ///< The position of its bytes in the log.
    std::uint64_t end;  ///< The position after it.
};

/// The power fails while a run copies: the disk has everything written before the last flush, and any part of the
/// writes since then.
class PowerCut : public testing::TestWithParam<const char*> {
protected:
    static constexpr int runs = 6;

    PowerCut() : random(20240701)
    {
        for (int run = 0; run < runs; ++run) {
            for (int number = 0; number < 7; ++number)
                card.file(folderOf(run) + "/DCIM/" + std::to_string(number) + ".mov",
                          contentOfLength(1000 + std::size_t(number) * 37'000, unsigned(10 * run + number)));
            if (run % 3 == 1)
                card.file(folderOf(run) + "/large.mov", contentOfLength((9U << 20U) + 1234, unsigned(run)));
        }
    }
    void SetUp() override
    {
        if (!FaultDisk::isPossible())
            GTEST_SKIP() << "SKIPPED: a disk whose writes are logged needs root, FUSE and loop devices";
    }

    static std::string folderOf(int run) { return "run" + std::to_string(run); }

    /// Copies one folder after another to a disk on which another program has put a file before.
    void copyAll()
    {
        FaultDisk below(std::string(GetParam()) == "xfs" ? 320 : 160, FaultDisk::Log::writes);
        MountedDisk disk(GetParam(), below);
        std::ofstream(disk.location().appending("foreign.mov").path()) << "foreign";
        disk.takeOut();
        fs::copy_file(below.image().path(), current().path());
        const std::uint64_t beginning = below.control().logged;
        disk.putIn();
        for (int run = 0; run < runs; ++run) {
            copyMissing(card / folderOf(run), disk.location().appending(folderOf(run)));
            counted.push_back(below.control().logged - beginning);
        }
        log = contentOf(below.log()).substr(beginning);
        for (std::uint64_t at = 0; at < counted.back();) {
            Logged next = {};
            std::memcpy(&next.entry, &log[at], sizeof next.entry);
            next.data = at + sizeof next.entry;
            at = next.end = next.data + next.entry.length;
            entries.push_back(next);
        }
    }

    Location current() const { return memory / "current"; }
    bool isFlush(const Logged& logged) const { return logged.entry.offset == FaultDiskLogEntry::flush; }
    void apply(std::fstream& image, const Logged& logged, std::uint64_t length) const
    {
        image.seekp(static_cast<std::streamoff>(logged.entry.offset));
        image.write(&log[logged.data], static_cast<std::streamsize>(length));
    }

    /// The numbers of the last entries before each run reported its copies.
    std::vector<std::size_t> endsOfRuns() const
    {
        std::vector<std::size_t> ends;
        for (std::size_t number = 0; number < entries.size(); ++number)
            if (std::find(counted.begin(), counted.end(), entries[number].end) != counted.end())
                ends.push_back(number);
        return ends;
    }

    /// An image of the disk if the power fails right after that entry. Must be called with rising numbers.
    Location imageCutAfter(std::size_t last)
    {
        std::size_t flush = last;
        while (flush > applied && !isFlush(entries[flush]))
            --flush;
        std::fstream image(current().path(), std::ios::in | std::ios::out | std::ios::binary);
        for (; applied < flush; ++applied)
            if (!isFlush(entries[applied]))
                apply(image, entries[applied], entries[applied].entry.length);
        image.close();
        std::vector<std::size_t> unsure;
        for (std::size_t number = applied; number <= last; ++number)
            if (!isFlush(entries[number]))
                unsure.push_back(number);
        std::shuffle(unsure.begin(), unsure.end(), random);
        const Location cut = memory / "cut";
        fs::copy_file(current().path(), cut.path(), fs::copy_options::overwrite_existing);
        image.open(cut.path(), std::ios::in | std::ios::out | std::ios::binary);
        constexpr std::uint64_t block = 4096;
        for (const std::size_t number : unsure) {
            const std::uint64_t whole = entries[number].entry.length;
            const unsigned fate = std::uniform_int_distribution<unsigned>(0, 3)(random);
            const std::uint64_t blocks = std::uniform_int_distribution<std::uint64_t>(0, whole / block)(random);
            apply(image, entries[number], fate < 2 ? whole : fate == 2 ? blocks * block : 0);
        }
        return cut;
    }

    /// Counts lost videos and names with anything but a complete video, and fails unless the file system may cause
    /// them.
    void expectNoHarm(const Location& disk, std::uint64_t moment)
    {
        EXPECT_EQ(contentOf(disk.appending("foreign.mov")), "foreign");
        for (int run = 0; run < runs; ++run) {
            const bool isCounted = counted[static_cast<std::size_t>(run)] <= moment;
            for (const std::string& path : everythingBelow(card / folderOf(run))) {
                const Location video = card / (folderOf(run) + "/" + path);
                const Location copy = disk.appending(folderOf(run)).appending(path);
                if (!fs::is_regular_file(video.path()))
                    continue;
                const bool isThere = LinuxFileManager().fileExists(copy);
                const bool isWhole = isThere && contentOf(copy) == contentOf(video);
                lost += isCounted && !isThere ? 1 : 0;
                partial += isThere && !isWhole ? 1 : 0;
                EXPECT_TRUE(mayLose() || isThere || !isCounted) << copy.path();
                EXPECT_TRUE(mayLose() || isWhole || !isThere) << copy.path();
            }
        }
    }
    void expectRerunCompletes(const Location& disk)
    {
        bool isDamaged = false;
        for (int run = 0; run < runs; ++run) {
            const Location target = disk.appending(folderOf(run));
            const std::string failure = failureOfCopy(card / folderOf(run), target);
            isDamaged |= failure != "none";
            EXPECT_TRUE(!hasJournal() || failure == "none") << failure;
            EXPECT_TRUE(failure != "none" || mayLose() || missing(card / folderOf(run), target).empty());
        }
        damaged += isDamaged ? 1 : 0;
    }
    /// Without a journal, unflushed writes may leave a folder damaged beyond repair. The next run reports that.
    static bool hasJournal() { return std::string(GetParam()) != "ntfs" && std::string(GetParam()) != "exfat"; }
    /// Linux writes to NTFS without its journal, so a power cut may undo flushed data.
    static bool mayLose() { return std::string(GetParam()) == "ntfs"; }

    /// Mounts the image, after a repair if it has no journal; null if that fails.
    std::unique_ptr<MountedDisk> mounted(const Location& image) const
    {
        if (std::string(GetParam()) == "ntfs")
            run({"ntfsfix", "-d", image.path()});
        if (std::string(GetParam()) == "exfat")
            run({"fsck.exfat", "-y", image.path()});
        try {
            return std::make_unique<MountedDisk>(GetParam(), image);
        } catch (const std::runtime_error&) {
            return nullptr;
        }
    }

    TemporaryFolder card{"/dev/shm"};
    TemporaryFolder memory{"/dev/shm"};
    std::mt19937 random;
    std::string log;
    std::vector<Logged> entries;
    std::vector<std::uint64_t> counted; ///< The length of the log at the end of each run.
    std::size_t applied = 0;            ///< How many entries the current image contains.
    int lost = 0;
    int partial = 0;
    int damaged = 0; ///< The number of disks on which a rerun failed.
};

TEST_P(PowerCut, leavesNoHalfVideoAndLosesNoneThatWasCounted)
{
    ASSERT_NO_THROW(copyAll());
    ASSERT_GT(entries.size(), 50U);
    // The ends of runs are where a word that is given too early shows.
    std::vector<std::size_t> moments = endsOfRuns();
    for (int cut = 0; cut < rounds(6, 300); ++cut)
        moments.push_back(std::uniform_int_distribution<std::size_t>(0, entries.size() - 1)(random));
    std::sort(moments.begin(), moments.end());
    int unreadable = 0;
    for (const std::size_t moment : moments) {
        SCOPED_TRACE("after entry " + std::to_string(moment) + " of " + std::to_string(entries.size()));
        const auto disk = mounted(imageCutAfter(moment));
        unreadable += disk ? 0 : 1;
        try {
            if (disk) {
                expectNoHarm(disk->location(), entries[moment].end);
                expectRerunCompletes(disk->location());
            }
        } catch (const FileError& error) {
            EXPECT_FALSE(hasJournal()) << error.what();
            ++damaged;
        }
        if (HasFailure())
            break;
    }
    EXPECT_TRUE(!hasJournal() || unreadable == 0);
    std::printf("%zu cuts in %zu writes and flushes: %d counted videos lost, %d partial names, %d damaged and %d "
                "unreadable disks\n",
                moments.size(), entries.size(), lost, partial, damaged, unreadable);
}

INSTANTIATE_TEST_SUITE_P(On, PowerCut, testing::Values("ext4", "btrfs", "xfs", "exfat", "ntfs"),
                         [](const auto& tested) { return std::string(tested.param); });

} // namespace
} // namespace reelkeep
