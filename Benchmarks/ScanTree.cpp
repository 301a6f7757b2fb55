#include "Files/LinuxFileManager.h"
#include "VideoSyncService.h"

#include <exception>
#include <iostream>

/// ScanTree FOLDER: scans as the program does and prints the number of videos.
int main(int argc, char** argv)
try {
    if (argc != 2) {
        std::cerr << "Usage: ScanTree FOLDER\n";
        return 2;
    }
    const auto videos =
        reelkeep::VideoSyncService::scanVideoFiles(reelkeep::Location(argv[1]), reelkeep::LinuxFileManager());
    std::cout << videos.size() << std::endl;
    _Exit(0); // Freeing the list is not part of a scan.
} catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
