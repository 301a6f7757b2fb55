#include "UI/RowList.h"

#include "UI/Design.h"
#include "UI/FocusRing.h"
#include "UI/OverlayScrollBar.h"

#include <QEvent>
#include <QPainter>
#include <QScrollBar>

#include <algorithm>
#include <utility>

namespace reelkeep {

namespace {

/// Enough for several views, so that scrolling back and forth measures little.
constexpr std::size_t mostHeightsKept = 1000;

} // namespace

RowList::RowList(Source rowSource, QWidget* parent)
    : QAbstractScrollArea(parent), source(std::move(rowSource)), ring(new FocusRing(this)), edges{padding}
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
    return {measure::listHeight, scaledWithFont(measure::listHeight)};
}

QSize RowList::minimumSizeHint() const
{
    return {measure::listHeight / 2, scaledWithFont(measure::listHeight)};
}

int RowList::availableHeight() const
{
    return std::max(1, viewport()->height() - 2 * padding);
}

int RowList::availableWidth() const
{
    return viewport()->width() - 2 * padding;
}

void RowList::reload(std::size_t newCount, const Moved& moved)
{
    const int value = verticalScrollBar()->value();
    const int topmost = count > 0 ? moved(value / stepsPerRow) : -1;
    const int followed = count > 0 ? moved(current) : -1;
    count = int(newCount);
    current = followed >= 0 ? followed : count > 0 ? std::max(0, topmost) : -1;
    for (RowWidget& widget : widgets)
        widget.shownIndex = -1;
    measure();
    verticalScrollBar()->setValue(topmost >= 0 ? topmost * stepsPerRow + value % stepsPerRow : 0);
}

int RowList::heightOf(int row)
{
    if (const auto known = heights.find(row); known != heights.end())
        return known->second;
    if (heights.size() >= mostHeightsKept)
        heights.clear();
    measuringRow.show(std::size_t(row));
    // Layouts learn of a changed text by an event, which would come too late.
    for (QWidget* part : measuringRow.widget->findChildren<QWidget*>())
        part->updateGeometry();
    const int height = std::max(minimumRowHeight, measuringRow.widget->heightForWidth(availableWidth()));
    heights.emplace(row, height);
    return height;
}

RowList::Position RowList::position()
{
    const int value = verticalScrollBar()->value();
    if (value >= verticalScrollBar()->maximum())
        return last;
    const int row = value / stepsPerRow;
    return {row, value % stepsPerRow * heightOf(row) / stepsPerRow};
}

/// The position with the end of `row` at the lower edge, or the beginning of the list if that is in view then.
RowList::Position RowList::positionEndingWith(int row)
{
    for (int room = availableHeight();; --row) {
        const int height = heightOf(row);
        if (height >= room)
            return {row, height - room};
        if (row == 0)
            return {};
        room -= height;
    }
}

int RowList::scrollValue(const Position& place, Rounding rounding)
{
    const int height = heightOf(place.row);
    return place.row * stepsPerRow +
           (place.offset * stepsPerRow + (rounding == Rounding::up ? height - 1 : 0)) / height;
}

/// Brings the scroll range and the number of row widgets up to date with the size, the font and the records.
void RowList::measure()
{
    heights.clear();
    const int most = std::min(count, viewport()->height() / minimumRowHeight + 2);
    while (int(widgets.size()) < most) {
        widgets.push_back({source.makeRow()});
        widgets.back().row.widget->setParent(viewport());
    }
    last = count > 0 ? positionEndingWith(count - 1) : Position{};
    const int maximum = count > 0 ? scrollValue(last, Rounding::up) : 0;
    verticalScrollBar()->setPageStep(count * stepsPerRow - maximum);
    verticalScrollBar()->setSingleStep(stepsPerRow / 2);
    verticalScrollBar()->setRange(0, maximum);
    placeRows();
    viewport()->update();
}

QRect RowList::rowRect(int row) const
{
    const int index = row - firstInView;
    const int shown = int(edges.size()) - 1;
    if (index >= 0 && index < shown)
        return {padding, edges[std::size_t(index)], availableWidth(),
                edges[std::size_t(index) + 1] - edges[std::size_t(index)]};
    const int top =
        index < 0 ? edges.front() + index * minimumRowHeight : edges.back() + (index - shown) * minimumRowHeight;
    return {padding, top, availableWidth(), minimumRowHeight};
}

int RowList::rowAt(QPoint point) const
{
    const auto below = std::upper_bound(edges.begin(), edges.end(), point.y());
    return below == edges.begin() || below == edges.end() ? -1 : firstInView + int(below - edges.begin()) - 1;
}

void RowList::placeRows()
{
    const Position topmost = count > 0 ? position() : Position{};
    int row = topmost.row;
    int top = padding - topmost.offset;
    while (top > 0 && row > 0)
        top -= heightOf(--row);
    firstInView = row;
    edges = {top};
    for (; row < count && top < viewport()->height(); ++row) {
        top += heightOf(row);
        edges.push_back(top);
    }
    // A row keeps its widget while it stays in view, and with it the text selected in it.
    const int built = int(widgets.size());
    for (int slot = 0; slot < built; ++slot) {
        RowWidget& widget = widgets[std::size_t(slot)];
        const int index = firstInView + (slot - firstInView % built + built) % built;
        if (index < row && widget.shownIndex != index) {
            widget.row.show(std::size_t(index));
            widget.shownIndex = index;
        }
        widget.row.widget->setGeometry(rowRect(index));
        widget.row.widget->setVisible(index < row);
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
    const Background& ground = plate::list.background;
    paint(painter, viewport()->rect(), ground, appearance);
    painter.setClipPath(roundedOutline(painter, viewport()->rect(), ground.radius, hairline(painter)));
    for (int row = std::max(1, firstInView); row < firstInView + int(edges.size()) - 1; ++row) {
        const QRectF line(padding, rowRect(row).top(), availableWidth(), hairline(painter));
        paint(painter, line, plate::listSeparator.background, appearance);
    }
    if (current >= 0 && hasFocus() && FocusRing::belongsAround(*this))
        paintFocusRing(painter, rowRect(current), measure::rowRadius, appearance);
}

} // namespace reelkeep
