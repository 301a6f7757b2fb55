#include "Model/FileTree.h"

#include <filesystem>
#include <fstream>
#include <system_error>

#include <sys/stat.h>

namespace reelkeep {

namespace fs = std::filesystem;

const std::string cardPath = "CARD PATH";

FileTree::FileTree(const std::vector<TreeEntry>& entries)
{
    for (const TreeEntry& entry : entries) {
        std::string place = folder.location().path();
        for (const std::string& component : entry.path)
            place += "/" + (component == cardPath ? path("card").substr(1) : component);
        std::error_code failure;
        fs::create_directories(place.substr(0, place.find_last_of('/')), failure);
        if (failure || fs::symlink_status(place, failure).type() != fs::file_type::not_found)
            continue;
        switch (entry.kind) {
        case TreeEntry::Kind::file:
            std::ofstream(place) << std::string(static_cast<std::size_t>(entry.size), 'x');
            break;
        case TreeEntry::Kind::folder:
            fs::create_directory(place, failure);
            if (entry.mode >= 0)
                restricted.push_back(place + " " + std::to_string(entry.mode));
            break;
        case TreeEntry::Kind::link:
            fs::create_symlink(entry.leadsTo, place, failure);
            break;
        case TreeEntry::Kind::pipe:
            ::mkfifo(place.c_str(), 0644);
            break;
        }
    }
    for (std::string& place : restricted) {
        const auto space = place.find_last_of(' ');
        const int mode = std::stoi(place.substr(space + 1));
        place.erase(space);
        ::chmod(place.c_str(), static_cast<mode_t>(mode));
    }
}

FileTree::~FileTree()
{
    // Parents come first.
    for (const std::string& place : restricted)
        ::chmod(place.c_str(), 0755);
}

std::string FileTree::path(const std::string& relative) const
{
    return folder.location().path() + (relative.empty() ? "" : "/" + relative);
}

std::map<std::string, std::string> FileTree::everything() const
{
    std::map<std::string, std::string> found;
    for (const auto& entry : fs::recursive_directory_iterator(path(""))) {
        std::string place = entry.path().string().substr(path("").size());
        const std::string own = path("").substr(1); // a shortened path may have lost the separator before it
        for (auto at = place.find(own); at != std::string::npos; at = place.find(own))
            place.replace(at, own.size(), "TREE");
        if (entry.is_symlink())
            found[place] = "link to " + fs::read_symlink(entry.path()).string();
        else if (entry.is_regular_file())
            found[place] = contentOf(Location(entry.path().string()));
        else
            found[place] = entry.is_directory() ? "folder" : "other";
    }
    return found;
}

} // namespace reelkeep
