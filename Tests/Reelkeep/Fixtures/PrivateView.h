#pragma once

namespace reelkeep {

/// Gives this process private mounts, which end with it and the programs it started. False if it may not.
///
/// A second process, the keeper, keeps them until then. Otherwise a killed test could leave the driver of an NTFS disk
/// as the last process in its mount namespace: its exit would wait for the unmount, and the unmount for the driver.
bool takePrivateView();

} // namespace reelkeep
