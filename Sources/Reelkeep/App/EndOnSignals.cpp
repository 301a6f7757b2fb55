#include "EndOnSignals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <array>
#include <csignal>
#include <sys/eventfd.h>
#include <unistd.h>

namespace reelkeep {

namespace {

constexpr std::array endingSignals = {SIGTERM, SIGINT, SIGHUP};

/// A signal handler may do almost nothing; it only writes to this descriptor.
int bell = -1;

void ring(int)
{
    const eventfd_t one = 1;
    [[maybe_unused]] const auto written = write(bell, &one, sizeof one);
}

} // namespace

/// The handler stays until the process ends: a service manager, or a terminal that closes, sends several signals, and
/// the second must not interrupt the removal of a partial copy.
void endOnSignals()
{
    bell = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    auto* notifier = new QSocketNotifier(bell, QSocketNotifier::Read, QCoreApplication::instance());
    QObject::connect(notifier, &QSocketNotifier::activated, [] { QCoreApplication::quit(); });
    struct sigaction action = {};
    action.sa_handler = ring;
    action.sa_flags = SA_RESTART;
    for (const int signal : endingSignals) {
        struct sigaction inherited = {};
        sigaction(signal, nullptr, &inherited);
        if (inherited.sa_handler != SIG_IGN)
            sigaction(signal, &action, nullptr);
    }
}

} // namespace reelkeep
