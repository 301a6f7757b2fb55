#include "Files/FileDescriptor.h"
#include "Files/FileError.h"
#include "Files/TemporaryNames.h"
#include "Fixtures/FaultyCopy.h"
#include "Fixtures/RealFiles.h"
#include "Fixtures/TemporaryFolder.h"
#include "Fixtures/Unprivileged.h"

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

namespace reelkeep {
namespace {

namespace fs = std::filesystem;

/// What a disk does not support decides how a copy gets its name there.
using Refusals = std::map<std::string, int>;
const std::map<std::string, Refusals> ways = {
    {"byRename", {}},
    {"byLink", {{"renameat2", EINVAL}}},
    {"overAReservation", {{"renameat2", EINVAL}, {"linkat", EPERM}}},
};

class LeftoverTest : public testing::Test {
protected:
    LeftoverTest() { memory.file("card/x.mov", "our video"); }

    Location growing() const { return memory / ("disk/" + growingName("x.mov", {})); }
    Location sealed() const { return memory / ("disk/" + sealedName("x.mov", {})); }
    Location target() const { return memory / "disk/x.mov"; }
    /// The text of the failure, or an empty one.
    std::string copy(const faults::Plan& plan = {}) const
    {
        return copyWith(plan, memory / "card/x.mov", target()).failure;
    }
    void empty() const
    {
        fs::remove_all((memory / "disk").path());
        memory.folder("disk");
    }
    std::vector<std::string> onDisk() const { return everythingBelow(memory / "disk"); }

