#pragma once

#include <functional>

namespace reelkeep {

/// Lets the event loop turn until `condition` holds. False when it does not within half a minute.
bool waitUntil(const std::function<bool()>& condition);

/// Lets the event loop turn until nothing is left to do that was posted before.
void letEventsPass();

} // namespace reelkeep
