#pragma once

namespace reelkeep {

/// Tells the desktop which of its installed applications this process is, so that windows, icon and entry in the menu
/// belong together under Wayland and X11 alike. Before the first window. Interface thread.
void identifyToDesktop();

} // namespace reelkeep
