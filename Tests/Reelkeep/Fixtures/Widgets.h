#pragma once

#include <QColor>
#include <QImage>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <iosfwd>
#include <string>
#include <vector>

class QAccessibleInterface;

/// How a failed test prints a text.
void PrintTo(const QString& text, std::ostream* stream);

namespace reelkeep {

class Button;
class TextWidget;

/// Shows a widget and waits until its window is active.
void showActive(QWidget& widget);

/// Shows a control inside a window, as in the program, and not as a window.
template <class Control>
Control& shownIn(QWidget& window, Control* control)
{
    control->setParent(&window);
    showActive(window);
    return *control;
}

void resizeToIdeal(QWidget& widget);

/// The widget as painted on the background of its window.
QImage picture(QWidget& widget);

inline QColor grey(int level)
{
    return {level, level, level};
}
/// Whether two colours look the same.
bool areClose(const QColor& one, const QColor& other, int tolerance = 2);
void expectClose(const QColor& actual, const QColor& expected, const char* what);
std::string written(const QColor& color);

/// Moves the mouse over a widget, or away from it.
void moveMouseOver(QWidget& widget, bool isOver);

/// Turns the wheel over a point; negative notches turn it towards the user, which scrolls down.
void turnWheel(QWidget& widget, QPoint place, int notches);

/// All visible texts in `root`, in reading order.
std::vector<TextWidget*> shownTexts(const QWidget& root);
QStringList shownWords(const QWidget& root);

/// Whether a line ends inside a word, that is, not at a usual break.
bool breaksAWord(const TextWidget& text);

/// What a screen reader calls a widget.
QString spokenName(QWidget& widget);
QAccessibleInterface& spoken(QWidget& widget);

/// The visible widget of a kind that a screen reader calls `name`; null if there is none, or more than one.
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
