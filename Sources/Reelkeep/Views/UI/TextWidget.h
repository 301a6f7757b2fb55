#pragma once

#include "UI/Design.h"
#include "UI/Readable.h"

#include <QTextLayout>
#include <QWidget>

#include <algorithm>

namespace reelkeep {

class FocusRing;

/// The colour of a text: one of the three levels of the palette, or an accent.
struct TextColor {
    enum class Level { primary, secondary, tertiary, accent } level = Level::primary;
    QColor accent = {};

    QColor resolved(const Appearance& appearance) const;
};

/// Plain text that wraps between words, and inside a word that is too wide alone. Its ideal width is that of the
/// unwrapped text. Control characters are drawn as symbols; the text itself is never changed.
///
/// A selectable one can be selected with mouse and keyboard and copied: always the exact characters, even those that a
/// line limit hides.
class TextWidget : public QWidget, public Readable {
    Q_OBJECT

public:
    TextWidget();

    const QString& text() const { return shownText; }
    void setText(const QString& text);
    void setStyle(const TypeStyle& style);
    const TypeStyle& style() const { return typeStyle; }
    void setColor(const TextColor& color);
    const TextColor& color() const { return textColor; }
    void setAlignment(Qt::Alignment alignment);
    /// Further lines are cut off, with an ellipsis at the end of the last; a tool tip then shows all of it. 0 for no
    /// limit.
    void setLineLimit(int lines);
    /// Wider than this it wraps. Device-independent pixels.
    void setMaximumTextWidth(int width);

    /// What screen readers jump to from title to title.
    void setHeading(bool heading) { isTitle = heading; }
    bool isHeading() const { return isTitle; }

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
    /// Puts the selection, or the whole text if nothing is selected, on the clipboard.
    void copy() const;

    /// Whether the current size cuts anything off (for tests).
    bool isCut() const;
    /// The bounds of a character, and the position of the character at a point, in the widget's coordinates.
    QRectF characterRect(int position) const;
    int positionAt(QPointF point) const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    int readableWidth() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void textChanged();
    void measure() const;
    void layOut(int width) const;
    int breakLines(QTextOption::WrapMode wrapMode, double width) const;
    int shownLineCount() const;
    double lineTop(int line) const;
    QList<QTextLayout::FormatRange> selectionIn(const QTextLayout& part, int start) const;

    QString shownText;
    TypeStyle typeStyle;
    QFont typeFont;
    double lineHeight;
    double leading; ///< From the top of a line to that of its letters.
    TextColor textColor;
    Qt::Alignment alignment = Qt::AlignLeft;
    int lineLimit = 0;
    int maximumTextWidth = QWIDGETSIZE_MAX;
    FocusRing* focusRing = nullptr;
    bool isTitle = false;
    bool selectable = false;
    bool selecting = false;
    int selectionStart = 0;
    int selectionEnd = 0;
    mutable int idealWidth = 0; ///< Of the whole text in one line.
    mutable int longestWord = 0;
    mutable bool isMeasured = false;

    /// The lines at `layoutWidth`. Its text is `shownText` with control characters replaced one for one by symbols.
    mutable QTextLayout lines;
    mutable int layoutWidth = -1;
    /// Drawn instead of the last line if the line limit cuts the text: the rest of the text from `endingStart`, elided.
    mutable QTextLayout ending;
    mutable int endingStart = -1; ///< Negative while the text is not cut.
};

} // namespace reelkeep
