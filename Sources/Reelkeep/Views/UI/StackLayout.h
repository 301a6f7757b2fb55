#pragma once

#include "UI/Readable.h"

#include <QLayout>
#include <QList>
#include <QWidget>

#include <optional>
#include <vector>

namespace reelkeep {

/// How a stack puts its children: one after the other along an axis.
struct Arrangement {
    Qt::Orientation axis = Qt::Vertical;
    int spacing = 8;
    /// Across the axis: leading (left, top) or center.
    Qt::AlignmentFlag alignment = Qt::AlignLeading;
    /// The room it must have to be taken: so much that nothing wraps, or just so much that all stays readable.
    enum class Room { ideal, readable } room = Room::ideal;
};

/// A row or a column in which every child has its ideal width where there is room, as with texts that nobody wraps
/// without need. Room that is left goes to the children that expand, and to spacers only after them; where room lacks,
/// the children that can shrink share it evenly, but for a little that lets one keep its ideal width, and for what
/// keeps all of them readable. Heights follow from widths.
///
/// Given several arrangements it takes the first that there is room for.
class StackLayout : public QLayout, public Readable {
public:
    explicit StackLayout(std::vector<Arrangement> choices);
    ~StackLayout() override;

    /// Room that grows only when nothing else wants it.
    void addSpacer();
    /// Takes all the width on offer, even where no child does.
    void setFillsWidth(bool fills) { fillsWidth = fills; }
    /// Wider than this, the stack stays at the leading edge. Device-independent pixels.
    void setMaximumContentWidth(int width) { maximumContentWidth = width; }

    /// Lower than this, a column keeps the room and stands in its middle. Design points: it grows with the user's font.
    void setMinimumContentHeight(int height) { minimumContentHeight = height; }

    void addItem(QLayoutItem* item) override;
    int count() const override { return int(items.size()); }
    QLayoutItem* itemAt(int index) const override;
    QLayoutItem* takeAt(int index) override;

    Qt::Orientations expandingDirections() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSize() const override;
    void setGeometry(const QRect& rect) override;
    void invalidate() override;

    /// The arrangement that a width leads to.
    const Arrangement& arrangement(int width) const;
    /// The width at which nothing wraps.
    int idealWidth(const Arrangement& arrangement) const;
    int readableWidth() const override;

private:
    std::vector<QLayoutItem*> shown(const Arrangement& arrangement) const;
    /// What its children need together, each measured in the same way.
    int widthOf(const Arrangement& arrangement, int (*measure)(QLayoutItem*)) const;
    bool hasRoom(const Arrangement& arrangement, int width) const;
    std::vector<int> widths(const Arrangement& arrangement, const std::vector<QLayoutItem*>& row, int available) const;
    int innerWidth(int width) const;
    /// What the children need at a width, without margins.
    int innerHeight(int width) const;
    void placeRow(const Arrangement& arrangement, const QRect& rect);
    void placeColumn(const Arrangement& arrangement, const QRect& rect);

    std::vector<Arrangement> arrangements;
    QList<QLayoutItem*> items;
    bool fillsWidth = false;
    int maximumContentWidth = QWIDGETSIZE_MAX;
    int minimumContentHeight = 0;
    mutable QSize ideal;
    mutable QSize minimum;
    mutable std::optional<Qt::Orientations> expanding;
};

} // namespace reelkeep
