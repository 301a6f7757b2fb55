#include "SessionBus.h"

#include <QFile>

namespace reelkeep {

void doWithoutMissingSessionBus()
{
    constexpr auto address = "DBUS_SESSION_BUS_ADDRESS";
    if (!qEnvironmentVariableIsEmpty(address) ||
        QFile::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/bus")))
        return;
    qputenv(address, "disabled:");
}

} // namespace reelkeep
