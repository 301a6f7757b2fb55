#pragma once

#include "UI/Readable.h"

#include <QLayout>
#include <QList>
#include <QWidget>

#include <optional>
#include <vector>

namespace reelkeep {

/// How a stack places its children along an axis.
struct Arrangement {
    Qt::Orientation axis = Qt::Vertical;
    int spacing = 8;
    /// Across the axis: leading (left, top) or center.
    Qt::AlignmentFlag alignment = Qt::AlignLeading;
    /// The width it needs to be chosen: enough that nothing wraps, or just enough that everything stays readable.
    enum class Room { ideal, readable } room = Room::ideal;
};

/// A row or a column that gives every child its ideal width if there is room. Spare width goes to children that expand,
/// then to spacers. If width is short, the children that can shrink share it evenly, with two exceptions: a child that
/// lacks only a little keeps its ideal width, and no child becomes unreadable while another can still shrink. Heights
/// follow from widths.
///
/// Of several arrangements it uses the first that fits.
class StackLayout : public QLayout, public Readable {
public:
    explicit StackLayout(std::vector<Arrangement> choices);
    ~StackLayout() override;

    /// Takes the width that no child wants.
    void addSpacer();
    /// Takes all the width on offer, even if no child expands.
    void setFillsWidth(bool fills) { fillsWidth = fills; }
    /// Wider than this, the stack stays at the leading edge. Device-independent pixels.
    void setMaximumContentWidth(int width) { maximumContentWidth = width; }

    /// A lower column is centred in this height. Design points, scaled with the user's font.
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

    /// The arrangement used at a width.
    const Arrangement& arrangement(int width) const;
    /// The width at which nothing wraps.
    int idealWidth(const Arrangement& arrangement) const;
    int readableWidth() const override;

private:
    std::vector<QLayoutItem*> shown(const Arrangement& arrangement) const;
    /// The width of all children together, each measured by `measure`.
    int widthOf(const Arrangement& arrangement, int (*measure)(QLayoutItem*)) const;
    bool hasRoom(const Arrangement& arrangement, int width) const;
    std::vector<int> widths(const Arrangement& arrangement, const std::vector<QLayoutItem*>& row, int available) const;
    QSize marginSize() const;
    int innerWidth(int width) const;
    /// The height of the children at a width, without margins.
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
