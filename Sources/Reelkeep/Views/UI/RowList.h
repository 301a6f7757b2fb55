#pragma once

#include <QAbstractScrollArea>

#include <cstddef>
#include <functional>
#include <unordered_map>
#include <vector>

namespace reelkeep {

class FocusRing;

/// A list whose rows are as high as their own contents need. It builds widgets for the rows in view only, reuses them
/// while it scrolls, and measures no row that is far from the view. Its scroll bar therefore counts rows, each in a
/// fixed number of steps, instead of pixels.
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
        std::function<QStringList(std::size_t index)> description; ///< The parts of a row that a screen reader reads.
        std::function<QString(std::size_t index)> copiedText;      ///< What Ctrl+C puts on the clipboard.
    };
    /// The row that shows a record now that was in `row` before; -1 if it is gone.
    using Moved = std::function<int(int row)>;

    explicit RowList(Source rowSource, QWidget* parent = nullptr);

    /// Shows other records. The topmost row and the current one are followed to where `moved` finds them; without the
    /// topmost the list starts from its top.
    void reload(
        std::size_t newCount, const Moved& moved = [](int) { return -1; });

    int rowCount() const { return count; }
    int currentRow() const { return current; }
    void setCurrentRow(int row);
    QStringList description(int row) const { return source.description(std::size_t(row)); }
    /// The place of a row in the viewport. For a row out of view it is an estimate, out of view too.
    QRect rowRect(int row) const;
    /// The row in view at a point, or -1.
    int rowAt(QPoint point) const;
    /// How many row widgets exist (for tests).
    std::size_t builtRowCount() const { return widgets.size(); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    struct RowWidget {
        Row row;
        int shownIndex = -1;
    };
    /// What stands at the upper edge: a row, and how many of its pixels have been scrolled past.
    struct Position {
        int row = 0;
        int offset = 0;
    };
    enum class Rounding { down, up };

    static constexpr int padding = 10;
    /// The height of a row of one line each. Four of them fit into the smallest list.
    static constexpr int minimumRowHeight = 49;
    /// The scroll bar's steps for one row: a list of plain rows scrolls by pixels.
    static constexpr int stepsPerRow = minimumRowHeight;

    int availableHeight() const;
    int availableWidth() const;
    int heightOf(int row);
    Position position();
    Position positionEndingWith(int row);
    int scrollValue(const Position& place, Rounding rounding);
    void measure();
    void placeRows();
    void revealRow(int row);
    void announceCurrentRow();
    void scrollBy(int pixels);
    void go(int row, int pixels);
    int rowAPageFrom(int row, int direction);

    Source source;
    FocusRing* ring;
    int count = 0;
    int current = -1;
    Row measuringRow;
    std::unordered_map<int, int> heights; ///< Of rows measured since width, font or records last changed.
    Position last;                        ///< The position at the end of the list.
    std::vector<RowWidget> widgets;
    int firstInView = 0;
    std::vector<int> edges; ///< The upper edge of each row in view, and the lower edge of the last.
    int wheelRemainder = 0; ///< Eighths of degrees times pixels, too little so far for a pixel.
};

} // namespace reelkeep
