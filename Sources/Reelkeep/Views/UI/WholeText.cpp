#include "UI/WholeText.h"

#include "UI/Appearance.h"

#include <QHelpEvent>
#include <QTextDocument>
#include <QTextLayout>
#include <QToolTip>
#include <QWidget>

namespace reelkeep {

namespace {

/// Breaks between words, and inside a word that is wider than that: the toolkit alone would draw a long path past the
/// edge of the screen.
QString brokenAt(int width, const QString& text)
{
    QTextLayout lines(text, QToolTip::font());
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    lines.setTextOption(option);
    QStringList broken;
    lines.beginLayout();
    for (QTextLine line = lines.createLine(); line.isValid(); line = lines.createLine()) {
        line.setLineWidth(width);
        broken.append(text.mid(line.textStart(), line.textLength()));
    }
    lines.endLayout();
    return broken.join(u'\n');
}

} // namespace

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

void showWholeText(const QString& text, const QHelpEvent& event, QWidget& widget)
{
    const QString lines = brokenAt(scaledWithFont(480), withVisibleControls(text));
    // A tool tip interprets anything that looks like markup.
    QToolTip::showText(event.globalPos(), Qt::convertFromPlainText(lines, Qt::WhiteSpacePre), &widget);
}

} // namespace reelkeep
