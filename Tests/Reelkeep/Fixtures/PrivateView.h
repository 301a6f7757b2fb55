#pragma once

namespace reelkeep {

/// Gives this process private mounts, which end with it and the programs it started. False if it may not.
///
/// A second process, the keeper, keeps them until then. Otherwise a killed test could leave the driver of an NTFS disk
/// as the last user of its own mount: its exit would wait for the unmounting, and the unmounting for the driver.
bool takePrivateView();

} // namespace reelkeep
