#pragma once

#include <QScreen>
#include <QWidget>

namespace reelkeep {

/// How large the content of a window may be to stand on its screen with its title bar and borders, of which the desktop
/// has not told yet how much they take. Device-independent pixels; on the interface thread.
inline QSize roomOnScreen(const QWidget& window)
{
    constexpr QSize frame(8, 40);
    return window.screen()->availableSize() - frame;
}

} // namespace reelkeep
