#pragma once

#include "Files/FileError.h"
#include "Fixtures/Faults.h"
#include "Fixtures/RealFiles.h"

#include <string>
#include <vector>

namespace reelkeep {

/// The outcome of a copy.
struct FaultyCopy {
    std::string failure; ///< The text of the error, or an empty one.
    int errorNumber = 0;
    std::vector<std::string> calls; ///< The functions called, in order.
};

/// Copies one file while system calls fail as planned.
inline FaultyCopy copyWith(const faults::Plan& plan, const Location& source, const Location& target)
{
    FaultyCopy copy;
    faults::arm(plan);
    try {
        copyFile(source, target);
    } catch (const FileError& error) {
        copy.failure = error.what();
        copy.errorNumber = error.code();
    }
    copy.calls = faults::disarm();
    return copy;
}

} // namespace reelkeep
