#include "Fixtures/FaultDisk.h"

#include "Files/FileDescriptor.h"
#include "Fixtures/MountedDisk.h"
#include "Fixtures/Processes.h"

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace reelkeep {

namespace {

FaultDiskControl* mapControl(const Location& path)
{
    const FileDescriptor file(::open(path.path().c_str(), O_RDWR | O_CLOEXEC));
    void* memory = MAP_FAILED;
    if (file && ::ftruncate(file.get(), sizeof(FaultDiskControl)) == 0)
        memory = ::mmap(nullptr, sizeof(FaultDiskControl), PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
    if (memory == MAP_FAILED)
        throw std::runtime_error("cannot map " + path.path());
    return static_cast<FaultDiskControl*>(memory);
}

void waitForFile(const Location& file)
{
    const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    struct stat status = {};
    while (::stat(file.path().c_str(), &status) != 0) {
        if (std::chrono::steady_clock::now() > patience)
            throw std::runtime_error("no fault disk at " + file.path());
        std::this_thread::yield();
    }
}

} // namespace

bool FaultDisk::isPossible()
{
    return MountedDisk::isPossible();
}

FaultDisk::FaultDisk(int mebibytes, Log log)
    : place("/dev/shm"), stored(place.file("image", "")), folder(place.folder("served")),
      written(place.file("log", "")), shared(mapControl(place.file("control", "")))
{
    if (!isPossible())
        throw std::runtime_error("no fault disk is possible here");
    std::filesystem::resize_file(stored.path(), std::uintmax_t(mebibytes) << 20);
    std::vector<std::string> command = {FAULT_DISK_PROGRAM, stored.path(), folder.path(), (place / "control").path()};
    if (log == Log::writes)
        command.push_back(written.path());
    program = start(command);
    waitForFile(file());
}

FaultDisk::~FaultDisk()
{
    ::umount2(folder.path().c_str(), MNT_DETACH);
    ::kill(program, SIGKILL);
    finish(program);
    ::munmap(shared, sizeof(FaultDiskControl));
}

void FaultDisk::failReadsFrom(std::uint64_t number, int errorNumber)
{
    shared->readErrno = static_cast<std::uint64_t>(errorNumber);
    shared->failReadsFrom = shared->reads + number;
}

void FaultDisk::failWritesFrom(std::uint64_t number, int errorNumber)
{
    shared->writeErrno = static_cast<std::uint64_t>(errorNumber);
    shared->failWritesFrom = shared->writes + number;
}

void FaultDisk::heal()
{
    for (FaultDiskControl::Word* word :
         {&shared->failReadsFrom, &shared->failWritesFrom, &shared->delayMicroseconds, &shared->bytesPerSecond,
          &shared->isHanging, &shared->lie, &shared->lieFrom, &shared->lieCount, &shared->capacity, &shared->lieMark})
        *word = 0;
}

} // namespace reelkeep
