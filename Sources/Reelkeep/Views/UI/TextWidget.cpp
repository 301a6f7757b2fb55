#include "UI/TextWidget.h"

#include "UI/WholeText.h"

#include <QFontMetricsF>
#include <QGlyphRun>
#include <QHelpEvent>
#include <QPainter>
#include <QRawFont>

#include <algorithm>
#include <cmath>

namespace reelkeep {

QColor TextColor::resolved(const Appearance& appearance) const
{
    switch (level) {
    case Level::primary:
        return appearance.primary();
    case Level::secondary:
        return appearance.secondary();
    case Level::tertiary:
        return appearance.tertiary();
    case Level::accent:
        return accent;
    }
    return accent;
}

TextWidget::TextWidget()
{
    QSizePolicy policy(QSizePolicy::Maximum, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    lines.setCacheEnabled(true);
    ending.setCacheEnabled(true);
    setStyle({});
}

void TextWidget::setText(const QString& text)
{
    if (text == shownText)
        return;
    shownText = text;
    selectionStart = selectionEnd = 0;
    textChanged();
}

void TextWidget::setStyle(const TypeStyle& style)
{
    typeStyle = style;
    typeFont = style.font();
    lineHeight = style.height();
    leading = (lineHeight - QFontMetricsF(typeFont).height()) / 2;
    textChanged();
}

void TextWidget::setColor(const TextColor& color)
{
    textColor = color;
    update();
}

void TextWidget::setAlignment(Qt::Alignment newAlignment)
{
    alignment = newAlignment;
    textChanged();
}

void TextWidget::setLineLimit(int limit)
{
    lineLimit = limit;
    textChanged();
}

void TextWidget::setMaximumTextWidth(int width)
{
    maximumTextWidth = width;
    textChanged();
}

void TextWidget::textChanged()
{
    lines.setText(withVisibleControls(shownText));
    lines.setFont(typeFont);
    ending.setFont(typeFont);
    isMeasured = false;
    layoutWidth = -1;
    updateGeometry();
    update();
}

/// Breaks the text into lines of this width and returns how many there are; an empty text has one.
int TextWidget::breakLines(QTextOption::WrapMode wrapMode, double width) const
{
    QTextOption option(alignment);
    option.setWrapMode(wrapMode);
    lines.setTextOption(option);
    lines.beginLayout();
    for (QTextLine line = lines.createLine(); line.isValid(); line = lines.createLine()) {
        line.setLineWidth(width);
        line.setPosition({0, lineTop(line.lineNumber()) + leading});
    }
    lines.endLayout();
    return lines.lineCount();
}

void TextWidget::layOut(int width) const
{
    if (layoutWidth == width)
        return;
    layoutWidth = width;
    endingStart = -1;
    const int count = breakLines(QTextOption::WrapAtWordBoundaryOrAnywhere, width);
    if (lineLimit == 0 || count <= lineLimit)
        return;
    endingStart = lines.lineAt(lineLimit - 1).textStart();
    const QString rest = lines.text().mid(endingStart);
    ending.setText(QFontMetricsF(typeFont).elidedText(rest, Qt::ElideRight, width));
    ending.beginLayout();
    QTextLine line = ending.createLine();
    line.setLineWidth(QWIDGETSIZE_MAX);
    line.setPosition({0, lineTop(lineLimit - 1) + leading});
    ending.endLayout();
}

int TextWidget::shownLineCount() const
{
    return endingStart >= 0 ? lineLimit : lines.lineCount();
}

double TextWidget::lineTop(int line) const
{
    return line * lineHeight;
}

/// Measures with the layout that breaks the lines, so that at these widths it breaks nothing.
void TextWidget::measure() const
{
    if (isMeasured)
        return;
    breakLines(QTextOption::WordWrap, QWIDGETSIZE_MAX);
    layoutWidth = -1;
    idealWidth = int(std::ceil(lines.lineAt(0).naturalTextWidth()));
    longestWord = int(std::ceil(lines.minimumWidth()));
    isMeasured = true;
}

QSize TextWidget::sizeHint() const
{
    measure();
    const int width = std::min(idealWidth, maximumTextWidth);
    return {width, heightForWidth(width)};
}

int TextWidget::readableWidth() const
{
    measure();
    return lineLimit == 1 ? idealWidth : std::min(longestWord, maximumTextWidth);
}

QSize TextWidget::minimumSizeHint() const
{
    // Words are broken before they push the window wider than its minimum, however large the user's font is.
    constexpr int brokenFrom = 57;
    measure();
    return {std::min({longestWord, maximumTextWidth, brokenFrom}), int(lineHeight)};
}

int TextWidget::heightForWidth(int width) const
{
    if (isMeasured && width >= idealWidth)
        return int(lineHeight);
    layOut(width);
    return int(lineTop(shownLineCount()));
}

bool TextWidget::isCut() const
{
    layOut(width());
    return height() < lineTop(shownLineCount()) - 0.5 || width() < minimumSizeHint().width();
}

/// What is selected in a part of the text that begins at `start`.
QList<QTextLayout::FormatRange> TextWidget::selectionIn(const QTextLayout& part, int start) const
{
    const int from = std::max(0, selectionBegin() - start);
    const int to = std::min(selectionFinish() - start, int(part.text().size()));
    if (to <= from)
        return {};
    QTextLayout::FormatRange range;
    range.start = from;
    range.length = to - from;
    range.format.setBackground(palette().brush(QPalette::Active, QPalette::Highlight));
    range.format.setForeground(palette().brush(QPalette::Active, QPalette::HighlightedText));
    return {range};
}

void TextWidget::paintEvent(QPaintEvent*)
{
    layOut(width());
    QPainter painter(this);
    const Appearance appearance = Appearance::of(this);
    painter.setPen(selectable && underMouse() ? appearance.primary() : textColor.resolved(appearance));
    const int whole = endingStart >= 0 ? lineLimit - 1 : lines.lineCount();
    // Draws the lines that begin inside this rectangle, and cuts them there if a part is selected.
    if (whole > 0)
        lines.draw(&painter, {}, selectionIn(lines, 0), QRectF(0, 0, width(), lineTop(whole) - 0.1));
    if (endingStart >= 0)
        ending.draw(&painter, {}, selectionIn(ending, endingStart));
}

bool TextWidget::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    layOut(width());
    if (endingStart >= 0)
        showWholeText(shownText, *static_cast<QHelpEvent*>(event), *this);
    return true;
}

void TextWidget::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::ApplicationFontChange)
        setStyle(typeStyle);
    QWidget::changeEvent(event);
}

