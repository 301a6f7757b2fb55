#include "UI/AdaptiveGridLayout.h"

#include <algorithm>

namespace reelkeep {

AdaptiveGridLayout::AdaptiveGridLayout(int minimumColumnWidth, int gap)
    : minimumColumn(minimumColumnWidth), spacingBetween(gap)
{
    setContentsMargins(0, 0, 0, 0);
}

AdaptiveGridLayout::~AdaptiveGridLayout()
{
    qDeleteAll(items);
}

void AdaptiveGridLayout::addItem(QLayoutItem* item)
{
    items.append(item);
}

QLayoutItem* AdaptiveGridLayout::takeAt(int index)
{
    return index >= 0 && index < items.size() ? items.takeAt(index) : nullptr;
}

int AdaptiveGridLayout::columnCount(int width) const
{
    return std::max(1, (width + spacingBetween) / (minimumColumn + spacingBetween));
}

int AdaptiveGridLayout::arrange(const QRect& rect, bool apply) const
{
    const int columns = columnCount(rect.width());
    const int room = rect.width() - spacingBetween * (columns - 1);
    int y = 0;
    for (int first = 0; first < items.size(); first += columns) {
        const int end = std::min(first + columns, int(items.size()));
        // Edges are computed from the whole width, so that rounding never adds up.
        const auto left = [&](int column) { return column * spacingBetween + room * column / columns; };
        const auto width = [&](int column) { return left(column + 1) - spacingBetween - left(column); };
        int height = 0;
        for (int index = first; index < end; ++index)
            height = std::max(height, items[index]->heightForWidth(width(index - first)));
        if (apply) {
            for (int index = first; index < end; ++index)
                items[index]->setGeometry(
                    QRect(rect.left() + left(index - first), rect.top() + y, width(index - first), height));
        }
        y += height + spacingBetween;
    }
    return std::max(0, y - spacingBetween);
}

int AdaptiveGridLayout::heightForWidth(int width) const
{
    return arrange(QRect(0, 0, width, 0), false);
}

QSize AdaptiveGridLayout::sizeHint() const
{
    const int width =
        minimumColumn * int(items.size()) + spacingBetween * int(std::max<qsizetype>(0, items.size() - 1));
    return {width, heightForWidth(width)};
}

QSize AdaptiveGridLayout::minimumSize() const
{
    QSize size;
    for (QLayoutItem* item : items)
        size = size.expandedTo(item->minimumSize());
    return size;
}

void AdaptiveGridLayout::setGeometry(const QRect& rect)
{
    QLayout::setGeometry(rect);
    arrange(rect, true);
}

} // namespace reelkeep
