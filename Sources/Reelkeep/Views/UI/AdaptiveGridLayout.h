#pragma once

#include <QLayout>
#include <QList>

namespace reelkeep {

/// As many equal columns of at least a minimum width as fit, filled row by row.
class AdaptiveGridLayout : public QLayout {
public:
    AdaptiveGridLayout(int minimumColumnWidth, int gap);
    ~AdaptiveGridLayout() override;

    int columnCount(int width) const;

    void addItem(QLayoutItem* item) override;
    int count() const override { return int(items.size()); }
    QLayoutItem* itemAt(int index) const override { return items.value(index); }
    QLayoutItem* takeAt(int index) override;
    Qt::Orientations expandingDirections() const override { return Qt::Horizontal; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSize() const override;
    void setGeometry(const QRect& rect) override;

private:
    /// Places the items into a width if `apply` is set. Returns their height in either case.
    int arrange(const QRect& rect, bool apply) const;

    int minimumColumn;
    int spacingBetween;
    QList<QLayoutItem*> items;
};

} // namespace reelkeep
