#include "Files/Stopped.h"
#include "Fixtures/FaultyCopy.h"
#include "Fixtures/RealFiles.h"
#include "Fixtures/TemporaryFolder.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <linux/magic.h>
#include <map>
#include <stop_token>
#include <string>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <vector>

namespace reelkeep {
namespace {

/// In memory, unless that is too small for a large video and its copy, as in containers; then TMPDIR.
std::string roomyFolder()
{
    std::error_code failure;
    const auto space = std::filesystem::space("/dev/shm", failure);
    return !failure && space.available >= (200U << 20U) ? "/dev/shm" : "";
}

/// The data of one video on its way to a disk.
class Writing : public testing::Test {
protected:
    Writing() { memory.folder("disk"); }

    void makeVideo(std::size_t mebibytes)
    {
        content.assign(mebibytes << 20U, 'x');
        for (std::size_t i = 0; i < content.size(); i += 1000)
            content[i] = static_cast<char>(i / 1000);
        memory.file("card/x.mov", content);
    }
    FaultyCopy copy(const faults::Plan& plan) const
    {
        std::filesystem::remove(target().path());
        return copyWith(plan, video(), target());
    }
    bool isWhole() const { return contentOf(target()) == content; }
    Location video() const { return memory / "card/x.mov"; }
    Location target() const { return memory / "disk/x.mov"; }

