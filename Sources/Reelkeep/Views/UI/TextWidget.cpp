#include "UI/TextWidget.h"

#include <QEvent>
#include <QFontMetricsF>
#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace reelkeep {

namespace {

/// File names may hold line feeds and other control characters. Each is shown as its symbol, one character for one, so
/// that positions in the drawn text are positions in the real one.
QString withVisibleControls(QString text)
{
    for (QChar& character : text) {
        if (character.unicode() < 0x20)
            character = QChar(0x2400 + character.unicode());
        else if (character.unicode() == 0x7f)
            character = QChar(0x2421);
        else if (character == QChar::LineSeparator || character == QChar::ParagraphSeparator)
            character = QChar(0x2424);
    }
    return text;
}

} // namespace

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

TextWidget::TextWidget(QWidget* parent) : QWidget(parent)
{
    QSizePolicy policy(QSizePolicy::Maximum, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    setStyle({});
}

void TextWidget::setText(const QString& text)
{
    if (text == shownText)
        return;
    shownText = text;
    drawnText = withVisibleControls(text);
    selectionStart = selectionEnd = 0;
    textChanged();
}

void TextWidget::setStyle(const TypeStyle& style)
{
    typeStyle = style;
    typeFont = style.font();
    lineHeight = style.height();
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
    update();
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
    isMeasured = false;
    linesWidth = -1;
    updateGeometry();
    update();
}

std::vector<TextWidget::Line> TextWidget::lines(int width) const
{
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    QTextLayout layout(drawnText, typeFont);
    layout.setTextOption(option);
    layout.beginLayout();
    std::vector<Line> result;
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        result.push_back({line.textStart(), line.textLength()});
    }
    layout.endLayout();
    if (result.empty())
        result.push_back({0, 0});
    return result;
}

const std::vector<TextWidget::Line>& TextWidget::linesNow() const
{
    if (linesWidth != width()) {
        cachedLines = lines(width());
        linesWidth = width();
    }
    return cachedLines;
}

int TextWidget::shownLineCount(std::size_t lineCount) const
{
    return lineLimit > 0 ? std::min(lineLimit, int(lineCount)) : int(lineCount);
}

/// Both widths as the layout that breaks the lines has them, so that at these widths it breaks nothing.
void TextWidget::measure() const
{
    if (isMeasured)
        return;
    QTextLayout layout(drawnText, typeFont);
    layout.beginLayout();
    QTextLine line = layout.createLine();
    line.setLineWidth(QWIDGETSIZE_MAX);
    layout.endLayout();
    idealWidth = int(std::ceil(line.naturalTextWidth()));
    longestWord = int(std::ceil(layout.minimumWidth()));
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
    // Rather break inside a word than push the window wider, however large the user's font is.
    constexpr int bearable = 57;
    measure();
    return {std::min({longestWord, maximumTextWidth, bearable}), int(lineHeight)};
}

int TextWidget::heightForWidth(int width) const
{
    if (isMeasured && width >= idealWidth)
        return int(lineHeight);
    if (linesWidth != width) {
        cachedLines = lines(width);
        linesWidth = width;
    }
    return int(shownLineCount(cachedLines.size()) * lineHeight);
}

void TextWidget::resizeEvent(QResizeEvent*)
{
    update();
}

bool TextWidget::isCut() const
{
    const auto& all = linesNow();
    return height() < shownLineCount(all.size()) * lineHeight - 0.5 || width() < minimumSizeHint().width();
}

QString TextWidget::visibleText(const Line& line, bool isLastShown) const
{
    const bool moreFollows = line.start + line.length < drawnText.size();
    if (isLastShown && moreFollows)
        return QFontMetricsF(typeFont).elidedText(drawnText.mid(line.start), Qt::ElideRight, width());
    return drawnText.mid(line.start, line.length);
}

double TextWidget::lineLeft(const QString& lineText) const
{
    if (alignment == Qt::AlignLeft)
        return 0;
    QString trimmed = lineText;
    while (trimmed.endsWith(u' '))
        trimmed.chop(1);
    const double free = width() - QFontMetricsF(typeFont).horizontalAdvance(trimmed);
    return std::max(0.0, alignment == Qt::AlignRight ? free : free / 2);
}

void TextWidget::drawLine(QPainter& painter, const Line& line, const QString& lineText, double top) const
{
    const QFontMetricsF metrics(typeFont);
    const QPointF origin(lineLeft(lineText), top + (lineHeight - metrics.height()) / 2);
    QTextLayout layout(lineText, typeFont);
    layout.beginLayout();
    layout.createLine().setLineWidth(QWIDGETSIZE_MAX);
    layout.endLayout();

    QList<QTextLayout::FormatRange> ranges;
    const int from = std::clamp(selectionBegin() - line.start, 0, int(lineText.size()));
    const int to = std::clamp(selectionFinish() - line.start, 0, int(lineText.size()));
    if (to > from) {
        QTextLayout::FormatRange range;
        range.start = from;
        range.length = to - from;
        range.format.setBackground(palette().brush(QPalette::Active, QPalette::Highlight));
        range.format.setForeground(palette().brush(QPalette::Active, QPalette::HighlightedText));
        ranges.append(range);
    }
    layout.draw(&painter, origin, ranges);
}

void TextWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setPen(textColor.resolved(Appearance::of(this)));
    const auto& all = linesNow();
    const int count = shownLineCount(all.size());
    for (int index = 0; index < count; ++index) {
        const Line& line = all[std::size_t(index)];
        drawLine(painter, line, visibleText(line, index == count - 1), index * lineHeight);
    }
}

void TextWidget::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::ApplicationFontChange)
        setStyle(typeStyle);
    QWidget::changeEvent(event);
}

QRectF TextWidget::characterRect(int position) const
{
    const auto& all = linesNow();
    for (std::size_t index = 0; index < all.size(); ++index) {
        const Line& line = all[index];
        if (position >= line.start + line.length && index + 1 < all.size())
            continue;
        const QFontMetricsF metrics(typeFont);
        const QString before = drawnText.mid(line.start, position - line.start);
        const double left = lineLeft(drawnText.mid(line.start, line.length)) + metrics.horizontalAdvance(before);
        const double advance = metrics.horizontalAdvance(drawnText.mid(position, 1));
        return {left, double(index) * lineHeight, advance, lineHeight};
    }
    return {};
}

int TextWidget::positionAt(QPointF place) const
{
    const auto& all = linesNow();
    const int lastRow = shownLineCount(all.size()) - 1;
    const int row = std::clamp(int(place.y() / lineHeight), 0, lastRow);
    const Line& line = all[std::size_t(row)];
    const QString lineText = drawnText.mid(line.start, line.length);
    // The ellipsis stands for all that is cut off: who selects as far as can be seen means the whole text.
    if (row == lastRow && row + 1 < int(all.size())) {
        const QString beforeEllipsis = visibleText(line, true).chopped(1);
        if (place.x() >= QFontMetricsF(typeFont).horizontalAdvance(beforeEllipsis))
            return int(drawnText.size());
    }
    QTextLayout layout(lineText, typeFont);
    layout.beginLayout();
    QTextLine only = layout.createLine();
    only.setLineWidth(QWIDGETSIZE_MAX);
    layout.endLayout();
    return line.start + only.xToCursor(place.x() - lineLeft(lineText));
}

} // namespace reelkeep