    TemporaryFolder memory{"/dev/shm"};
};

void makeSocket(const std::string& path)
{
    const FileDescriptor endpoint(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    struct sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(endpoint.get(), reinterpret_cast<const struct sockaddr*>(&address), sizeof address), 0);
}

TEST_F(LeftoverTest, thatIsNotAFileIsLeftAloneAndTheCopyGoesOn)
{
    const std::map<std::string, std::function<void(const std::string&)>> obstacles = {
        {"folder", [](const std::string& path) { fs::create_directory(path); }},
        {"full folder", [](const std::string& path) { fs::create_directories(path + "/in"); }},
        {"link to a file", [&](const std::string& path) { fs::create_symlink(memory.file("other").path(), path); }},
        {"broken link", [](const std::string& path) { fs::create_symlink("nowhere", path); }},
        {"pipe", [](const std::string& path) { ASSERT_EQ(::mkfifo(path.c_str(), 0666), 0); }},
        {"socket", makeSocket},
        {"device", [](const std::string& path) { ::mknod(path.c_str(), S_IFCHR | 0666, makedev(1, 3)); }},
    };
    for (const auto& [way, refusals] : ways) {
        for (const auto& [kind, make] : obstacles) {
            for (const Location& place : {growing(), sealed()}) {
                SCOPED_TRACE(way + ", " + kind + " at " + place.path());
                empty();
                make(place.path());
                struct stat status = {};
                if (::lstat(place.path().c_str(), &status) != 0)
                    continue; // devices need rights that a container may not have
                const auto before = status.st_ino;
                EXPECT_EQ(copy({.refusals = refusals}), "");
                EXPECT_EQ(contentOf(target()), "our video");
                EXPECT_EQ(::lstat(place.path().c_str(), &status), 0);
                EXPECT_EQ(status.st_ino, before);
                EXPECT_EQ(onDisk().size(), kind == "full folder" ? 3U : 2U);
            }
        }
    }
    EXPECT_EQ(contentOf(memory / "other"), "x");
}

TEST_F(LeftoverTest, ofAnotherUserIsLeftAloneAndTheCopyGoesOn)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "SKIPPED: files of another user need root";
    for (const Location& place : {growing(), sealed()}) {
        empty();
        const Location theirs = memory.file("disk/" + std::string(place.lastPathComponent()), "half of theirs");
        fs::permissions(theirs.path(), fs::perms(0600));
        fs::permissions((memory / "disk").path(), fs::perms(01777));
        EXPECT_EQ(runUnprivileged([&] { return copy(); }), "");
        EXPECT_EQ(contentOf(target()), "our video");
        EXPECT_EQ(contentOf(theirs), "half of theirs");
        EXPECT_EQ(onDisk().size(), 2U);
    }
}

TEST_F(LeftoverTest, isReportedIfNoOtherNameIsFree)
{
    empty();
    fs::create_directory(growing().path());
    const auto calls = copyWith({}, memory / "card/x.mov", target()).calls;
    fs::remove(target().path());
    std::string failure;
    for (std::size_t number = 1; number <= calls.size() && failure.empty(); ++number) {
        failure = copy({.call = "openat", .occurrence = number, .times = 100, .errorNumber = EEXIST});
        if (failure.find(growing().path()) == std::string::npos)
            failure.clear();
        fs::remove(target().path());
    }
    EXPECT_EQ(failure, growing().path() + ": este archivo oculto impide la copia; quitalo.");
}

TEST_F(LeftoverTest, staysIfThereIsNoLockService)
{
    for (const auto& [way, refusals] : ways) {
        for (const int errorNumber : {ENOLCK, EOPNOTSUPP, EINVAL, ENOSYS}) {
            SCOPED_TRACE(way + " " + std::to_string(errorNumber));
            empty();
            memory.file("disk/" + std::string(growing().lastPathComponent()), "may be a living run's");
            Refusals all = refusals;
            all["flock"] = errorNumber;
            EXPECT_EQ(copy({.refusals = all}), "");
            EXPECT_EQ(contentOf(target()), "our video");
            EXPECT_EQ(contentOf(growing()), "may be a living run's");
            EXPECT_EQ(onDisk().size(), 2U) << "its own hidden file must be gone";
        }
    }
}

/// The empty file may belong to another run that is just publishing.
TEST_F(LeftoverTest, ofAReservationStaysAndIsReportedIfItCannotBeLocked)
{
    empty();
    memory.file("disk/" + std::string(sealed().lastPathComponent()), "whole");
    memory.file("disk/x.mov", "");
    EXPECT_EQ(copy({.refusals = {{"flock", ENOLCK}}}),
              sealed().path() + ": otra ventana lo esta copiando; si no es asi, quita este archivo oculto.");
    EXPECT_EQ(onDisk().size(), 2U);
}

/// Locks and attributes may not be shared between the machines that write to a network disk.
TEST_F(LeftoverTest, onASharedDiskIsRemovedOnlyIfItHasNotChangedForTenMinutes)
{
    const faults::Plan shared = {.mount = std::uint64_t(1) << 40U};
    const std::string name = "disk/" + std::string(growing().lastPathComponent());
    const auto setAge = [&](long seconds) {
        const auto time = fs::file_time_type::clock::now() - std::chrono::seconds(seconds);
        fs::last_write_time((memory / name).path(), time); // this changes its attributes now
    };
    empty();
    memory.file(name, "may be another machine's");
    EXPECT_EQ(copy(shared), "");
    EXPECT_EQ(contentOf(growing()), "may be another machine's");
    setAge(3600);
    fs::remove(target().path());
    EXPECT_EQ(copy(shared), "");
    EXPECT_EQ(contentOf(growing()), "may be another machine's") << "its attributes have just changed";

    faults::Plan later = shared;
    later.clockAhead = 601;
    fs::remove(target().path());
    EXPECT_EQ(copy(later), "");
    EXPECT_EQ(onDisk(), std::vector<std::string>{"x.mov"});

    memory.file(name, "half");
    fs::remove(target().path());
    EXPECT_EQ(copy(), "") << "at once on a disk of this machine";
    EXPECT_EQ(onDisk(), std::vector<std::string>{"x.mov"});
}

TEST_F(LeftoverTest, ofAWriteProtectedClipIsReplaced)
{
    for (const bool needsWritableFile : {false, true}) { // as network disks do for an exclusive lock
        empty();
        memory.file("disk/" + std::string(growing().lastPathComponent()), "half");
        fs::permissions(growing().path(), fs::perms(0444));
        fs::permissions((memory / "disk").path(), fs::perms(0777));
        if (::geteuid() == 0) {
            EXPECT_EQ(::chown(growing().path().c_str(), 65534, 65534), 0);
            EXPECT_EQ(::chown((memory / "disk").path().c_str(), 65534, 65534), 0);
        }
        EXPECT_EQ(runUnprivileged([&] { return copy({.locksOnlyWritable = needsWritableFile}); }), "");
        EXPECT_EQ(onDisk(), std::vector<std::string>{"x.mov"}) << needsWritableFile;
    }
}

TEST_F(LeftoverTest, thatAnotherRunHoldsEndsTheCopyOnEveryKindOfDisk)
{
    for (const auto& [way, refusals] : ways) {
        for (const Location& place : {growing(), sealed()}) {
            empty();
            memory.file("disk/" + std::string(place.lastPathComponent()), "half");
            const FileDescriptor living(::open(place.path().c_str(), O_RDWR | O_CLOEXEC));
            ASSERT_EQ(::flock(living.get(), LOCK_EX), 0);
            EXPECT_EQ(copy({.refusals = refusals}), target().path() + ": otra ventana lo esta copiando.") << way;
            EXPECT_EQ(contentOf(place), "half");
            EXPECT_EQ(onDisk().size(), 1U);
        }
    }
}

} // namespace
} // namespace reelkeep
