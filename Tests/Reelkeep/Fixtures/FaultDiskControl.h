#pragma once

#include <atomic>
#include <cstdint>

namespace reelkeep {

/// How a fault disk behaves, and what it has served so far. A test and the disk's program share it in memory. If all is
/// zero the disk is healthy. Requests are counted from 1. Other languages see 64-bit words in this order.
struct FaultDiskControl {
    using Word = std::atomic<std::uint64_t>;
    enum Lie : std::uint64_t { honest, flipsABit, dropsTheData, returnsOtherData };

    Word reads; ///< Requests so far.
    Word writes;
    Word flushes;
    Word failReadsFrom;  ///< Reads fail with `readErrno` from this one on; never if 0.
    Word failWritesFrom; ///< Writes and flushes fail with `writeErrno` from this write on.
    Word readErrno;
    Word writeErrno;
    Word delayMicroseconds; ///< For each request.
    Word bytesPerSecond;    ///< No limit if 0.
    Word isHanging;         ///< While it is not 0, no request is answered.
    Word lie;               ///< A Lie, in `lieCount` requests from `lieFrom` on; each changes one block only.
    Word lieFrom;           ///< The number of a write; of a read for returnsOtherData.
    Word lieCount;
    Word capacity; ///< Reads and writes beyond it wrap around to the beginning; 0 if the disk is as large as it claims.
    Word logged;   ///< Bytes of complete entries in the log.
    Word lieMark;  ///< If not 0, only blocks that begin with these eight bytes are lied about, and counted.
    Word marked;   ///< The number of such blocks written so far; read for returnsOtherData.
};

static_assert(FaultDiskControl::Word::is_always_lock_free);

/// Precedes the data of each write in a fault disk's log. A flush is an entry without data whose offset is `flush`.
struct FaultDiskLogEntry {
    static constexpr std::uint64_t flush = ~std::uint64_t(0);

    std::uint64_t offset = 0;
    std::uint64_t length = 0;
};

} // namespace reelkeep
