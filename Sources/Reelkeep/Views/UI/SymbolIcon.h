#pragma once

#include <QIcon>

namespace reelkeep {

/// A symbol as an icon for the toolkit's own widgets. It is drawn in the colours of the palette of that moment, and
/// fills a square of any size, so that icons are aligned. `name` is an alias in Symbols.qrc.
QIcon symbolIcon(const char* name);

} // namespace reelkeep
