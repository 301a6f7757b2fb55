#pragma once

#include <exception>
#include <stop_token>

namespace reelkeep {

/// Thrown by long operations once their stop token was triggered; never shown to the user.
class Stopped : public std::exception {
public:
    const char* what() const noexcept override { return "stopped"; }
};

inline void throwIfStopped(const std::stop_token& stop)
{
    if (stop.stop_requested())
        throw Stopped();
}

} // namespace reelkeep
