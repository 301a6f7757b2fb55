#include "Samples.h"
#include "VideoSyncService.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <memory>
#include <random>
#include <string>
#include <unicode/ucol.h>

namespace reelkeep {
namespace {

std::vector<VideoFile> shuffledVideos(std::size_t count)
{
    std::vector<VideoFile> videos = sampleVideos(SampleKind::archive, 0, count);
    std::shuffle(videos.begin(), videos.end(), std::mt19937(1)); // NOLINT(cert-msc51-cpp): the same each time
    return videos;
}

/// Nothing is reviewed, so that everything is missing and must be ordered.
void order(benchmark::State& state)
{
    const VideoList videos = shuffledVideos(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(VideoSyncService::missingVideos(videos, {}).size());
}

/// The yardstick: the collator compares the texts in every comparison of the sort.
void orderByCollator(benchmark::State& state)
{
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UCollator, decltype(&ucol_close)> collator(ucol_open("", &status), ucol_close);
    ucol_setAttribute(collator.get(), UCOL_NUMERIC_COLLATION, UCOL_ON, &status);
    const auto compare = [&](const std::string& one, const std::string& other) {
        return ucol_strcollUTF8(collator.get(), one.data(), static_cast<std::int32_t>(one.size()), other.data(),
                                static_cast<std::int32_t>(other.size()), &status) == UCOL_LESS;
    };
    const std::vector<VideoFile> videos = shuffledVideos(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        std::vector<const VideoFile*> sorted;
        for (const VideoFile& video : videos)
            sorted.push_back(&video);
        std::stable_sort(sorted.begin(), sorted.end(), [&](const VideoFile* one, const VideoFile* other) {
            return one->fileName == other->fileName ? compare(one->relativePath, other->relativePath)
                                                    : compare(one->fileName, other->fileName);
        });
        std::vector<VideoFile> result;
        result.reserve(sorted.size());
        for (const VideoFile* video : sorted)
            result.push_back(*video);
        benchmark::DoNotOptimize(result.size());
    }
}

BENCHMARK(order)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(orderByCollator)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
} // namespace reelkeep
