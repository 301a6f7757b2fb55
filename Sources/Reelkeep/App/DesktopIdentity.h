#pragma once

namespace reelkeep {

/// Identifies this process to the desktop as the installed application, so that windows, icon and menu entry belong
/// together under Wayland and X11. Call it before the first window, on the interface thread.
void identifyToDesktop();

} // namespace reelkeep
