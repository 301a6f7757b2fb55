#pragma once

#include <functional>

namespace reelkeep {

/// Runs the event loop until `condition` holds. False if it does not within half a minute.
bool waitUntil(const std::function<bool()>& condition);

/// Runs the event loop until all events that were posted before are handled.
void letEventsPass();

} // namespace reelkeep
