#pragma once

class QAccessibleInterface;

namespace reelkeep {

class RowList;

/// What screen readers know of a list. The caller owns it.
QAccessibleInterface* makeAccessible(RowList* list);

} // namespace reelkeep
