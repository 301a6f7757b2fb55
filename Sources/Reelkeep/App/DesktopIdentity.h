#pragma once

namespace reelkeep {

/// Tells the desktop which installed application this process is, so that windows, icon and menu entry belong together,
/// under Wayland and X11. Call it before the first window, on the interface thread.
void identifyToDesktop();

} // namespace reelkeep
