#include "Fixtures/PrivateView.h"

#include "Fixtures/AfterThisProcess.h"

#include <chrono>
#include <filesystem>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <thread>
#include <unistd.h>

namespace reelkeep {

namespace {

namespace fs = std::filesystem;

bool hasOthers(const std::string& self, const fs::path& view)
{
    std::error_code failure;
    for (const fs::directory_entry& process : fs::directory_iterator("/proc", failure)) {
        const std::string name = process.path().filename().string();
        const bool isOther = name != self && name.find_first_not_of("0123456789") == std::string::npos;
        if (isOther && fs::read_symlink(process.path() / "ns/mnt", failure) == view && !failure)
            return true;
    }
    return false;
}

/// Stays until no other process has these mounts, and does not touch them.
bool startKeeper()
{
    return afterThisProcess([] {
        const std::string self = std::to_string(::getpid());
        const fs::path view = fs::read_symlink("/proc/self/ns/mnt");
        while (hasOthers(self, view))
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
    });
}

} // namespace

bool takePrivateView()
{
    return ::unshare(CLONE_NEWNS) == 0 && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           startKeeper();
}

} // namespace reelkeep
