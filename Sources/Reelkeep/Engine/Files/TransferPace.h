#pragma once

#include <chrono>
#include <cstdint>

namespace reelkeep {

/// How many bytes to hand to a disk at once. A system call that is under way cannot be stopped, so each should be short
/// on a slow disk too; on a fast one larger portions cost less.
class TransferPace {
public:
    using Duration = std::chrono::nanoseconds;

    static constexpr std::int64_t smallest = std::int64_t(256) << 10;
    static constexpr std::int64_t first = std::int64_t(512) << 10;

    /// `target` is how long a portion may take, apart from the fixed cost of each call.
    TransferPace(std::int64_t largestPortion, Duration target);

    /// A multiple of any usual block's size, from `smallest` to the largest.
    std::int64_t portion() const { return size; }
    /// Learns from the duration of a transfer of so many bytes.
    void took(std::int64_t bytes, Duration duration);

private:
    void estimateFixedCost(double bytes, double seconds);

    std::int64_t largest;
    double targetSeconds;
    std::int64_t size;
    double fixedSeconds = 0; ///< The cost of any call; never assumed to be more than `targetSeconds`.
    double lastBytes = 0;
    double lastSeconds = 0;
};

} // namespace reelkeep
