#pragma once

#include <QObject>
#include <QSocketNotifier>

namespace reelkeep {

/// While it exists, SIGTERM, SIGINT and SIGHUP end the program as closing its window does. Interface thread; only one
/// at a time.
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