QRectF TextWidget::characterRect(int position) const
{
    layOut(width());
    const bool inEnding = endingStart >= 0 && position >= endingStart;
    const QTextLine line = inEnding ? ending.lineAt(0) : lines.lineForTextPosition(position);
    // What the ellipsis hides is where the ellipsis is.
    const int inLine = inEnding ? std::min(position - endingStart, int(ending.text().size()) - 1) : position;
    const double top = lineTop(inEnding ? lineLimit - 1 : line.lineNumber());
    // Taken from the glyphs: between two directions of writing a cursor position belongs to two characters.
    QRectF drawn;
    for (const QGlyphRun& run : line.glyphRuns(inLine, 1)) {
        const auto positions = run.positions();
        const auto advances = run.rawFont().advancesForGlyphIndexes(run.glyphIndexes());
        for (qsizetype glyph = 0; glyph < positions.size(); ++glyph)
            drawn |= QRectF(positions[glyph].x(), top, advances[glyph].x(), lineHeight);
    }
    return drawn.isNull() ? QRectF(line.cursorToX(inLine), top, 0, lineHeight) : drawn;
}

int TextWidget::positionAt(QPointF point) const
{
    layOut(width());
    const int row = std::clamp(int(point.y() / lineHeight), 0, shownLineCount() - 1);
    if (endingStart < 0 || row < lineLimit - 1)
        return lines.lineAt(row).xToCursor(point.x());
    // The ellipsis stands for everything that is cut off: a selection as far as it includes the whole text.
    const int ellipsis = int(ending.text().size()) - 1;
    const int inLine = ending.lineAt(0).xToCursor(point.x());
    return inLine >= ellipsis && point.x() >= ending.lineAt(0).cursorToX(ellipsis) ? int(shownText.size())
                                                                                   : endingStart + inLine;
}

} // namespace reelkeep
