#pragma once

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

namespace reelkeep {

/// The largest content with which a window fits its screen. The size of title bar and borders is not known before the
/// window is shown, so it is estimated. So are the panels on Wayland, which reports the whole screen as available: a
/// desktop that centres a window taller than what is left moves its title bar out of sight. Device-independent pixels;
/// interface thread only.
inline QSize availableSize(const QWidget& window)
{
    constexpr QSize estimatedFrame(8, 40);
    const QSize estimatedPanels(0, QGuiApplication::platformName().startsWith(QLatin1String("wayland")) ? 48 : 0);
    return window.screen()->availableSize() - estimatedFrame - estimatedPanels;
}

} // namespace reelkeep
