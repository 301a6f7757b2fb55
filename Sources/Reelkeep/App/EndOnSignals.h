#pragma once

#include <QObject>
#include <QSocketNotifier>

namespace reelkeep {

/// While it lives, SIGTERM, SIGINT and SIGHUP close the program as closing its window does. Interface thread; one at a
/// time.
class EndOnSignals {
public:
    EndOnSignals();
    ~EndOnSignals();
    EndOnSignals(const EndOnSignals&) = delete;
    EndOnSignals& operator=(const EndOnSignals&) = delete;

private:
    QSocketNotifier notifier;
};

} // namespace reelkeep
