#pragma once

#include <QString>

class QHelpEvent;
class QWidget;

namespace reelkeep {

/// Control characters, which file names may contain, each replaced by one symbol: positions in the result are positions
/// in the text.
QString withVisibleControls(QString text);

/// Shows a text that `widget` has to cut, whole and as plain text, in a tool tip that fits on the screen.
void showWholeText(const QString& text, const QHelpEvent& event, QWidget& widget);

} // namespace reelkeep
