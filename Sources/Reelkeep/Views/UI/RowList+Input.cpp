#include "UI/RowList.h"

#include "UI/Appearance.h"
#include "UI/FocusRing.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>

namespace reelkeep {

void RowList::setCurrentRow(int row)
{
    if (count == 0)
        return;
    current = std::clamp(row, 0, count - 1);
    ring->setBelongs(true);
    revealRow(current);
    viewport()->update();
    announceCurrentRow();
}

void RowList::announceCurrentRow()
{
    if (current < 0 || !hasFocus())
        return;
    QAccessibleEvent event(this, QAccessible::Focus);
    event.setChild(current);
    QAccessible::updateAccessibility(&event);
}

/// Scrolls no further than it takes to show the whole row, or to fill the view with a row higher than that.
void RowList::revealRow(int row)
{
    const int atTop = row * stepsPerRow;
    const int atBottom = scrollValue(positionEndingWith(row), Rounding::up);
    QScrollBar* bar = verticalScrollBar();
    bar->setValue(std::clamp(bar->value(), std::min(atTop, atBottom), std::max(atTop, atBottom)));
}

/// Scrolls by pixels, whatever the heights of the rows on the way: no part of a row is skipped.
void RowList::scrollBy(int pixels)
{
    Position place = position();
    place.offset += pixels;
    while (place.offset < 0 && place.row > 0)
        place.offset += heightOf(--place.row);
    while (place.row < last.row && place.offset >= heightOf(place.row))
        place.offset -= heightOf(place.row++);
    // Rounded onwards, so that the smallest scroll moves something.
    verticalScrollBar()->setValue(scrollValue(place, pixels > 0 ? Rounding::up : Rounding::down));
}

void RowList::wheelEvent(QWheelEvent* event)
{
    constexpr int notch = 120;
    const int angle = event->angleDelta().y();
    const QScrollBar* bar = verticalScrollBar();
    if (angle == 0 || bar->value() == (angle > 0 ? bar->minimum() : bar->maximum())) {
        event->ignore(); // The window around the list scrolls then.
        return;
    }
    wheelRemainder += angle * QApplication::wheelScrollLines() * (scaledWithFont(minimumRowHeight) / 2);
    scrollBy(-wheelRemainder / notch);
    wheelRemainder %= notch;
}

/// Makes `row` current. Scrolls by `pixels` instead while the current row is higher than the view and goes on there.
void RowList::go(int row, int pixels)
{
    const QRect place = rowRect(current);
    const int hidden = pixels > 0 ? place.bottom() + 1 - padding - availableHeight() : padding - place.top();
    if (place.height() > availableHeight() && hidden > 0)
        scrollBy(std::clamp(pixels, -hidden, hidden));
    else
        setCurrentRow(row);
}

/// The row at the other end of a view with `row` at its edge.
int RowList::rowAPageFrom(int row, int direction)
{
    int room = availableHeight() - heightOf(row);
    int reached = row + direction;
    for (int next = reached; next >= 0 && next < count && (room -= heightOf(next)) >= 0; next += direction)
        reached = next;
    return reached;
}

void RowList::keyPressEvent(QKeyEvent* event)
{
    if (current < 0) {
        event->ignore();
        return;
    }
    if (event->matches(QKeySequence::Copy)) {
        QApplication::clipboard()->setText(source.copiedText(std::size_t(current)));
        return;
    }
    const int step = scaledWithFont(minimumRowHeight);
    switch (event->key()) {
    case Qt::Key_Up:
        return go(current - 1, -step);
    case Qt::Key_Down:
        return go(current + 1, step);
    case Qt::Key_PageUp:
        return go(rowAPageFrom(current, -1), -availableHeight());
    case Qt::Key_PageDown:
        return go(rowAPageFrom(current, 1), availableHeight());
    case Qt::Key_Home:
        return setCurrentRow(0);
    case Qt::Key_End:
        return setCurrentRow(count - 1);
    default:
        event->ignore();
    }
}

void RowList::mousePressEvent(QMouseEvent* event)
{
    if (const int row = rowAt(event->position().toPoint()); row >= 0) {
        setCurrentRow(row);
        ring->setBelongs(false);
    }
}

void RowList::focusInEvent(QFocusEvent* event)
{
    // A click chooses a row by itself and must find it under the mouse; another window or a menu only lent the focus.
    const Qt::FocusReason reason = event->reason();
    const bool isLed =
        reason != Qt::MouseFocusReason && reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason;
    if (isLed && current >= 0)
        revealRow(current);
    viewport()->update();
    announceCurrentRow();
    QAbstractScrollArea::focusInEvent(event);
}

void RowList::focusOutEvent(QFocusEvent* event)
{
    viewport()->update();
    QAbstractScrollArea::focusOutEvent(event);
}

} // namespace reelkeep
