#include <array>
#include <cstddef>
#include <cstdint>
#include <dirent.h>
#include <fcntl.h>
#include <iostream>
#include <string_view>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int depthLimit = 64;
std::uint64_t videos = 0;

bool isVideo(std::string_view name)
{
    static constexpr std::array<const char*, 12> extensions = {".avi",  ".braw", ".m4v", ".mkv", ".mov", ".mp4",
                                                               ".mpeg", ".mpg",  ".mts", ".mxf", ".r3d", ".wmv"};
    const auto dot = name.rfind('.');
    if (dot == std::string_view::npos)
        return false;
    for (const char* extension : extensions)
        if (::strcasecmp(name.data() + dot, extension) == 0)
            return true;
    return false;
}

void walk(int folder, int depth)
{
    alignas(struct dirent64) static thread_local std::array<std::array<char, 1 << 17>, depthLimit> buffers;
    char* buffer = buffers[static_cast<std::size_t>(depth)].data();
    for (;;) {
        const ssize_t count = ::getdents64(folder, buffer, 1 << 17);
        if (count <= 0)
            return;
        for (ssize_t at = 0; at < count;) {
            const auto* entry = reinterpret_cast<const struct dirent64*>(buffer + at);
            at += entry->d_reclen;
            if (entry->d_name[0] == '.')
                continue;
            if (entry->d_type == DT_DIR && depth + 1 < depthLimit) {
                const int below = ::openat(folder, entry->d_name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
                if (below >= 0) {
                    walk(below, depth + 1);
                    ::close(below);
                }
            } else if (entry->d_type == DT_REG && isVideo(entry->d_name)) {
                struct stat status = {};
                if (::fstatat(folder, entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0)
                    ++videos;
            }
        }
    }
}

} // namespace

/// WalkFloor FOLDER: the minimum that one thread must do to learn the size of every video in it, keeping nothing.
int main(int argc, char** argv)
{
    const int root = argc == 2 ? ::open(argv[1], O_RDONLY | O_DIRECTORY | O_CLOEXEC) : -1;
    if (root < 0) {
        std::cerr << "Usage: WalkFloor FOLDER\n";
        return 2;
    }
    walk(root, 0);
    std::cout << videos << '\n';
    return 0;
}
