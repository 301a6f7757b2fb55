#include "DisplayRequired.h"

#include <QString>
#include <QtGlobal>

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <utility>
#include <vector>

namespace reelkeep {

namespace {

constexpr auto sentence = "Reelkeep no ha podido abrir ninguna pantalla. Inicialo desde un escritorio grafico.\n";

struct Message {
    QtMsgType type;
    QString text;
};

/// A plug-in of the toolkit may have threads of its own.
std::mutex heldMutex;
std::vector<Message> held;

/// Only the toolkit itself knows which displays it has tried, and how; when it has given up, its message is fatal.
void holdOrEnd(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    if (type == QtFatalMsg) {
        std::fputs(sentence, stderr);
        std::_Exit(EXIT_FAILURE);
    }
    const std::lock_guard lock(heldMutex);
    held.push_back({type, text});
}

} // namespace

DisplayRequired::DisplayRequired()
{
    qInstallMessageHandler(holdOrEnd);
}

DisplayRequired::~DisplayRequired()
{
    qInstallMessageHandler(nullptr);
    const std::lock_guard lock(heldMutex);
    for (const Message& message : std::exchange(held, {}))
        qt_message_output(message.type, QMessageLogContext(), message.text);
}

} // namespace reelkeep
