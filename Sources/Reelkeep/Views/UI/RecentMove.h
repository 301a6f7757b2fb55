#pragma once

class QWidget;

namespace reelkeep {

/// Notes that an element has just moved to where another one was.
void markMoved(QWidget& element);

/// Whether a control is inside an element that was moved so lately that a press may be the second of a double click,
/// meant for what was there before.
bool hasJustMoved(const QWidget& control);

} // namespace reelkeep
