#pragma once

#include <QScreen>
#include <QWidget>

namespace reelkeep {

/// The largest content with which a window fits its screen. The size of title bar and borders is not known before the
/// window is shown, so it is estimated. Device-independent pixels; interface thread only.
inline QSize availableSize(const QWidget& window)
{
    constexpr QSize estimatedFrame(8, 40);
    return window.screen()->availableSize() - estimatedFrame;
}

} // namespace reelkeep
