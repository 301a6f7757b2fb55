#pragma once

#include <atomic>
#include <cstdint>

namespace reelkeep {

/// How a fault disk behaves, and what it has served so far: shared memory between a test and the disk's program. All
/// zeros is a healthy disk. Requests are counted from 1. Other languages see it as 64-bit words in this order.
struct FaultDiskControl {
    using Word = std::atomic<std::uint64_t>;
    enum Lie : std::uint64_t { honest, flipsABit, dropsTheData, returnsOtherData };

    Word reads; ///< Requests so far.
    Word writes;
    Word flushes;
    Word failReadsFrom;  ///< From this request on reads fail with `readErrno`; 0 never.
    Word failWritesFrom; ///< Writes and flushes too, with `writeErrno`, from this write on.
    Word readErrno;
    Word writeErrno;
    Word delayMicroseconds; ///< Of each request.
    Word bytesPerSecond;    ///< 0 is unlimited.
    Word isHanging;         ///< While it is not 0, no request is answered.
    Word lie;               ///< A Lie, told from `lieFrom` on for `lieCount` requests; each touches one block only.
    Word lieFrom;           ///< A write; a read for returnsOtherData.
    Word lieCount;
    Word capacity; ///< Beyond it writes and reads wrap around to the beginning; 0 where the disk is what it claims.
    Word logged;   ///< Bytes of complete entries in the log.
    Word lieMark;  ///< If not 0, only blocks that begin with these eight bytes are lied about, and counted.
    Word marked;   ///< How many such blocks were written so far; read, for returnsOtherData.
};

static_assert(FaultDiskControl::Word::is_always_lock_free);

/// Precedes the data of each write in a fault disk's log. A flush is an entry without data at `flush`.
struct FaultDiskLogEntry {
    static constexpr std::uint64_t flush = ~std::uint64_t(0);

    std::uint64_t offset = 0;
    std::uint64_t length = 0;
};

} // namespace reelkeep
