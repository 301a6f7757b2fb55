#include "UI/StackLayout.h"

#include "UI/Appearance.h"
#include "UI/WidthShares.h"

#include <QSpacerItem>
#include <QWidget>

#include <algorithm>
#include <numeric>

namespace reelkeep {

namespace {

constexpr int spacerMinimum = 8;

bool isSpacer(QLayoutItem* item)
{
    return item->spacerItem() != nullptr;
}

bool expands(QLayoutItem* item, Qt::Orientation axis)
{
    return item->expandingDirections().testFlag(axis);
}

int idealWidthOf(QLayoutItem* item)
{
    return item->sizeHint().width();
}

int minimumWidthOf(QLayoutItem* item)
{
    return item->minimumSize().width();
}

int readableWidthOf(QLayoutItem* item)
{
    const QWidget* widget = item->widget();
    const auto* readable = dynamic_cast<const Readable*>(widget);
    if (!readable && widget)
        readable = dynamic_cast<const Readable*>(widget->layout());
    return std::max(minimumWidthOf(item), readable ? readable->readableWidth() : 0);
}

int maximumWidth(QLayoutItem* item)
{
    return expands(item, Qt::Horizontal) ? QWIDGETSIZE_MAX : item->sizeHint().width();
}

int heightAt(QLayoutItem* item, int width)
{
    return item->hasHeightForWidth() ? item->heightForWidth(width) : item->sizeHint().height();
}

int spacingOf(const Arrangement& arrangement, std::size_t count)
{
    return count == 0 ? 0 : arrangement.spacing * (int(count) - 1);
}

} // namespace

StackLayout::StackLayout(std::vector<Arrangement> choices) : arrangements(std::move(choices))
{
    setContentsMargins(0, 0, 0, 0);
}

StackLayout::~StackLayout()
{
    qDeleteAll(items);
}

void StackLayout::addSpacer()
{
    addItem(new QSpacerItem(spacerMinimum, 0, QSizePolicy::MinimumExpanding, QSizePolicy::Minimum));
}

void StackLayout::addItem(QLayoutItem* item)
{
    items.append(item);
    invalidate();
}

QLayoutItem* StackLayout::itemAt(int index) const
{
    return items.value(index);
}

QLayoutItem* StackLayout::takeAt(int index)
{
    return index >= 0 && index < items.size() ? items.takeAt(index) : nullptr;
}

/// The visible children, without spacers in a column.
std::vector<QLayoutItem*> StackLayout::shown(const Arrangement& arrangement) const
{
    std::vector<QLayoutItem*> row;
    std::copy_if(items.begin(), items.end(), std::back_inserter(row), [&arrangement](QLayoutItem* item) {
        return isSpacer(item) ? arrangement.axis == Qt::Horizontal : !item->isEmpty();
    });
    return row;
}

Qt::Orientations StackLayout::expandingDirections() const
{
    // Every ancestor queries this repeatedly; uncached, each query would visit the whole subtree.
    if (!expanding) {
        expanding = fillsWidth ? Qt::Horizontal : Qt::Orientations();
        for (QLayoutItem* item : shown(arrangements.front()))
            *expanding |= item->expandingDirections();
    }
    return *expanding;
}

int StackLayout::widthOf(const Arrangement& arrangement, int (*measure)(QLayoutItem*)) const
{
    const auto row = shown(arrangement);
    int width = arrangement.axis == Qt::Horizontal ? spacingOf(arrangement, row.size()) : 0;
    for (QLayoutItem* item : row) {
        const int own = measure(item);
        width = arrangement.axis == Qt::Horizontal ? width + own : std::max(width, own);
    }
    return width;
}

int StackLayout::idealWidth(const Arrangement& arrangement) const
{
    return widthOf(arrangement, idealWidthOf);
}

int StackLayout::readableWidth() const
{
    return widthOf(arrangements.back(), readableWidthOf) + marginSize().width();
}

bool StackLayout::hasRoom(const Arrangement& arrangement, int width) const
{
    // The ideal width is always readable, so words are measured only if that does not fit.
    return idealWidth(arrangement) <= width ||
           (arrangement.room == Arrangement::Room::readable && widthOf(arrangement, readableWidthOf) <= width);
}

const Arrangement& StackLayout::arrangement(int width) const
{
    return *std::find_if(arrangements.begin(), arrangements.end() - 1,
                         [&](const Arrangement& candidate) { return hasRoom(candidate, width); });
}

/// The widths of a row's children. No word is broken while another child can still shrink; spacers come last.
std::vector<int> StackLayout::widths(const Arrangement& arrangement, const std::vector<QLayoutItem*>& row,
                                     int available) const
{
    const bool staysReadable =
        idealWidth(arrangement) > available && widthOf(arrangement, readableWidthOf) <= available;
    std::vector<WidthWish> wishes;
    for (QLayoutItem* item : row) {
        if (!isSpacer(item))
            wishes.push_back(
                {staysReadable ? readableWidthOf(item) : minimumWidthOf(item), idealWidthOf(item), maximumWidth(item)});
    }
    const auto spacers = int(row.size() - wishes.size());
    int left = available - spacingOf(arrangement, row.size()) - spacers * spacerMinimum;
    const std::vector<int> shares = widthShares(wishes, left);
    left -= std::accumulate(shares.begin(), shares.end(), 0);

    std::vector<int> result;
    result.reserve(row.size());
    auto share = shares.begin();
    for (QLayoutItem* item : row)
        result.push_back(isSpacer(item) ? spacerMinimum + std::max(0, left) / spacers : *share++);
    return result;
}

QSize StackLayout::marginSize() const
{
    return QSize(0, 0).grownBy(contentsMargins());
}

int StackLayout::innerWidth(int width) const
{
    return std::min(width - marginSize().width(), maximumContentWidth);
}

int StackLayout::innerHeight(int width) const
{
    const Arrangement& chosen = arrangement(width);
    const auto row = shown(chosen);
    int height = 0;
    if (chosen.axis == Qt::Horizontal) {
        const auto widthsOfRow = widths(chosen, row, width);
        for (std::size_t index = 0; index < row.size(); ++index)
            height = std::max(height, heightAt(row[index], widthsOfRow[index]));
        return height;
    }
    height = spacingOf(chosen, row.size());
    for (QLayoutItem* item : row)
        height += heightAt(item, std::min(width, maximumWidth(item)));
    return height;
}

int StackLayout::heightForWidth(int width) const
{
    return std::max(innerHeight(innerWidth(width)), scaledWithFont(minimumContentHeight)) + marginSize().height();
}

QSize StackLayout::sizeHint() const
{
    if (!ideal.isValid()) {
        const int width = std::min(idealWidth(arrangements.front()), maximumContentWidth) + marginSize().width();
        ideal = QSize(width, heightForWidth(width));
    }
    return ideal;
}

QSize StackLayout::minimumSize() const
{
    if (!minimum.isValid()) {
        const Arrangement& narrowest = arrangements.back();
        const int width = widthOf(narrowest, minimumWidthOf);
        int height = 0;
        for (QLayoutItem* item : shown(narrowest))
            height = std::max(height, item->minimumSize().height());
        minimum = QSize(width, height) + marginSize();
    }
    return minimum;
}

void StackLayout::invalidate()
{
    ideal = minimum = QSize();
    expanding.reset();
    QLayout::invalidate();
}

void StackLayout::setGeometry(const QRect& rect)
{
    QLayout::setGeometry(rect);
    QRect inner = rect.marginsRemoved(contentsMargins());
    inner.setWidth(std::min(inner.width(), maximumContentWidth));
    const Arrangement& chosen = arrangement(inner.width());
    // Centred children are centred on each other, not in width that the stack does not need.
    if (!expandingDirections().testFlag(Qt::Horizontal))
        inner.setWidth(std::min(inner.width(), idealWidth(chosen)));
    if (chosen.axis == Qt::Horizontal)
        placeRow(chosen, inner);
    else
        placeColumn(chosen, inner);
}

void StackLayout::placeRow(const Arrangement& chosen, const QRect& rect)
{
    const auto row = shown(chosen);
    const auto widthsOfRow = widths(chosen, row, rect.width());
    int x = rect.left();
    for (std::size_t index = 0; index < row.size(); ++index) {
        const int width = widthsOfRow[index];
        const int height =
            expands(row[index], Qt::Vertical) ? rect.height() : std::min(heightAt(row[index], width), rect.height());
        // An odd point goes above: the middle of letters is below the middle of their line.
        const int y = chosen.alignment == Qt::AlignCenter ? (rect.height() - height + 1) / 2 : 0;
        row[index]->setGeometry(QRect(x, rect.top() + y, width, height));
        x += width + chosen.spacing;
    }
}

void StackLayout::placeColumn(const Arrangement& chosen, const QRect& rect)
{
    const auto column = shown(chosen);
    const int surplus = rect.height() - innerHeight(rect.width());
    const auto growing =
        int(std::count_if(column.begin(), column.end(), [](QLayoutItem* item) { return expands(item, Qt::Vertical); }));
    int y = rect.top() + (growing == 0 && minimumContentHeight > 0 ? std::max(0, surplus / 2) : 0);
    for (QLayoutItem* item : column) {
        const int width = std::min(rect.width(), maximumWidth(item));
        int height = heightAt(item, width);
        if (surplus > 0 && expands(item, Qt::Vertical))
            height += surplus / growing;
        // An odd point goes before: a text takes up to a point more than its letters do, at its end.
        const int x = chosen.alignment == Qt::AlignCenter ? (rect.width() - width + 1) / 2 : 0;
        item->setGeometry(QRect(rect.left() + x, y, width, height));
        y += height + chosen.spacing;
    }
}

} // namespace reelkeep
