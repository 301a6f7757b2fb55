#include "UI/TextWidget.h"

#include "UI/FocusRing.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>

#include <algorithm>

namespace reelkeep {

void TextWidget::setSelectable(bool nowSelectable)
{
    if (selectable == nowSelectable)
        return;
    selectable = nowSelectable;
    if (selectable && !focusRing)
        focusRing = new FocusRing(this, 1);
    setFocusPolicy(selectable ? Qt::StrongFocus : Qt::NoFocus);
    setAttribute(Qt::WA_Hover, selectable);
    setCursor(selectable ? Qt::IBeamCursor : Qt::ArrowCursor);
    if (!selectable)
        clearSelection();
}

QString TextWidget::selectedText() const
{
    return shownText.mid(selectionBegin(), selectionFinish() - selectionBegin());
}

void TextWidget::select(int from, int to)
{
    selectionStart = std::clamp(from, 0, int(shownText.size()));
    selectionEnd = std::clamp(to, 0, int(shownText.size()));
    update();
}

void TextWidget::selectAll()
{
    select(0, int(shownText.size()));
}

void TextWidget::clearSelection()
{
    select(selectionEnd, selectionEnd);
}

void TextWidget::copy() const
{
    QApplication::clipboard()->setText(hasSelection() ? selectedText() : shownText);
}

void TextWidget::mousePressEvent(QMouseEvent* event)
{
    if (!selectable || event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    const int position = positionAt(event->position());
    select(event->modifiers().testFlag(Qt::ShiftModifier) ? selectionStart : position, position);
    selecting = true;
}

void TextWidget::mouseMoveEvent(QMouseEvent* event)
{
    if (selecting)
        select(selectionStart, positionAt(event->position()));
    else
        event->ignore();
}

void TextWidget::mouseReleaseEvent(QMouseEvent* event)
{
    if (!selecting) {
        event->ignore();
        return;
    }
    selecting = false;
    // As usual on X11, the middle button pastes what was selected with the mouse.
    if (QClipboard* clipboard = QApplication::clipboard(); clipboard->supportsSelection() && hasSelection())
        clipboard->setText(selectedText(), QClipboard::Selection);
}

void TextWidget::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (selectable)
        selectAll();
    else
        event->ignore();
}

void TextWidget::keyPressEvent(QKeyEvent* event)
{
    if (!selectable) {
        QWidget::keyPressEvent(event);
        return;
    }
    const int end = int(shownText.size());
    if (event->matches(QKeySequence::Copy))
        copy();
    else if (event->matches(QKeySequence::SelectAll))
        selectAll();
    else if (event->matches(QKeySequence::SelectNextChar))
        select(selectionStart, lines.nextCursorPosition(selectionEnd));
    else if (event->matches(QKeySequence::SelectPreviousChar))
        select(selectionStart, lines.previousCursorPosition(selectionEnd));
    else if (event->matches(QKeySequence::SelectStartOfLine))
        select(selectionStart, 0);
    else if (event->matches(QKeySequence::SelectEndOfLine))
        select(selectionStart, end);
    else if (event->matches(QKeySequence::MoveToStartOfLine))
        select(0, 0);
    else if (event->matches(QKeySequence::MoveToEndOfLine))
        select(end, end);
    else
        QWidget::keyPressEvent(event);
}

void TextWidget::contextMenuEvent(QContextMenuEvent* event)
{
    if (!selectable) {
        event->ignore();
        return;
    }
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(tr("Copiar"), this, &TextWidget::copy);
    menu->addAction(tr("Seleccionar todo"), this, &TextWidget::selectAll);
    menu->popup(event->globalPos());
}

void TextWidget::focusInEvent(QFocusEvent* event)
{
    update();
    QWidget::focusInEvent(event);
}

void TextWidget::focusOutEvent(QFocusEvent* event)
{
    if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason)
        clearSelection();
    update();
    QWidget::focusOutEvent(event);
}

} // namespace reelkeep
