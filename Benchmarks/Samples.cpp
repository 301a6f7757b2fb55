#include "Samples.h"

#include "Files/FileDescriptor.h"
#include "Files/LinuxFileManager.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <system_error>
#include <unistd.h>

namespace reelkeep {

namespace {

std::string padded(std::size_t number, std::size_t width)
{
    std::string digits = std::to_string(number);
    return digits.size() < width ? std::string(width - digits.size(), '0') + digits : digits;
}

std::string cardPath(std::size_t number)
{
    constexpr std::size_t perFolder = 999;
    return "DCIM/" + padded(100 + number / perFolder, 3) + "CANON/MVI_" + padded(number % 9999 + 1, 4) +
           (number % 8 == 7 ? ".THM" : ".MOV");
}

std::string archivePath(std::size_t number)
{
    static constexpr std::array<std::string_view, 5> occasions = {"Boda Marta y Luis", "Concierto en la plaza",
                                                                  "Rio y montana", "Entrevista", "Anuncio coche"};
    constexpr std::size_t perFolder = 120;
    constexpr std::size_t foldersPerShoot = 3;
    const std::size_t folder = number / perFolder;
    const std::size_t shoot = folder / foldersPerShoot;
    const std::size_t clip = number % perFolder / 2 + 1 + shoot % 97 * 60;
    const std::string shootPath = std::to_string(2008 + shoot % 17) + "/" + padded(shoot % 12 + 1, 2) + "-" +
                                  padded(shoot, 4) + " " + std::string(occasions[shoot % occasions.size()]);
    const bool isSecond = number % 2 == 1;
    switch (folder % foldersPerShoot) {
    case 0: // one sidecar file for each clip
        return shootPath + "/Camara A/C" + padded(clip, 4) + (isSecond ? "M01.XML" : ".MP4");
    case 1:
        return shootPath + "/Camara B/MVI_" + padded(2 * clip + (isSecond ? 1 : 0), 4) + ".MOV";
    default:
        return shootPath + "/Dron/DJI_" + padded(2 * clip + (isSecond ? 1 : 0), 4) + ".mp4";
    }
}

} // namespace

Sample sample(SampleKind kind, std::size_t number)
{
    return {kind == SampleKind::card ? cardPath(number) : archivePath(number), std::int64_t(1'000'000 + 4099 * number)};
}

void makeTree(const Location& root, SampleKind kind, std::size_t count)
{
    Location lastFolder;
    for (std::size_t number = 0; number < count; ++number) {
        const Sample made = sample(kind, number);
        const Location file = root.appending(made.relativePath);
        const Location folder = file.deletingLastPathComponent();
        if (!(folder == lastFolder))
            LinuxFileManager().createDirectory(folder);
        lastFolder = folder;
        const FileDescriptor sparse(::open(file.path().c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644));
        if (!sparse || ::ftruncate(sparse.get(), made.size) != 0)
            throw std::system_error(errno, std::generic_category(), file.path());
    }
}

std::vector<VideoFile> sampleVideos(SampleKind kind, std::size_t begin, std::size_t end)
{
    const std::string root = "/media/user/SAMPLE/";
    SharedTextArena paths;
    std::vector<VideoFile> videos;
    for (std::size_t number = begin; number < end; ++number) {
        const Sample made = sample(kind, number);
        const SharedText path = paths.joined(root, made.relativePath);
        const SharedText relativePath = path.from(root.size());
        const SharedText name = relativePath.from(made.relativePath.rfind('/') + 1);
        videos.push_back({relativePath, Location(path), relativePath, name, made.size, Date()});
    }
    return videos;
}

} // namespace reelkeep
