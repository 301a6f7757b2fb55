#include "ContentView.h"
#include "DesktopIdentity.h"
#include "EndOnSignals.h"
#include "QtFolderDialog.h"
#include "SessionBus.h"
#include "SleepInhibitor.h"
#include "UI/ScrollingWindow.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QTranslator>

#include <csignal>
#include <cstdlib>

namespace reelkeep {
namespace {

VideoSyncViewModel* runningSession = nullptr;

/// The toolkit ends the program right where it stands when the display goes away. The copy in hand must not stay
/// behind half-written then either.
void stopWorkersAtExit()
{
    if (runningSession)
        runningSession->stopWorkers();
}

/// The application: one window around one session, from the same empty choices at every start.
class ReelkeepApp {
public:
    int run(int argc, char** argv)
    {
        // A write beyond the allowed file size shall fail with an error text instead of ending the program.
        std::signal(SIGXFSZ, SIG_IGN);
        // Nor shall a message to a terminal or program that is gone end a copy.
        std::signal(SIGPIPE, SIG_IGN);
        doWithoutMissingSessionBus();
        QApplication application(argc, argv);
        identifyToDesktop();
        // The program speaks Spanish to everybody; the toolkit's own texts follow.
        QTranslator standardTexts;
        if (standardTexts.load(QStringLiteral("qtbase_es"), QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
            QApplication::installTranslator(&standardTexts);

        auto* content = new ContentView(qtFolderDialogs());
        ScrollingWindow window(QStringLiteral("Reelkeep"), content);
        const EndOnSignals endOnSignals;
        SleepInhibitor sleepInhibitor;
        VideoSyncViewModel& session = content->viewModel();
        runningSession = &session;
        std::atexit(stopWorkersAtExit);
        // Queued: at the announcement the new value is not stored yet.
        QObject::connect(
            &session, &VideoSyncViewModel::objectWillChange, &sleepInhibitor,
            [&session, &sleepInhibitor] { sleepInhibitor.setHeld(session.isCopying()); }, Qt::QueuedConnection);
        window.openAtFirstSize();
        const int result = QApplication::exec();
        runningSession = nullptr;
        return result;
    }
};

} // namespace
} // namespace reelkeep

int main(int argc, char** argv)
{
    const int result = reelkeep::ReelkeepApp().run(argc, argv);
    // A worker that hangs in a system call of a dead disk may still live; it must not meet destroyed objects.
    std::_Exit(result);
}
