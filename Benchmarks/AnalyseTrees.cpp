#include "Files/LinuxFileManager.h"
#include "VideoSyncService.h"

#include <exception>
#include <iostream>

/// AnalyseTrees SOURCE REVIEWED...: analyses as the program does and prints the number of missing videos.
int main(int argc, char** argv)
try {
    if (argc < 2) {
        std::cerr << "Usage: AnalyseTrees SOURCE REVIEWED...\n";
        return 2;
    }
    std::vector<reelkeep::Location> reviewed;
    for (int i = 2; i < argc; ++i)
        reviewed.emplace_back(argv[i]);
    const auto found =
        reelkeep::VideoSyncService::analyse(reelkeep::Location(argv[1]), reviewed, reelkeep::LinuxFileManager());
    std::cout << found.missingVideos.size() << std::endl;
    _Exit(0); // Freeing the lists is not part of an analysis.
} catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
