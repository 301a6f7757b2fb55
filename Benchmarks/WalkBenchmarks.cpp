#include "Files/LinuxFileManager.h"
#include "Samples.h"
#include "VideoSyncService.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace reelkeep {
namespace {

/// In TMPDIR: the walk works differently in memory and on a disk.
class Tree {
public:
    explicit Tree(std::size_t count)
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "reelkeep-walk-XXXXXX").string();
        if (!::mkdtemp(pattern.data()))
            std::abort();
        root = Location(pattern);
        makeTree(root, SampleKind::archive, count);
    }
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;
    ~Tree() { std::filesystem::remove_all(root.path()); }

    Location root;
};

void scan(benchmark::State& state)
{
    const Tree tree(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(VideoSyncService::scanVideoFiles(tree.root, LinuxFileManager()).size());
}

/// The way of the standard library, which reads the attributes of everything.
void iterateAndLook(benchmark::State& state)
{
    namespace fs = std::filesystem;
    const Tree tree(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        std::uintmax_t bytes = 0;
        for (const auto& entry : fs::recursive_directory_iterator(tree.root.path()))
            if (entry.is_regular_file())
                bytes +=
                    entry.file_size() + static_cast<std::uintmax_t>(entry.last_write_time().time_since_epoch().count());
        benchmark::DoNotOptimize(bytes);
    }
}

BENCHMARK(scan)->Arg(20'000)->Arg(200'000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(iterateAndLook)->Arg(20'000)->Arg(200'000)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
} // namespace reelkeep
