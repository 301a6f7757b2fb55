#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

/// System calls that fail on demand. The linker leads every call of the program under test here first
/// (`--wrap`, see CMakeLists.txt), so that the tested code has no part in it.
namespace reelkeep::faults {

constexpr std::size_t forEver = std::numeric_limits<std::size_t>::max();

struct Plan {
    std::string call = {};      ///< The function that fails; empty for every one.
    std::size_t occurrence = 0; ///< The first call that fails, counted from 1; 0 for none.
    std::size_t times = 1;      ///< How many calls fail from there on.
    int errorNumber = 0;
    bool happensFirst = false; ///< The call does its work and then reports the failure, as over a bad connection.
    std::map<std::string, int> refusals = {}; ///< Functions that the file system does not know, with their answers.
    long fileSystemType = 0;                  ///< What the target's file system claims to be; 0 for the truth.
    std::map<std::string, std::map<std::string, int>> brokenNames = {}; ///< By function: names it always fails for.
    dev_t device = 0;                ///< The one that attributes tell to hold everything; 0 for the truth.
    std::uint64_t mount = 0;         ///< The mount that attributes report for everything; 0 for the truth.
    long clockAhead = 0;             ///< By how many seconds files that are still empty are newer.
    bool locksOnlyWritable = false;  ///< A lock needs a descriptor open for writing.
    bool hidesTypes = false;         ///< Folder listings do not tell what an entry is.
    std::uint64_t freeBlocks = 0;    ///< Of 4096 bytes, that the disk reports as free; 0 for the truth.
    std::uint64_t freeToAll = 0;     ///< How many of those it reports as free to anybody but the administrator.
    std::size_t most = 0;            ///< How many bytes one read or write moves at most; 0 for no limit.
    bool hasNoThreads = false;       ///< No new thread can be had.
    std::function<void()> deed = {}; ///< What somebody else does right before that call, which then does not fail.
};

/// From now on, until `disarm`, calls of any thread are recorded and fail as planned. No other thread may run then.
void arm(const Plan& plan);
/// The functions called meanwhile, in order.
std::vector<std::string> disarm();
/// Whether a planned failure came to pass since `arm`.
bool struck();

/// What a disk, a kernel or a limit may plausibly answer to this function.
std::vector<int> plausibleErrors(const std::string& call);

} // namespace reelkeep::faults
