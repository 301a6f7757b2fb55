#pragma once

namespace reelkeep {

/// Keeps the D-Bus library from starting a session bus where the desktop has none: it would outlive the program and
/// leave files in the user's home. To be called before anything reaches for a bus.
void doWithoutMissingSessionBus();

} // namespace reelkeep
