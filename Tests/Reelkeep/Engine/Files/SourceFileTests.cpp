#include "Files/FileDescriptor.h"
#include "Files/FileError.h"
#include "Files/Stopped.h"
#include "Fixtures/RealFiles.h"
#include "Fixtures/TemporaryFolder.h"

#include <array>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace reelkeep {
namespace {

/// Another process that holds a lease on a file, as a server of network shares does, and gives it up only when the
/// kernel asks it to, or not even then.
class LeaseHolder {
public:
    LeaseHolder(const Location& file, bool givesUp)
    {
        std::array<int, 2> ready = {};
        EXPECT_EQ(::pipe2(ready.data(), O_CLOEXEC), 0);
        process = ::fork();
        if (process == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            sigset_t asked;
            ::sigemptyset(&asked);
            ::sigaddset(&asked, SIGIO);
            ::sigprocmask(SIG_BLOCK, &asked, nullptr);
            const int held = ::open(file.path().c_str(), O_RDWR | O_CLOEXEC);
            const char isHeld = ::fcntl(held, F_SETLEASE, F_WRLCK) == 0 ? 'y' : 'n';
            if (::write(ready[1], &isHeld, 1) != 1)
                ::_exit(1);
            int signal = 0;
            ::sigwait(&asked, &signal);
            while (!givesUp)
                ::pause();
            ::fcntl(held, F_SETLEASE, F_UNLCK);
            ::_exit(0);
        }
        ::close(ready[1]);
        char isHeld = 'n';
        EXPECT_EQ(::read(ready[0], &isHeld, 1), 1);
        ::close(ready[0]);
        holds = isHeld == 'y';
    }
    LeaseHolder(const LeaseHolder&) = delete;
    LeaseHolder& operator=(const LeaseHolder&) = delete;
    ~LeaseHolder()
    {
        ::kill(process, SIGKILL);
        ::waitpid(process, nullptr, 0);
    }

    bool holds = false;

private:
    pid_t process = -1;
};

TEST(SourceFile, underALeaseIsWaitedFor)
{
    const TemporaryFolder folder;
    const Location video = folder.file("x.mov", "video");
    const LeaseHolder holder(video, true);
    if (!holder.holds)
        GTEST_SKIP() << "SKIPPED: this file system has no leases";
    copyFile(video, folder / "copy.mov");
    EXPECT_EQ(contentOf(folder / "copy.mov"), "video");
}

TEST(SourceFile, underALeaseThatIsKeptIsGivenUpOnceStopped)
{
    const TemporaryFolder folder;
    const Location video = folder.file("x.mov", "video");
    const LeaseHolder holder(video, false);
    if (!holder.holds)
        GTEST_SKIP() << "SKIPPED: this file system has no leases";
    std::stop_source stop;
    const auto before = std::chrono::steady_clock::now();
    std::jthread stopper([&] {
        std::this_thread::sleep_for(
            std::chrono::milliseconds(100)); // in the middle of the wait, or before: both must end
        stop.request_stop();
    });
    EXPECT_THROW(copyFile(video, folder / "copy.mov", stop.get_token()), Stopped);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(10));
    EXPECT_EQ(everythingBelow(folder.location()), std::vector<std::string>{"x.mov"});
}

TEST(SourceFile, behindALoopOfLinksSaysSo)
{
    const TemporaryFolder folder;
    std::filesystem::create_symlink("loop", (folder / "loop").path());
    try {
        copyFile(folder / "loop/x.mov", folder / "copy.mov");
        FAIL() << "no error";
    } catch (const FileError& error) {
        EXPECT_EQ(error.what(), (folder / "loop/x.mov").path() + ": hay enlaces que no llevan a ninguna parte.");
    }
}

} // namespace
} // namespace reelkeep
