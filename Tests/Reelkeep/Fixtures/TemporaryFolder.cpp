#include "Fixtures/TemporaryFolder.h"

#include "Fixtures/AfterThisProcess.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <unistd.h>

namespace reelkeep {

namespace fs = std::filesystem;

namespace {

/// Lets the owner into every folder again. Does not follow links.
void unlockFolders(const fs::path& folder)
{
    std::error_code ignored;
    fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, ignored);
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, ignored))
        if (entry.symlink_status(ignored).type() == fs::file_type::directory)
            unlockFolders(entry.path());
}

void removeAll(const fs::path& folder)
{
    std::error_code failure;
    fs::remove_all(folder, failure);
    if (!failure)
        return;
    unlockFolders(folder);
    fs::remove_all(folder, failure);
}

/// What the names of this process's folders begin with. A process that is killed does not remove them itself.
const std::string& namesBegin()
{
    static const std::string begin = [] {
        const std::string own = "reelkeep-test-" + std::to_string(::getpid()) + "-";
        afterThisProcess([own] {
            std::error_code ignored;
            for (const fs::path& base : {fs::temp_directory_path(), fs::path("/dev/shm")}) {
                for (const fs::directory_entry& entry : fs::directory_iterator(base, ignored))
                    if (entry.path().filename().string().starts_with(own))
                        removeAll(entry.path());
            }
        });
        return own;
    }();
    return begin;
}

} // namespace

TemporaryFolder::TemporaryFolder(const std::string& base)
{
    std::string pattern = (base.empty() ? fs::temp_directory_path().string() : base) + "/" + namesBegin() + "XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("no folder for the test in " + pattern);
    place = Location(pattern);
    fs::permissions(pattern, fs::perms(0755));
}

TemporaryFolder::~TemporaryFolder()
{
    removeAll(place.path());
}

Location TemporaryFolder::file(std::string_view relative, std::string_view content) const
{
    Location made = *this / relative;
    fs::create_directories(made.deletingLastPathComponent().path());
    std::ofstream stream(made.path(), std::ios::binary);
    stream.write(content.data(), static_cast<std::streamsize>(content.size()));
    if (!stream.flush())
        throw std::runtime_error("cannot write " + made.path());
    return made;
}

Location TemporaryFolder::folder(std::string_view relative) const
{
    Location made = *this / relative;
    fs::create_directories(made.path());
    return made;
}

std::string contentOf(const Location& file)
{
    std::ifstream stream(file.path(), std::ios::binary);
    if (!stream)
        throw std::runtime_error("cannot read " + file.path());
    std::string content(fs::file_size(file.path()), '\0');
    stream.read(content.data(), static_cast<std::streamsize>(content.size()));
    content.resize(static_cast<std::size_t>(stream.gcount()));
    return content;
}

std::vector<std::string> everythingBelow(const Location& folder)
{
    std::vector<std::string> found;
    for (const auto& entry : fs::recursive_directory_iterator(folder.path()))
        found.push_back(entry.path().string().substr(folder.path().size() + 1));
    std::sort(found.begin(), found.end());
    return found;
}

} // namespace reelkeep
