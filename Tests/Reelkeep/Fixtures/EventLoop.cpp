#include "Fixtures/EventLoop.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>

namespace reelkeep {

bool waitUntil(const std::function<bool()>& condition)
{
    const QDeadlineTimer deadline(30'000);
    QTimer wake; // The condition may come true without an event.
    wake.start(2);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

void letEventsPass()
{
    bool passed = false;
    QTimer::singleShot(0, [&] { passed = true; });
    waitUntil([&] { return passed; });
    QCoreApplication::processEvents();
}

} // namespace reelkeep
