#include "EndOnSignals.h"

#include <QCoreApplication>

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

int makeBell()
{
    bell = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    return bell;
}

} // namespace

EndOnSignals::EndOnSignals() : notifier(makeBell(), QSocketNotifier::Read)
{
    QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [] { QCoreApplication::quit(); });
    struct sigaction action = {};
    action.sa_handler = ring;
    action.sa_flags = SA_RESTART;
    for (const int signal : endingSignals)
        sigaction(signal, &action, nullptr);
}

EndOnSignals::~EndOnSignals()
{
    for (const int signal : endingSignals)
        std::signal(signal, SIG_DFL);
    close(bell);
    bell = -1;
}

} // namespace reelkeep
