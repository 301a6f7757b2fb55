#include "UI/RecentMove.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QVariant>
#include <QWidget>

namespace reelkeep {

namespace {
constexpr auto restsFrom = "restsFrom";
} // namespace

void markMoved(QWidget& element)
{
    element.setProperty(restsFrom, QVariant::fromValue(QDeadlineTimer(QApplication::doubleClickInterval())));
}

bool hasJustMoved(const QWidget& control)
{
    for (const QWidget* widget = &control; widget; widget = widget->parentWidget()) {
        const QVariant deadline = widget->property(restsFrom);
        if (deadline.isValid() && !deadline.value<QDeadlineTimer>().hasExpired())
            return true;
    }
    return false;
}

} // namespace reelkeep
