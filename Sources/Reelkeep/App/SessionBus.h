#pragma once

namespace reelkeep {

/// Keeps the D-Bus library from starting a session bus if the desktop has none: it would outlive the program and
/// leave files in the user's home. Call it before anything uses a bus.
void doWithoutMissingSessionBus();

} // namespace reelkeep
