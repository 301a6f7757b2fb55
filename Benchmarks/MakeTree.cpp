#include "Samples.h"

#include <exception>
#include <iostream>
#include <string>

/// MakeTree FOLDER card|archive COUNT
int main(int argc, char** argv)
try {
    const std::string kind = argc == 4 ? argv[2] : "";
    if (kind != "card" && kind != "archive") {
        std::cerr << "Usage: MakeTree FOLDER card|archive COUNT\n";
        return 2;
    }
    reelkeep::makeTree(reelkeep::Location(argv[1]),
                       kind == "card" ? reelkeep::SampleKind::card : reelkeep::SampleKind::archive,
                       std::stoul(argv[3]));
    return 0;
} catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
