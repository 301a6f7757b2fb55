#include "Files/FileDescriptor.h"
#include "Files/FileError.h"
#include "Fixtures/CopyRuns.h"
#include "Fixtures/LongRuns.h"
#include "Fixtures/MountedDisk.h"
#include "Fixtures/RealFiles.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <random>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace reelkeep {
namespace {

/// What another program may do to the target's name while we publish.
enum class Deed { createFile, replaceByFile, makeFolder, makeLink, remove, createInOtherCase };

const std::string foreign = "foreign";

/// Does it. Returns whether it took the name, so that what is there now must stay.
bool commit(Deed deed, const Location& target, const Location& aside)
{
    const std::string place = target.path();
    const char* path = place.c_str();
    std::string other = place;
    other.replace(other.size() - 5, 5, "X.MOV");
    switch (deed) {
    case Deed::createFile:
    case Deed::createInOtherCase: {
        const FileDescriptor file(
            ::open(deed == Deed::createFile ? path : other.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0644));
        return file && ::write(file.get(), foreign.data(), foreign.size()) == ssize_t(foreign.size());
    }
    case Deed::replaceByFile:
        return ::rename(aside.path().c_str(), path) == 0;
    case Deed::makeFolder:
        return ::mkdir(path, 0755) == 0;
    case Deed::makeLink:
        return ::symlink("nowhere", path) == 0;
    case Deed::remove:
        ::unlink(path);
        return false;
    }
    return false;
}

/// Describes the harm to the foreign entry or to the video, if there is any.
std::optional<std::string> harmAfter(Deed deed, bool isTaken, bool isCopied, const Location& target,
                                     const std::string& video)
{
    struct stat status = {};
    const bool isThere = ::lstat(target.path().c_str(), &status) == 0;
    const bool isOurs = isThere && S_ISREG(status.st_mode) && contentOf(target) == video;
    if (deed == Deed::createInOtherCase && isTaken && !isOurs) // the same entry if the disk ignores case
        return isThere && contentOf(target) != foreign ? std::optional("other case harmed") : std::nullopt;
    if (deed == Deed::createInOtherCase)
        return isOurs ? std::nullopt : std::optional("not whole beside the other case");
    if (!isTaken)
        return isOurs || (!isThere && deed == Deed::remove) ? std::nullopt : std::optional("not whole");
    switch (deed) {
    case Deed::createFile:
    case Deed::replaceByFile:
        if (isThere && S_ISREG(status.st_mode) && contentOf(target) == foreign)
            return isCopied && deed == Deed::createFile ? std::optional("counted but foreign") : std::nullopt;
        return "foreign file harmed";
    case Deed::makeFolder:
        return isThere && S_ISDIR(status.st_mode) && !isCopied ? std::nullopt : std::optional("folder harmed");
    default:
        return isThere && S_ISLNK(status.st_mode) && !isCopied ? std::nullopt : std::optional("link harmed");
    }
}

struct Ground {
    const char* name;
    int fewRounds;
    int manyRounds;
    /// False if the disk supports neither links nor a rename that refuses to replace. Then ours may replace a file that
    /// another program renames onto our empty reservation at that very moment. No system call closes this gap.
    bool protectsFromRenames;
};

void PrintTo(const Ground& ground, std::ostream* stream)
{
    *stream << ground.name;
}

class RaceTest : public testing::TestWithParam<Ground> {
protected:
    void SetUp() override
    {
        if (std::string(GetParam().name) == "memory") {
            folder = std::make_unique<TemporaryFolder>("/dev/shm");
            return;
        }
        if (std::string(GetParam().name) == "here") {
            folder = std::make_unique<TemporaryFolder>();
            return;
        }
        if (!MountedDisk::isPossible())
            GTEST_SKIP() << "SKIPPED: mounting file systems needs root, FUSE and loop devices";
        disk = std::make_unique<MountedDisk>(GetParam().name);
    }
    Location ground() const { return disk ? disk->location() : folder->location(); }

