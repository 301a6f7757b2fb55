#include "UI/RowList.h"

#include "UI/Appearance.h"
#include "UI/OverlayScrollBar.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

#include <algorithm>
#include <utility>

namespace reelkeep {

namespace {
constexpr int padding = 10;
constexpr int minimumListHeight = 220;
constexpr int minimumRowHeight = 49;
} // namespace

RowList::RowList(Source rowSource, QWidget* parent) : QAbstractScrollArea(parent), source(std::move(rowSource))
{
    setFrameShape(QFrame::NoFrame);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setAutoFillBackground(false);
    new OverlayScrollBar(this);
    measuringRow = source.makeRow();
    measuringRow.widget->setParent(this);
    measuringRow.widget->hide();
}

QSize RowList::sizeHint() const
{
    return {minimumListHeight, besideText(minimumListHeight)};
}

QSize RowList::minimumSizeHint() const
{
    return {minimumListHeight / 2, besideText(minimumListHeight)};
}

void RowList::reload(std::size_t newCount, std::size_t tallest)
{
    count = newCount;
    tallestRow = tallest;
    current = count > 0 ? 0 : -1;
    for (Slot& slot : rows)
        slot.shownIndex = -1;
    verticalScrollBar()->setValue(0);
    measure();
}

/// Row height, scroll range and number of row widgets for the present width, font and records.
void RowList::measure()
{
    if (count > 0) {
        measuringRow.show(tallestRow);
        // What is hidden does not tell the layouts around it that it needs other room now.
        for (QWidget* part : measuringRow.widget->findChildren<QWidget*>())
            part->updateGeometry();
        const int width = viewport()->width() - 2 * padding;
        measuringRow.widget->ensurePolished();
        rowHeight = std::max(minimumRowHeight, measuringRow.widget->heightForWidth(width));
    }
    const int contentHeight = int(count) * rowHeight + 2 * padding;
    verticalScrollBar()->setRange(0, std::max(0, contentHeight - viewport()->height()));
    verticalScrollBar()->setPageStep(viewport()->height());
    verticalScrollBar()->setSingleStep(rowHeight / 2);

    const auto needed = std::min(count, std::size_t(viewport()->height() / rowHeight + 2));
    while (rows.size() < needed) {
        rows.push_back({source.makeRow()});
        rows.back().row.widget->setParent(viewport());
    }
    for (Slot& slot : rows)
        slot.shownIndex = -1;
    placeRows();
    viewport()->update();
}

QRect RowList::rowRect(int row) const
{
    return {padding, padding + row * rowHeight - verticalScrollBar()->value(), viewport()->width() - 2 * padding,
            rowHeight};
}

int RowList::rowAt(QPoint place) const
{
    const int row = (place.y() + verticalScrollBar()->value() - padding) / rowHeight;
    return row >= 0 && row < int(count) && place.y() + verticalScrollBar()->value() >= padding ? row : -1;
}

void RowList::placeRows()
{
    if (rows.empty())
        return;
    const int first = std::max(0, (verticalScrollBar()->value() - padding) / rowHeight);
    for (int index = first; index < first + int(rows.size()); ++index) {
        // A row keeps its widget while it stays in view, and with it what is selected in it.
        Slot& slot = rows[std::size_t(index) % rows.size()];
        if (index >= int(count)) {
            slot.row.widget->hide();
            slot.shownIndex = -1;
            continue;
        }
        if (slot.shownIndex != index) {
            slot.row.show(std::size_t(index));
            slot.shownIndex = index;
        }
        slot.row.widget->setGeometry(rowRect(index));
        slot.row.widget->show();
    }
}

void RowList::scrollContentsBy(int, int)
{
    placeRows();
    viewport()->update();
}

void RowList::resizeEvent(QResizeEvent*)
{
    measure();
}

void RowList::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::ApplicationFontChange || event->type() == QEvent::FontChange)
        measure();
    QAbstractScrollArea::changeEvent(event);
}

void RowList::paintEvent(QPaintEvent*)
{
    QPainter painter(viewport());
    const Appearance appearance = Appearance::of(this);
    const Background ground{.fill = Tint::listBase(), .stroke = Tint::secondary(0.15), .radius = 8};
    paint(painter, viewport()->rect(), ground, appearance);
    painter.setClipPath(roundedOutline(painter, viewport()->rect(), 8, hairline(painter)));

    const Background separator{.fill = Tint::primary(0.08)};
    const int first = rowAt({0, std::max(0, padding - verticalScrollBar()->value())});
    for (int row = std::max(1, first); row < int(count) && rowRect(row).top() < viewport()->height(); ++row) {
        const QRectF line(padding, rowRect(row).top(), rowRect(row).width(), hairline(painter));
        paint(painter, line, separator, appearance);
    }
    if (current >= 0 && hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(appearance.focusRing(), 2));
        painter.drawPath(roundedOutline(painter, rowRect(current), 6, 1));
    }
}

void RowList::setCurrentRow(int row)
{
    if (count == 0)
        return;
    current = std::clamp(row, 0, int(count) - 1);
    revealRow(current);
    viewport()->update();
    if (hasFocus()) {
        QAccessibleEvent event(this, QAccessible::Focus);
        event.setChild(current);
        QAccessible::updateAccessibility(&event);
    }
}

void RowList::revealRow(int row)
{
    const QRect place = rowRect(row);
    QScrollBar* bar = verticalScrollBar();
    if (place.top() < padding)
        bar->setValue(bar->value() + place.top() - padding);
    else if (place.bottom() > viewport()->height() - padding)
        bar->setValue(bar->value() + place.bottom() - viewport()->height() + padding);
}

void RowList::keyPressEvent(QKeyEvent* event)
{
    const int page = std::max(1, viewport()->height() / rowHeight - 1);
    if (event->matches(QKeySequence::Copy) && current >= 0) {
        QApplication::clipboard()->setText(source.copiedText(std::size_t(current)));
        return;
    }
    switch (event->key()) {
    case Qt::Key_Up:
        return setCurrentRow(current - 1);
    case Qt::Key_Down:
        return setCurrentRow(current + 1);
    case Qt::Key_PageUp:
        return setCurrentRow(current - page);
    case Qt::Key_PageDown:
        return setCurrentRow(current + page);
    case Qt::Key_Home:
        return setCurrentRow(0);
    case Qt::Key_End:
        return setCurrentRow(int(count) - 1);
    default:
        event->ignore();
    }
}

void RowList::mousePressEvent(QMouseEvent* event)
{
    if (const int row = rowAt(event->position().toPoint()); row >= 0)
        setCurrentRow(row);
}

void RowList::focusInEvent(QFocusEvent* event)
{
    setCurrentRow(current);
    QAbstractScrollArea::focusInEvent(event);
}

void RowList::focusOutEvent(QFocusEvent* event)
{
    viewport()->update();
    QAbstractScrollArea::focusOutEvent(event);
}

} // namespace reelkeep
