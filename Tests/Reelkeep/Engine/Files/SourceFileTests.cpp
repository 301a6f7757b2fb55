#include "Files/FileDescriptor.h"
#include "Files/FileError.h"
#include "Files/Stopped.h"
#include "Fixtures/RealFiles.h"
#include "Fixtures/TemporaryFolder.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace reelkeep {
namespace {

/// Another process that holds a lease on a file, as a server of network shares does. It gives the lease up when the
/// kernel requests it, or never.
class LeaseHolder {
public:
    LeaseHolder(const Location& file, bool givesUp)
    {
        std::array<int, 2> ends = {};
        EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
        const FileDescriptor writing(ends[1]);
        reading = FileDescriptor(ends[0]);
        process = ::fork();
        if (process == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            hold(file, givesUp, writing.get());
        }
        holds = nextWord() == 'y';
    }
    LeaseHolder(const LeaseHolder&) = delete;
    LeaseHolder& operator=(const LeaseHolder&) = delete;
    ~LeaseHolder()
    {
        ::kill(process, SIGKILL);
        ::waitpid(process, nullptr, 0);
    }

    /// Returns once another program has tried to open the file.
    void waitUntilAsked() const { EXPECT_EQ(nextWord(), 'a'); }

    bool holds = false;

private:
    [[noreturn]] static void hold(const Location& file, bool givesUp, int words)
    {
        sigset_t asked;
        ::sigemptyset(&asked);
        ::sigaddset(&asked, SIGIO);
        ::sigprocmask(SIG_BLOCK, &asked, nullptr);
        const int held = ::open(file.path().c_str(), O_RDWR | O_CLOEXEC);
        const bool isHeld = ::fcntl(held, F_SETLEASE, F_WRLCK) == 0;
        int signal = 0;
        if (::write(words, isHeld ? "y" : "n", 1) != 1 || ::sigwait(&asked, &signal) != 0 ||
            ::write(words, "a", 1) != 1)
            ::_exit(EXIT_FAILURE);
        while (!givesUp)
            ::pause();
        ::fcntl(held, F_SETLEASE, F_UNLCK);
        ::_exit(EXIT_SUCCESS);
    }
    char nextWord() const
    {
        char word = '-';
        return ::read(reading.get(), &word, 1) == 1 ? word : '-';
    }

    FileDescriptor reading;
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

TEST(SourceFile, underALeaseThatIsKeptIsWaitedForUntilStopped)
{
    const TemporaryFolder folder;
    const Location video = folder.file("x.mov", "video");
    const LeaseHolder holder(video, false);
    if (!holder.holds)
        GTEST_SKIP() << "SKIPPED: this file system has no leases";
    std::stop_source stop;
    std::jthread stopper([&] {
        holder.waitUntilAsked();
        stop.request_stop();
    });
    EXPECT_THROW(copyFile(video, folder / "copy.mov", stop.get_token()), Stopped);
    EXPECT_EQ(everythingBelow(folder.location()), std::vector<std::string>{"x.mov"});
}

TEST(SourceFile, behindALoopOfLinksIsReportedAsSuch)
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
