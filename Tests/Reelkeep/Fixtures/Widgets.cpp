#include "Fixtures/Widgets.h"

#include "UI/TextWidget.h"

#include <QAccessible>
#include <QApplication>
#include <QTest>
#include <QTextBoundaryFinder>
#include <QWheelEvent>

#include <gtest/gtest.h>

#include <cstdlib>
#include <ostream>
#include <stdexcept>

void PrintTo(const QString& text, std::ostream* stream)
{
    *stream << '"' << text.toStdString() << '"';
}

namespace reelkeep {

void showActive(QWidget& widget)
{
    widget.show();
    widget.activateWindow();
    if (!QTest::qWaitForWindowActive(&widget))
        throw std::runtime_error("the window does not become active");
}

QImage picture(QWidget& widget)
{
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

void resizeToIdeal(QWidget& widget)
{
    widget.resize(widget.sizeHint());
    widget.ensurePolished();
}

bool areClose(const QColor& one, const QColor& other, int tolerance)
{
    return std::abs(one.red() - other.red()) <= tolerance && std::abs(one.green() - other.green()) <= tolerance &&
           std::abs(one.blue() - other.blue()) <= tolerance;
}

void expectClose(const QColor& actual, const QColor& expected, const char* what)
{
    EXPECT_TRUE(areClose(actual, expected)) << what << " is " << written(actual) << " instead of " << written(expected);
}

std::string written(const QColor& color)
{
    return std::to_string(color.red()) + " " + std::to_string(color.green()) + " " + std::to_string(color.blue());
}

void moveMouseOver(QWidget& widget, bool isOver)
{
    QEnterEvent enter(QPointF(3, 3), QPointF(3, 3), QPointF(3, 3));
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(&widget, isOver ? &enter : &leave);
}

void turnWheel(QWidget& widget, QPoint place, int notches)
{
    // The toolkit does not pass a synthetic wheel event on to the parent of a widget that ignores it.
    for (QWidget* target = &widget; target; target = target->isWindow() ? nullptr : target->parentWidget()) {
        QWheelEvent event(place, target->mapToGlobal(place), QPoint(), QPoint(0, 120 * notches), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        if (QApplication::sendEvent(target, &event) && event.isAccepted())
            return;
        place = target->mapToParent(place);
    }
}

std::vector<TextWidget*> shownTexts(const QWidget& root)
{
    std::vector<TextWidget*> texts;
    for (TextWidget* text : root.findChildren<TextWidget*>()) {
        if (text->isVisible())
            texts.push_back(text);
    }
    return texts;
}

QStringList shownWords(const QWidget& root)
{
    QStringList words;
    for (const TextWidget* text : shownTexts(root))
        words.append(text->text());
    return words;
}

bool breaksAWord(const TextWidget& text)
{
    QTextBoundaryFinder boundaries(QTextBoundaryFinder::Line, text.text());
    for (int position = 1; position < int(text.text().size()); ++position) {
        boundaries.setPosition(position);
        if (text.characterRect(position).top() > text.characterRect(position - 1).top() && !boundaries.isAtBoundary())
            return true;
    }
    return false;
}

QAccessibleInterface& spoken(QWidget& widget)
{
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(&widget);
    if (!interface)
        throw std::logic_error("a widget that screen readers do not know");
    return *interface;
}

QString spokenName(QWidget& widget)
{
    return spoken(widget).text(QAccessible::Name);
}

} // namespace reelkeep
