#include "Samples.h"
#include "VideoSyncService.h"

#include <benchmark/benchmark.h>
#include <string>
#include <unordered_set>

namespace reelkeep {
namespace {

/// Three million reviewed records, made once: they take a gigabyte.
const VideoList& archive()
{
    static const VideoList videos = sampleVideos(SampleKind::archive, 0, 3'000'000);
    return videos;
}

/// All but one in a hundred are reviewed, so that the time is that of matching, not of ordering what is missing.
VideoList source(std::size_t count)
{
    std::vector<VideoFile> videos = sampleVideos(SampleKind::archive, 1'000'000, 1'000'000 + count);
    for (std::size_t number = 0; number < count; number += 100)
        videos[number].size = 1;
    return videos;
}

void match(benchmark::State& state)
{
    const VideoList videos = source(static_cast<std::size_t>(state.range(0)));
    archive();
    for (auto _ : state)
        benchmark::DoNotOptimize(VideoSyncService::missingVideos(videos, archive()).size());
}

/// The yardstick: a set of key texts, following the definition of a match, without ordering what is missing.
void matchBySetOfTexts(benchmark::State& state)
{
    const VideoList videos = source(static_cast<std::size_t>(state.range(0)));
    archive();
    for (auto _ : state) {
        std::unordered_set<std::string> keys;
        keys.reserve(archive().size());
        for (const VideoFile& video : archive())
            keys.insert(VideoSyncService::matchKey(video));
        std::size_t missing = 0;
        for (const VideoFile& video : videos)
            missing += keys.count(VideoSyncService::matchKey(video)) == 0 ? 1 : 0;
        benchmark::DoNotOptimize(missing);
    }
}

BENCHMARK(match)->Arg(10'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(matchBySetOfTexts)->Arg(10'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
} // namespace reelkeep
