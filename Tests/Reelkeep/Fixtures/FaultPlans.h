#pragma once

#include "Fixtures/Faults.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace reelkeep {

/// Every way in which one call of a recorded sequence may fail.
inline std::vector<faults::Plan> plansFor(const std::vector<std::string>& calls)
{
    std::vector<faults::Plan> plans;
    std::map<std::string, std::size_t> occurrences;
    for (const std::string& call : calls) {
        const std::size_t occurrence = ++occurrences[call];
        for (const int errorNumber : faults::plausibleErrors(call)) {
            plans.push_back({.call = call, .occurrence = occurrence, .times = 1, .errorNumber = errorNumber});
            if (errorNumber == EINTR) // retried for ever if it never ended
                continue;
            plans.push_back(
                {.call = call, .occurrence = occurrence, .times = faults::forEver, .errorNumber = errorNumber});
            if (call != "openat") // which would leave us without what it opened
                plans.push_back({.call = call,
                                 .occurrence = occurrence,
                                 .times = 1,
                                 .errorNumber = errorNumber,
                                 .happensFirst = true});
        }
    }
    return plans;
}

/// Every call at which the disk may die, after which all others fail too.
inline std::vector<faults::Plan> deathsDuring(const std::vector<std::string>& calls)
{
    std::vector<faults::Plan> plans;
    for (std::size_t number = 1; number <= calls.size(); ++number)
        for (const int errorNumber : {EIO, ENODEV, ENXIO, ENOTCONN, ESHUTDOWN})
            plans.push_back({.call = "", .occurrence = number, .times = faults::forEver, .errorNumber = errorNumber});
    return plans;
}

inline std::string describe(const faults::Plan& plan)
{
    return (plan.call.empty() ? "every call" : plan.call) + " from occurrence " + std::to_string(plan.occurrence) +
           (plan.times == 1 ? " once" : " for ever") + (plan.happensFirst ? ", done but" : "") + " with " +
           ::strerrorname_np(plan.errorNumber);
}

} // namespace reelkeep
