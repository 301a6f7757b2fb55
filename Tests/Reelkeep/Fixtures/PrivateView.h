#pragma once

namespace reelkeep {

/// Gives this process mounts of its own, which go when it and the programs it started have ended. False if it may not.
///
/// A second process keeps them until then. Otherwise a killed test could leave the driver of an NTFS disk as the last
/// user of its own mount: it would then be asked to unmount itself while it exits, and neither ever ends.
bool takePrivateView();

} // namespace reelkeep
