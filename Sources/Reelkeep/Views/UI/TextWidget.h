#pragma once

#include "UI/Design.h"
#include "UI/Readable.h"

#include <QWidget>

#include <optional>
#include <vector>

namespace reelkeep {

class FocusRing;

/// The colour of a text: one of the three levels of the palette, or an accent.
struct TextColor {
    enum class Level { primary, secondary, tertiary, accent } level = Level::primary;
    QColor accent = {};

    QColor resolved(const Appearance& appearance) const;
};

/// Plain text that wraps between words, and inside a word where the word alone is too wide. Its ideal width is that of
/// the unwrapped text. Control characters are shown as their symbols; the text itself is never changed.
///
/// A selectable one can be selected with the mouse and the keyboard and copied, always as the exact characters, also
/// where the end is cut off on screen.
class TextWidget : public QWidget, public Readable {
    Q_OBJECT

public:
    explicit TextWidget(QWidget* parent = nullptr);

    const QString& text() const { return shownText; }
    void setText(const QString& text);
    void setStyle(const TypeStyle& style);
    const TypeStyle& style() const { return typeStyle; }
    void setColor(const TextColor& color);
    const TextColor& color() const { return textColor; }
    void setAlignment(Qt::Alignment alignment);
    /// More lines than this are cut off, with an ellipsis at the end of the last. 0 for no limit.
    void setLineLimit(int lines);
    /// Wider than this it wraps. Device-independent pixels.
    void setMaximumTextWidth(int width);

    void setSelectable(bool selectable);
    bool isSelectable() const { return selectable; }
    bool hasSelection() const { return selectionStart != selectionEnd; }
    QString selectedText() const;
    int selectionBegin() const { return std::min(selectionStart, selectionEnd); }
    int selectionFinish() const { return std::max(selectionStart, selectionEnd); }
    int cursorPosition() const { return selectionEnd; }
    void select(int from, int to);
    void selectAll();
    void clearSelection();
    /// Puts the selection, or the whole text where nothing is selected, on the clipboard.
    void copy() const;

    /// Whether the present size cuts anything off (tests ask this).
    bool isCut() const;
    /// Where a character stands, and which one stands at a place, in the widget's coordinates.
    QRectF characterRect(int position) const;
    int positionAt(QPointF place) const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    int readableWidth() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    struct Line {
        int start;
        int length;
    };
    std::vector<Line> lines(int width) const;
    const std::vector<Line>& linesNow() const;
    QString visibleText(const Line& line, bool isLastShown) const;
    int shownLineCount(std::size_t lineCount) const;
    double lineLeft(const QString& lineText) const;
    void textChanged();
    void measure() const;
    void drawLine(QPainter& painter, const Line& line, const QString& lineText, double top) const;

    QString shownText;
    QString drawnText; ///< `shownText`, control characters replaced one for one by their symbols.
    TypeStyle typeStyle;
    QFont typeFont;
    double lineHeight;
    TextColor textColor;
    Qt::Alignment alignment = Qt::AlignLeft;
    int lineLimit = 0;
    int maximumTextWidth = QWIDGETSIZE_MAX;
    FocusRing* focusRing = nullptr;
    bool selectable = false;
    bool selecting = false;
    int selectionStart = 0;
    int selectionEnd = 0;
    mutable int idealWidth = 0; ///< Of the whole text in one line.
    mutable int longestWord = 0;
    mutable bool isMeasured = false;
    mutable int linesWidth = -1;
    mutable std::vector<Line> cachedLines;
};

} // namespace reelkeep
