#include "Files/TransferPace.h"

#include <algorithm>

namespace reelkeep {

namespace {

constexpr std::int64_t granularity = std::int64_t(64) << 10;

double secondsOf(TransferPace::Duration duration)
{
    return std::chrono::duration<double>(duration).count();
}

} // namespace

TransferPace::TransferPace(std::int64_t largestPortion, Duration target)
    : largest(largestPortion), targetSeconds(secondsOf(target)), size(std::min(first, largestPortion))
{
}

void TransferPace::took(std::int64_t bytes, Duration duration)
{
    if (bytes < smallest) // mostly the fixed cost of a call
        return;
    const auto count = static_cast<double>(bytes);
    const double seconds = secondsOf(duration);
    estimateFixedCost(count, seconds);
    constexpr double shortest = 1e-6;
    const double affordable = count * targetSeconds / std::max(seconds - fixedSeconds, shortest);
    // Step by step: the disk may have taken the first data into its own memory, and a fixed cost is a guess.
    const std::int64_t most = std::min(largest, size * (fixedSeconds > 0 ? 2 : 8));
    size = affordable < static_cast<double>(most) ? static_cast<std::int64_t>(affordable) : most;
    size = std::max(size / granularity * granularity, smallest);
}

/// From two portions of different size. Without it a disk that takes long for every sync would get ever smaller
/// portions, which makes it only slower.
void TransferPace::estimateFixedCost(double bytes, double seconds)
{
    constexpr double differentEnough = 1.1;
    if (lastBytes > 0 && std::max(bytes, lastBytes) >= differentEnough * std::min(bytes, lastBytes)) {
        const double secondsPerByte = std::max(0.0, (seconds - lastSeconds) / (bytes - lastBytes));
        fixedSeconds = std::clamp(seconds - secondsPerByte * bytes, 0.0, targetSeconds);
    }
    lastBytes = bytes;
    lastSeconds = seconds;
}

} // namespace reelkeep
