#include "Fixtures/CopyRuns.h"

#include "Files/FileError.h"
#include "Fixtures/RealFiles.h"

#include "CopyJob.h"
#include "VideoSyncService.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <map>
#include <sys/stat.h>
#include <thread>

namespace reelkeep {

std::string contentOfLength(std::size_t length, unsigned seed)
{
    std::string content(length, '\0');
    for (char& byte : content) {
        seed = seed * 1103515245U + 12345U;
        byte = static_cast<char>(seed >> 16U);
    }
    return content;
}

struct stat attributesOf(const Location& file)
{
    struct stat status = {};
    if (::lstat(file.path().c_str(), &status) != 0)
        throw FileError(file.path(), errno);
    return status;
}

void setModificationTime(const Location& file, time_t seconds)
{
    const struct timespec times[] = {{seconds, 0}, {seconds, 123'456'700}};
    if (::utimensat(AT_FDCWD, file.path().c_str(), times, 0) != 0)
        throw FileError(file.path(), errno);
}

void fillCard(const TemporaryFolder& card)
{
    const std::map<std::string, std::size_t> videos = {
        {"DCIM/100CANON/MVI_0001.MOV", (9U << 20U) + 1234},
        {"DCIM/100CANON/MVI_0002.MOV", 1},
        {"DCIM/100CANON/MVI_0003.MOV", 0},
        {"DCIM/101CANON/MVI_0001.MOV", (1U << 20U) + 1},
        {"PRIVATE/AVCHD/BDMV/STREAM/0.MTS", 4095},
        {"clip con espacios y ene \xc3\xb1.mp4", 4096},
        {"A001.RDM/A001_C001.RDC/A001.R3D", 70000},
        {std::string(251, 'l').append(".mov"), 512},
        {"-rf.mov", 12},
        {"decompuesto e\xcc\x81.mov", 77},
    };
    unsigned seed = 1;
    for (const auto& [path, size] : videos) {
        ++seed;
        setModificationTime(card.file(path, contentOfLength(size, seed)), 1'700'000'000 + time_t(seed));
    }
    card.file("DCIM/100CANON/MVI_0001.THM", "no video");
}

VideoList missing(const Location& card, const Location& disk)
{
    LinuxFileManager files;
    return VideoSyncService::missingVideos(VideoSyncService::scanVideoFiles(card, files),
                                           VideoSyncService::scanVideoFiles(disk, files));
}

CopySummary copyMissing(const Location& card, const Location& disk, const std::stop_token& stop)
{
    const CopyJob job{.videos = missing(card, disk), .sourceRoot = card, .destinationRoot = disk};
    return runOnRealFiles(
        job, [](const CopyProgress&) {}, stop);
}

std::string failureOfCopy(const Location& card, const Location& disk)
{
    try {
        copyMissing(card, disk);
        return "none";
    } catch (const FileError& error) {
        return error.what();
    }
}

void expectOnlyWholeVideos(const Location& card, const Location& disk)
{
    for (const std::string& path : everythingBelow(disk)) {
        EXPECT_EQ(path.find("reelkeep-"), std::string::npos) << path;
        const bool isFile = S_ISREG(attributesOf(disk.appending(path)).st_mode);
        EXPECT_TRUE(!isFile || contentOf(disk.appending(path)) == contentOf(card.appending(path))) << path;
    }
}

bool waitUntil(const std::function<bool()>& condition)
{
    const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > patience)
            return false;
        std::this_thread::yield();
    }
    return true;
}

} // namespace reelkeep
