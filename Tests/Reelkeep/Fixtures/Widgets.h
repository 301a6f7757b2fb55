#pragma once

#include <QImage>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <iosfwd>
#include <vector>

class QAccessibleInterface;

/// How a failed test writes a text.
void PrintTo(const QString& text, std::ostream* stream);

namespace reelkeep {

class Button;
class TextWidget;

/// Shows a widget and waits until it has the keyboard.
void showActive(QWidget& widget);

/// What is painted, with the widget's window as its ground.
QImage picture(QWidget& widget);

/// Turns the wheel over a place; negative notches turn it towards the user, which shows what is below.
void turnWheel(QWidget& widget, QPoint place, int notches);

/// All texts that are shown below `root`, in reading order.
std::vector<TextWidget*> shownTexts(const QWidget& root);
QStringList shownWords(const QWidget& root);

/// Whether a line ends inside a word, and not where texts are commonly broken.
bool breaksAWord(const TextWidget& text);

/// What a screen reader calls a widget.
QString spokenName(QWidget& widget);
QAccessibleInterface& spoken(QWidget& widget);

/// The widget of a kind that is shown and that a screen reader calls `name`; null where there is none, or more.
template <class Widget>
Widget* shownWidget(const QWidget& root, const QString& name)
{
    Widget* found = nullptr;
    for (Widget* widget : root.findChildren<Widget*>()) {
        if (!widget->isVisible() || spokenName(*widget) != name)
            continue;
        if (found)
            return nullptr;
        found = widget;
    }
    return found;
}

} // namespace reelkeep