    std::unique_ptr<TemporaryFolder> folder;
    std::unique_ptr<MountedDisk> disk;
};

TEST_P(RaceTest, neverHarmsWhatAnotherProgramPutsInPlace)
{
    const TemporaryFolder card("/dev/shm");
    const std::string video = contentOfLength(5000, 1);
    const Location source = card.file("x.mov", video);
    LinuxFileManager files;
    const int count = rounds(GetParam().fewRounds, GetParam().manyRounds);
    std::atomic<int> ready = 0;
    std::atomic<int> started = 0;
    std::atomic<int> finished = 0;
    std::atomic<long> copyTime = 20'000; // nanoseconds, of the last copies; the deed happens within that time
    std::atomic<bool> isTaken = false;
    std::atomic<bool> isOver = false;
    const auto placeOf = [&](int number) { return ground().appending(std::to_string(number) + "x.mov"); };
    const auto asideOf = [&](int number) { return ground().appending(std::to_string(number) + "aside"); };
    const auto deedOf = [](int number) { return static_cast<Deed>(number % 6); };
    std::thread other([&] {
        std::mt19937 random(7);
        for (int number = 1;; ++number) {
            ready = number;
            while (started.load() < number) { // spins, as the copy takes only microseconds
                if (isOver)
                    return;
            }
            const auto moment = std::chrono::steady_clock::now() +
                                std::chrono::nanoseconds(std::uniform_int_distribution<long>(0, copyTime)(random));
            while (std::chrono::steady_clock::now() < moment) {
            }
            isTaken = commit(deedOf(number), placeOf(number), asideOf(number));
            finished = number;
        }
    });
    int harmed = 0;
    int lost = 0;
    int copied = 0;
    int done = 0;
    // On a busy machine it can take more rounds until each of the two has been first.
    const auto isUndecided = [&] { return copied == 0 || copied == done; };
    for (int number = 1; number <= count || (number <= 50 * count && isUndecided()); number = ++done + 1) {
        const Location target = placeOf(number);
        if (deedOf(number) == Deed::replaceByFile)
            copyFile(card.file("foreign", foreign), asideOf(number));
        while (ready.load() < number)
            std::this_thread::yield();
        const auto before = std::chrono::steady_clock::now();
        started = number;
        bool isCopied = true;
        try {
            copyFile(source, target);
        } catch (const FileError&) {
            isCopied = false;
        }
        const auto taken = std::chrono::steady_clock::now() - before;
        copyTime = (copyTime * 15 + std::chrono::nanoseconds(taken).count()) / 16;
        while (finished.load() < number)
            std::this_thread::yield();
        copied += isCopied ? 1 : 0;
        auto harm = harmAfter(deedOf(number), isTaken, isCopied, target, video);
        if (harm) { // a FUSE disk caches sizes for a second, for each letter case separately: look again without that
            std::ofstream("/proc/sys/vm/drop_caches") << "2\n";
            harm = harmAfter(deedOf(number), isTaken, isCopied, target, video);
        }
        if (harm && deedOf(number) == Deed::replaceByFile && !GetParam().protectsFromRenames)
            ++lost;
        else if (harm && ++harmed <= 10)
            ADD_FAILURE() << *harm << " in round " << number << ", deed " << int(deedOf(number));
        for (const auto& entry : std::filesystem::directory_iterator(ground().path())) {
            EXPECT_EQ(entry.path().filename().string().find(".reelkeep-"), std::string::npos);
            std::filesystem::remove_all(entry.path());
        }
    }
    isOver = true;
    other.join();
    std::printf("%d rounds, %d copied, %d harmed, %d lost in the gap that remains\n", done, copied, harmed, lost);
    EXPECT_LE(lost, 2 + done / 100);
    EXPECT_GT(copied, 0);
    EXPECT_LT(copied, done);
}

INSTANTIATE_TEST_SUITE_P(On, RaceTest,
                         testing::Values(Ground{"memory", 600, 100'000, true}, Ground{"here", 300, 10'000, true},
                                         Ground{"ntfs", 300, 5'000, true}, Ground{"exfat", 300, 5'000, false}),
                         [](const auto& tested) { return std::string(tested.param.name); });

} // namespace
} // namespace reelkeep
