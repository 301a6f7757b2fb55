// faultDisk IMAGE FOLDER CONTROL [LOG]: mounts FOLDER with one file, "disk", in it. That has the content of IMAGE and
// the faults that CONTROL currently describes (a file with a FaultDiskControl, mapped into memory). With LOG, every
// write and flush that succeeds is appended to that file. The program serves one request at a time, like a slow disk,
// and ends with the process that started it.

#define FUSE_USE_VERSION 31

#include "Fixtures/FaultDiskControl.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fuse_lowlevel.h>
#include <span>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace reelkeep {
namespace {

using Clock = std::chrono::steady_clock;
using Lie = FaultDiskControl::Lie;

constexpr fuse_ino_t diskNode = 2;
constexpr const char* diskName = "disk";
constexpr std::size_t blockSize = 4096;

FaultDiskControl* control = nullptr;
std::span<char> image;
int logFile = -1;
Clock::time_point freeFrom;

/// Returns when a disk of this speed would have served the request.
void serve(std::size_t bytes)
{
    const auto speed = control->bytesPerSecond.load();
    auto duration = std::chrono::nanoseconds(control->delayMicroseconds * 1000);
    if (speed != 0)
        duration += std::chrono::nanoseconds(bytes * 1'000'000'000 / speed);
    if (duration > duration.zero()) {
        // Counted from the end of the last request: otherwise waking up late would slow the disk down.
        const auto now = Clock::now();
        freeFrom = std::max(freeFrom, now - std::chrono::milliseconds(2)) + duration;
        std::this_thread::sleep_until(freeFrom);
    }
    while (control->isHanging != 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

bool isFailing(const FaultDiskControl::Word& from, std::uint64_t number)
{
    return from != 0 && number >= from;
}

bool isLyingNow(std::uint64_t number)
{
    return number >= control->lieFrom && number < control->lieFrom + control->lieCount;
}

/// Calls `action` for each piece of the image that stores a part of the `length` bytes at `offset`.
template <typename Action>
void eachPiece(std::size_t offset, std::size_t length, Action action)
{
    const std::size_t capacity = control->capacity == 0 ? image.size() : std::size_t(control->capacity);
    for (std::size_t done = 0; done < length;) {
        const std::size_t begin = (offset + done) % capacity;
        const std::size_t count = std::min(length - done, capacity - begin);
        action(image.subspan(begin, count), done);
        done += count;
    }
}

/// Changes one block to what a lying disk makes of it.
void distort(std::span<char> block, std::size_t offset)
{
    if (control->lie == Lie::flipsABit || control->lie == Lie::returnsOtherData)
        block[block.size() / 2] = static_cast<char>(block[block.size() / 2] ^ 4);
    else if (control->lie == Lie::dropsTheData)
        eachPiece(offset, block.size(), [&](std::span<char> old, std::size_t at) {
            std::copy(old.begin(), old.end(), block.begin() + static_cast<std::ptrdiff_t>(at));
        });
}

/// Lies about one block of a request, so that the rest of it is right; or about the marked blocks whose turn it is.
void lie(std::span<char> bytes, std::size_t offset, std::uint64_t number)
{
    const auto block = [&](std::size_t begin) {
        return bytes.subspan(begin, std::min(blockSize, bytes.size() - begin));
    };
    const std::size_t middle = bytes.size() / 2 / blockSize * blockSize;
    if (control->lieMark == 0 && isLyingNow(number) && !bytes.empty())
        distort(block(middle), offset + middle);
    for (std::size_t begin = 0; control->lieMark != 0 && begin + blockSize <= bytes.size(); begin += blockSize) {
        std::uint64_t mark = 0;
        std::memcpy(&mark, &bytes[begin], sizeof mark);
        if (mark == control->lieMark && isLyingNow(++control->marked))
            distort(block(begin), offset + begin);
    }
}

void append(const FaultDiskLogEntry& entry, std::span<const char> bytes)
{
    if (logFile < 0)
        return;
    const std::array parts = {iovec{const_cast<FaultDiskLogEntry*>(&entry), sizeof entry},
                              iovec{const_cast<char*>(bytes.data()), bytes.size()}};
    const auto whole = static_cast<ssize_t>(sizeof entry + bytes.size());
    if (::writev(logFile, parts.data(), static_cast<int>(parts.size())) != whole)
        std::abort();
    control->logged += static_cast<std::uint64_t>(whole);
}

struct stat attributesOf(fuse_ino_t node)
{
    struct stat status = {};
    status.st_ino = node;
    status.st_nlink = 1;
    status.st_mode = node == diskNode ? S_IFREG | 0600 : S_IFDIR | 0700;
    status.st_size = node == diskNode ? static_cast<off_t>(image.size()) : 0;
    return status;
}

void lookUp(fuse_req_t request, fuse_ino_t, const char* name)
{
    if (std::strcmp(name, diskName) != 0) {
        fuse_reply_err(request, ENOENT);
        return;
    }
    fuse_entry_param entry = {};
    entry.ino = diskNode;
    entry.attr = attributesOf(diskNode);
    entry.attr_timeout = entry.entry_timeout = 3600;
    fuse_reply_entry(request, &entry);
}

void queryAttributes(fuse_req_t request, fuse_ino_t node, fuse_file_info*)
{
    const struct stat status = attributesOf(node);
    fuse_reply_attr(request, &status, 3600);
}

void open(fuse_req_t request, fuse_ino_t, fuse_file_info* file)
{
    file->direct_io = 1; // the kernel caches nothing, so each request arrives here
    fuse_reply_open(request, file);
}

void read(fuse_req_t request, fuse_ino_t, std::size_t length, off_t offset, fuse_file_info*)
{
    const std::uint64_t number = ++control->reads;
    const auto begin = std::min(static_cast<std::size_t>(offset), image.size());
    std::vector<char> bytes(std::min(length, image.size() - begin));
    serve(bytes.size());
    if (isFailing(control->failReadsFrom, number)) {
        fuse_reply_err(request, static_cast<int>(control->readErrno));
        return;
    }
    eachPiece(begin, bytes.size(), [&](std::span<char> piece, std::size_t at) {
        std::copy(piece.begin(), piece.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
    });
    if (control->lie == Lie::returnsOtherData)
        lie(bytes, begin, number);
    fuse_reply_buf(request, bytes.data(), bytes.size());
}

void write(fuse_req_t request, fuse_ino_t, const char* data, std::size_t length, off_t offset, fuse_file_info*)
{
    const std::uint64_t number = ++control->writes;
    serve(length);
    const auto begin = static_cast<std::size_t>(offset);
    const bool isInside = begin <= image.size() && length <= image.size() - begin;
    if (!isInside || isFailing(control->failWritesFrom, number)) {
        fuse_reply_err(request, isInside ? static_cast<int>(control->writeErrno) : ENOSPC);
        return;
    }
    std::vector<char> bytes(data, data + length);
    if (control->lie != Lie::returnsOtherData)
        lie(bytes, begin, number);
    eachPiece(begin, length, [&](std::span<char> piece, std::size_t at) {
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), piece.size(), piece.begin());
    });
    append({begin, length}, bytes);
    fuse_reply_write(request, length);
}

void flush(fuse_req_t request, fuse_ino_t, int, fuse_file_info*)
{
    ++control->flushes;
    serve(0);
    const bool fails = isFailing(control->failWritesFrom, control->writes);
    if (!fails)
        append({FaultDiskLogEntry::flush, 0}, {});
    fuse_reply_err(request, fails ? static_cast<int>(control->writeErrno) : 0);
}

std::span<char> mapped(const char* path)
{
    const int file = ::open(path, O_RDWR | O_CLOEXEC);
    struct stat status = {};
    if (file < 0 || ::fstat(file, &status) != 0)
        return {};
    const auto size = static_cast<std::size_t>(status.st_size);
    void* memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    ::close(file);
    return memory == MAP_FAILED ? std::span<char>() : std::span(static_cast<char*>(memory), size);
}

int runSession(char* program, const char* folder)
{
    fuse_lowlevel_ops operations = {};
    operations.lookup = lookUp;
    operations.getattr = queryAttributes;
    operations.open = open;
    operations.read = read;
    operations.write = write;
    operations.fsync = flush;
    std::array<char*, 2> arguments = {program, nullptr};
    fuse_args options = FUSE_ARGS_INIT(1, arguments.data());
    fuse_session* session = fuse_session_new(&options, &operations, sizeof operations, nullptr);
    if (!session || fuse_session_mount(session, folder) != 0)
        return 1;
    return fuse_session_loop(session) == 0 ? 0 : 1;
}

} // namespace
} // namespace reelkeep

int main(int count, char** arguments)
{
    using namespace reelkeep;
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (count < 4)
        return 2;
    image = mapped(arguments[1]);
    const std::span<char> shared = mapped(arguments[3]);
    if (count > 4)
        logFile = ::open(arguments[4], O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (image.empty() || shared.size() < sizeof(FaultDiskControl) || (count > 4 && logFile < 0)) {
        std::perror("faultDisk");
        return 1;
    }
    control = reinterpret_cast<FaultDiskControl*>(shared.data());
    return runSession(arguments[0], arguments[2]);
}