    TemporaryFolder memory{roomyFolder()};
    std::string content;
};

/// The page cache must not collect minutes of unwritten data of a large video. The size of a portion depends on the
/// speed, so only its bounds are known.
TEST_F(Writing, waitsForEachPortionBeforeWritingTheNextButOne)
{
    makeVideo(80);
    constexpr std::size_t most = 256 << 10; // bytes of one write, so that the number of writes gives the size
    constexpr std::size_t chunk = (4 << 20) / most;
    const auto expectPortions = [&](long fileSystemType, const std::string& sync, std::size_t largest) {
        const auto calls =
            copy({.refusals = {{"fcntl", EINVAL}}, .fileSystemType = fileSystemType, .most = most}).calls;
        std::vector<std::size_t> syncs; // for each portion, in a row
        std::size_t writes = 0;
        for (const std::string& call : calls) {
            if (call == "write" && writes++ == 0)
                syncs.push_back(0);
            if (call == sync) {
                EXPECT_LE(writes, largest / most + chunk) << "in portion " << syncs.size();
                ++syncs.back();
                writes = 0;
            }
        }
        EXPECT_LE(writes, largest / most + chunk) << "at the end";
        return syncs;
    };
    std::vector<std::size_t> portions = expectPortions(0, "sync_file_range", 8 << 20);
    ASSERT_GE(portions.size(), 80U / 12);
    EXPECT_EQ(portions.front(), 1U) << "its write-out is started";
    portions.pop_back(); // the final sync writes it
    for (std::size_t i = 1; i < portions.size(); ++i)
        EXPECT_EQ(portions[i], 2U) << "its write-out is started, and the previous one waited for";

    EXPECT_GE(expectPortions(FUSE_SUPER_MAGIC, "fdatasync", 32 << 20).size(), 80U / 36);
}

/// A disk that syncs at once gets the largest portions; the first ones are smaller.
TEST_F(Writing, syncsAFuseDiskOnceForEachPortion)
{
    makeVideo(72);
    const auto calls = copy({.refusals = {{"fdatasync", EINVAL}}, .fileSystemType = FUSE_SUPER_MAGIC}).calls;
    EXPECT_LE(std::count(calls.begin(), calls.end(), "fdatasync"), 6);
    EXPECT_GE(std::count(calls.begin(), calls.end(), "fdatasync"), 3);
}

/// Such disks get the final name of a file only once it is closed.
TEST_F(Writing, syncsAFuseDiskAsAWholeIfItCannotSyncTheFolderOfAClosedFile)
{
    makeVideo(1);
    faults::Plan plan = {.refusals = {{"renameat2", EINVAL}}, .fileSystemType = FUSE_SUPER_MAGIC};
    const auto calls = copy(plan).calls;
    plan.call = "fsync";
    plan.occurrence = static_cast<std::size_t>(std::count(calls.begin(), calls.end(), "fsync"));
    plan.errorNumber = EINVAL;
    const FaultyCopy made = copy(plan);
    EXPECT_EQ(made.failure, "");
    EXPECT_EQ(std::count(made.calls.begin(), made.calls.end(), "syncfs"), 1);
    EXPECT_TRUE(isWhole());
}

TEST_F(Writing, failsIfAPortionDoesNotReachTheDisk)
{
    makeVideo(17);
    const auto failureOf = [&](int errorNumber) {
        return copy({.call = "sync_file_range",
                     .occurrence = 2,
                     .errorNumber = errorNumber,
                     .refusals = {{"fcntl", EINVAL}}})
            .errorNumber;
    };
    for (const int errorNumber : {EIO, ENOSPC, EDQUOT})
        EXPECT_EQ(failureOf(errorNumber), errorNumber);
    for (const int unknown : {ESPIPE, EINVAL, ENOSYS})
        EXPECT_EQ(failureOf(unknown), 0);
}

TEST_F(Writing, distinguishesADiskThatIsGoneFromADamagedOne)
{
    makeVideo(1);
    const auto failureOn = [&](const char* call, dev_t device) {
        return copy({.call = call, .occurrence = 1, .errorNumber = EIO, .device = device}).failure;
    };
    const dev_t unplugged = makedev(8, 1'000'000);
    const std::string damaged = "; comprueba que ";
    EXPECT_EQ(failureOn("write", unplugged), target().path() + ": el disco se ha desconectado.");
    EXPECT_EQ(failureOn("renameat2", unplugged), target().path() + ": el disco se ha desconectado.");
    EXPECT_EQ(failureOn("pread", unplugged), video().path() + ": el disco se ha desconectado.");
    EXPECT_NE(failureOn("write", 0).find(damaged), std::string::npos);
    EXPECT_NE(failureOn("pread", 0).find(damaged), std::string::npos);
}

/// Some disks allow any hidden name, but not the names of devices of other systems.
TEST_F(Writing, reportsAFinalNameThatTheDiskDoesNotAllow)
{
    makeVideo(1);
    for (const int errorNumber : {ENOENT, EINVAL, EILSEQ}) {
        const FaultyCopy made = copy({.call = "mknodat",
                                      .occurrence = 1,
                                      .errorNumber = errorNumber,
                                      .refusals = {{"renameat2", EINVAL}, {"linkat", EINVAL}}});
        EXPECT_EQ(made.failure, target().path() + ": este disco no admite ese nombre.") << errorNumber;
    }
}

TEST_F(Writing, continuesThroughThePageCacheIfTheDiskRefusesDirectWrites)
{
    makeVideo(9);
    for (const std::size_t refused : {1U, 2U}) {
        const FaultyCopy made = copy({.call = "write", .occurrence = refused, .errorNumber = EINVAL});
        EXPECT_EQ(made.failure, "") << refused;
        EXPECT_TRUE(isWhole()) << refused;
    }
}

/// Not later: a video that has its name stays.
TEST_F(Writing, canBeStoppedRightBeforeTheVideoGetsItsName)
{
    makeVideo(1);
    for (const bool isPublished : {false, true}) {
        std::stop_source end;
        std::filesystem::remove(target().path());
        faults::arm(
            {.call = isPublished ? "renameat2" : "fsync", .occurrence = 1, .deed = [&] { end.request_stop(); }});
        bool isStopped = false;
        try {
            copyFile(video(), target(), end.get_token());
        } catch (const Stopped&) {
            isStopped = true;
        }
        faults::disarm();
        EXPECT_EQ(isStopped, !isPublished);
        EXPECT_EQ(everythingBelow(memory / "disk").size(), isPublished ? 1U : 0U);
    }
}

/// After a stop during a read nothing is written, after one during a write nothing is read, and nothing is synced.
TEST_F(Writing, isStoppedBeforeTheNextReadOrWrite)
{
    makeVideo(9);
    const auto stopped = [&](const std::string& call, std::size_t occurrence) {
        std::stop_source end;
        std::filesystem::remove(target().path());
        faults::arm({.call = call, .occurrence = occurrence, .deed = [&] { end.request_stop(); }});
        bool isStopped = false;
        try {
            copyFile(video(), target(), end.get_token());
        } catch (const Stopped&) {
            isStopped = true;
        }
        const auto calls = faults::disarm();
        EXPECT_EQ(isStopped, faults::struck());
        EXPECT_EQ(everythingBelow(memory / "disk").size(), isStopped ? 0U : 1U);
        auto moment = calls.begin();
        for (std::size_t count = 0; moment != calls.end() && (*moment != call || ++count < occurrence);)
            ++moment;
        return std::vector<std::string>(moment, calls.end());
    };
    for (const std::string call : {"pread", "write"}) {
        std::size_t moments = 0;
        for (auto after = stopped(call, 1); !after.empty(); after = stopped(call, ++moments + 1)) {
            const std::string opposite = call == "pread" ? "write" : "pread";
            for (const std::string& late : {opposite, std::string("fsync")})
                EXPECT_EQ(std::count(after.begin(), after.end(), late), 0) << late << " after " << call << moments + 1;
        }
        EXPECT_GE(moments, 3U) << call; // one for each chunk
    }
}

/// A source that was marked meanwhile is read a second time.
TEST_F(Writing, isStoppedWhileTheSourceIsReadAgain)
{
    makeVideo(17);
    const Location hidden = memory / "disk/.x.mov.reelkeep-copia";
    std::stop_source end;
    std::size_t readAfterwards = 0;
    faults::arm({.call = "pread", .occurrence = 1, .times = faults::forEver, .deed = [&] {
                     readAfterwards += end.stop_requested() ? 1 : 0;
                     std::filesystem::permissions(video().path(), std::filesystem::perms(0640));
                     if (std::filesystem::file_size(hidden.path()) == content.size())
                         end.request_stop();
                 }});
    EXPECT_THROW(copyFile(video(), target(), end.get_token()), Stopped);
    faults::disarm();
    EXPECT_EQ(readAfterwards, 0U);
    EXPECT_TRUE(everythingBelow(memory / "disk").empty());
}

/// A user who may not read the video on the card must not be able to read the growing copy.
TEST_F(Writing, isReadableByItsOwnerOnlyUntilItIsWhole)
{
    makeVideo(1);
    const mode_t before = ::umask(0);
    for (const std::string name : {"", "leftover that cannot be taken over"}) {
        mode_t grown = 0;
        if (!name.empty())
            memory.folder("disk/.x.mov.reelkeep-copia");
        const FaultyCopy made =
            copy({.call = "write", .occurrence = 1, .deed = [&] {
                      for (const auto& entry : std::filesystem::directory_iterator((memory / "disk").path()))
                          if (entry.is_regular_file())
                              grown = static_cast<mode_t>(entry.status().permissions());
                  }});
        EXPECT_EQ(made.failure, "") << name;
        EXPECT_EQ(grown, 0600U) << name;
    }
    ::umask(before);
}

/// Many disks reserve space for the administrator, which a copy by another user cannot fill.
TEST_F(Writing, isRefusedIfOnlyReservedSpaceIsLeft)
{
    makeVideo(1);
    const FaultyCopy refused = copy({.freeBlocks = 1'000'000, .freeToAll = 255});
    EXPECT_EQ(refused.failure, target().path() + ": no queda espacio en el disco.");
    EXPECT_EQ(std::count(refused.calls.begin(), refused.calls.end(), "write"), 0);
    EXPECT_EQ(copy({.freeBlocks = 1'000'000, .freeToAll = 256}).failure, "");
}

/// As happen on file systems in user space and on disks that are nearly full.
TEST_F(Writing, continuesAfterShortReadsAndWrites)
{
    makeVideo(9);
    for (const std::size_t most : {std::size_t(65'537), std::size_t(1'500'000)}) {
        for (const auto& refusals : {std::map<std::string, int>{}, {{"fcntl", EINVAL}}}) {
            EXPECT_EQ(copy({.refusals = refusals, .most = most}).failure, "");
            EXPECT_TRUE(isWhole()) << most << ", " << refusals.size();
        }
    }
}

} // namespace
} // namespace reelkeep
