#include "ContentView.h"
#include "Fixtures/ScriptedFolderDialogs.h"
#include "UI/ScrollingWindow.h"
#include "VideoSyncViewModel.h"

#include <QApplication>

#include <fstream>
#include <iostream>
#include <string>

namespace {

void handleEventsUntilIdle(const reelkeep::VideoSyncViewModel& session)
{
    while (session.isScanning() || session.isCopying())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

long peakKilobytes()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind("VmHWM:", 0) == 0)
            return std::stol(line.substr(6));
    return -1;
}

} // namespace

/// PeakMemory SOURCE DISK REVIEWED: the whole window, through an analysis, a copy and the analysis after it. Prints the
/// number of videos reviewed in the end, and the peak memory in kilobytes.
int main(int argc, char** argv)
{
    if (argc != 4) {
        std::cerr << "Usage: PeakMemory SOURCE DISK REVIEWED\n";
        return 2;
    }
    const QApplication application(argc, argv);
    reelkeep::ScriptedFolderDialogs dialogs;
    for (int i = 1; i < argc; ++i) {
        reelkeep::ScriptedFolderDialogs::Answer answer;
        answer.chosen = {reelkeep::Location(argv[i])};
        dialogs.answers.push_back(answer);
    }
    auto* content = new reelkeep::ContentView(dialogs.factory());
    reelkeep::ScrollingWindow window(QStringLiteral("Reelkeep"), content);
    window.openAtFirstSize();
    reelkeep::VideoSyncViewModel& session = content->viewModel();
    session.chooseSourceFolder();
    session.chooseCopyDestinationFolder();
    session.addDestinationReviewFolders();
    session.scanFolders();
    handleEventsUntilIdle(session);
    if (session.missingVideos().empty()) {
        std::cerr << session.statusMessage() << '\n';
        return 1;
    }
    session.copyMissingVideos();
    handleEventsUntilIdle(session);
    if (!session.missingVideos().empty()) {
        std::cerr << session.statusMessage() << '\n';
        return 1;
    }
    std::cout << session.destinationVideos().size() << ' ' << peakKilobytes() << '\n';
    return 0;
}
