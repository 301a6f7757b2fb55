#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

/// System calls that fail on demand. The linker directs every call of the tested code here first (`--wrap`, see
/// CMakeLists.txt), so that the code itself is unchanged.
namespace reelkeep::faults {

constexpr std::size_t forEver = std::numeric_limits<std::size_t>::max();

struct Plan {
    std::string call = {};      ///< The function that fails; empty for all.
    std::size_t occurrence = 0; ///< The first call that fails, counted from 1; 0 for none.
    std::size_t times = 1;      ///< How many calls fail from there on.
    int errorNumber = 0;
    bool happensFirst = false; ///< The call does its work and then reports the failure, as over a bad connection.
    std::map<std::string, int> refusals = {}; ///< Functions that the file system does not support, and their errors.
    long fileSystemType = 0;                  ///< What the target's file system claims to be; 0 for the truth.
    std::map<std::string, std::map<std::string, int>> brokenNames = {}; ///< By function: names for which it fails.
    dev_t device = 0;                ///< The device that attributes report for everything; 0 for the truth.
    std::uint64_t mount = 0;         ///< The mount that attributes report for everything; 0 for the truth.
    long clockAhead = 0;             ///< By how many seconds files that are still empty are newer.
    bool locksOnlyWritable = false;  ///< A lock needs a descriptor open for writing.
    bool hidesTypes = false;         ///< Folder listings do not report the types of entries.
    std::uint64_t freeBlocks = 0;    ///< How many blocks of 4096 bytes the disk reports as free; 0 for the truth.
    std::uint64_t freeToAll = 0;     ///< How many of those it reports as free to ordinary users.
    std::size_t most = 0;            ///< How many bytes one read or write moves at most; 0 for no limit.
    bool hasNoThreads = false;       ///< No thread can be started.
    std::function<void()> deed = {}; ///< Runs right before that call, which then does not fail.
};

/// From now on, until `disarm`, calls of all threads are recorded and fail as planned. No other thread may run when
/// this is called.
void arm(const Plan& plan);
/// Returns the functions called since `arm`, in order.
std::vector<std::string> disarm();
/// Whether a planned failure has happened since `arm`.
bool struck();

/// The errors that a disk, the kernel or a limit may plausibly cause in this function.
std::vector<int> plausibleErrors(const std::string& call);

} // namespace reelkeep::faults
