#pragma once

#include <QAbstractScrollArea>

#include <cstddef>
#include <functional>
#include <vector>

namespace reelkeep {

/// A list that builds only the rows in view and uses them again while it scrolls. All rows have one height: that of the
/// row that needs most.
class RowList : public QAbstractScrollArea {
    Q_OBJECT

public:
    /// A row widget, and how to make it show the record at an index.
    struct Row {
        QWidget* widget = nullptr;
        std::function<void(std::size_t index)> show;
    };
    /// What the list needs to know of its records.
    struct Source {
        std::function<Row()> makeRow;
        std::function<QString(std::size_t index)> description; ///< What a screen reader says for a row.
        std::function<QString(std::size_t index)> copiedText;  ///< What Ctrl+C puts on the clipboard.
    };

    explicit RowList(Source rowSource, QWidget* parent = nullptr);

    /// The records are others now: shows them from the top. `tallest` is the index of the one that needs most room.
    void reload(std::size_t count, std::size_t tallest);

    int rowCount() const { return int(count); }
    int currentRow() const { return current; }
    void setCurrentRow(int row);
    QString description(int row) const { return source.description(std::size_t(row)); }
    /// Where a row stands in the viewport, also outside of what is visible.
    QRect rowRect(int row) const;
    int rowAt(QPoint place) const;
    /// How many row widgets exist (tests ask this).
    std::size_t builtRowCount() const { return rows.size(); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    struct Slot {
        Row row;
        int shownIndex = -1;
    };
    void measure();
    void placeRows();
    void revealRow(int row);

    Source source;
    std::size_t count = 0;
    std::size_t tallestRow = 0;
    int rowHeight = 49;
    int current = -1;
    Row measuringRow;
    std::vector<Slot> rows;
};

} // namespace reelkeep
