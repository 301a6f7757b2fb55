// A run without a window: analyses CARD and DISK, copies what is missing, and prints a line for each report and for a
// failure. Tests kill and trace it; benchmarks time it.

#include "CopyJob.h"
#include "Files/LinuxFileManager.h"
#include "VideoSyncService.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

int main(int count, char** arguments)
{
    using namespace reelkeep;
    if (count != 3) {
        std::fprintf(stderr, "usage: %s CARD DISK\n", arguments[0]);
        return EXIT_FAILURE;
    }
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        LinuxFileManager files;
        const Location card(arguments[1]);
        const Location disk(arguments[2]);
        const VideoList videos = VideoSyncService::missingVideos(VideoSyncService::scanVideoFiles(card, files),
                                                                 VideoSyncService::scanVideoFiles(disk, files));
        const auto print = [](const CopyProgress& report) {
            const std::string line =
                "report " + std::to_string(report.completedCount) + "/" + std::to_string(report.totalCount) + "\n";
            if (::write(STDOUT_FILENO, line.data(), line.size()) < 0)
                std::abort();
        };
        CopyJob{.videos = videos, .sourceRoot = card, .destinationRoot = disk}.run(files, print);
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::printf("failed %s\n", error.what());
        return EXIT_FAILURE;
    }
}
