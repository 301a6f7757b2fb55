#include "ContentView.h"
#include "DesktopIdentity.h"
#include "DisplayRequired.h"
#include "EndOnSignals.h"
#include "QtFolderDialog.h"
#include "SessionBus.h"
#include "SleepInhibitor.h"
#include "StandardTexts.h"
#include "UI/ScrollingWindow.h"

#include <QApplication>

#include <csignal>
#include <cstdlib>
#include <optional>

namespace reelkeep {
namespace {

VideoSyncViewModel* runningSession = nullptr;

/// When the display goes away, the toolkit calls exit() at once. No partial copy may stay behind then either.
void stopWorkersAtExit()
{
    if (runningSession)
        runningSession->stopWorkers();
}

/// The application: one window around one session, from the same empty choices at every start.
class ReelkeepApp {
public:
    int run(char** argv)
    {
        // A write beyond the allowed file size must fail with an error instead of ending the program.
        std::signal(SIGXFSZ, SIG_IGN);
        // A message to a terminal or program that is gone must not end a copy.
        std::signal(SIGPIPE, SIG_IGN);
        doWithoutMissingSessionBus();
        // The toolkit gets only the program's name, since it would interpret some arguments.
        int argumentCount = 1;
        std::optional<DisplayRequired> displayRequired(std::in_place);
        QApplication application(argumentCount, argv);
        displayRequired.reset();
        identifyToDesktop();
        StandardTexts standardTexts;
        QApplication::installTranslator(&standardTexts);

        auto* content = new ContentView(qtFolderDialogs());
        ScrollingWindow window(QStringLiteral("Reelkeep"), content);
        endOnSignals();
        SleepInhibitor sleepInhibitor;
        VideoSyncViewModel& session = content->viewModel();
        runningSession = &session;
        std::atexit(stopWorkersAtExit);
        // Queued, because the signal comes before the new value is stored.
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

int main(int, char** argv)
{
    const int result = reelkeep::ReelkeepApp().run(argv);
    // A worker may still hang in a system call on a dead disk; destructors would pull objects from under it.
    std::_Exit(result);
}
