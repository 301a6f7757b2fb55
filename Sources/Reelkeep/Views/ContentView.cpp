#include "ContentView.h"

#include "Files/FileManager.h"
#include "UI/Accessible.h"
#include "UI/StackLayout.h"

#include <algorithm>
#include <utility>

namespace reelkeep {

namespace {

/// Milliseconds between refreshes: a screen shows no more, however fast reports arrive.
constexpr int frame = 16;

} // namespace

ContentView::ContentView(
    FolderDialogFactory makeFolderDialog, std::shared_ptr<FileManager> fileManager, QWidget* parent
)
    : FocusHome(parent), session(std::move(makeFolderDialog), std::move(fileManager))
{
    installAccessibility();
    content = body();
    auto* whole = new StackLayout({Arrangement{}});
    whole->addWidget(content.widget);
    setLayout(whole);

    refreshTimer.setSingleShot(true);
    refreshTimer.setTimerType(Qt::PreciseTimer);
    connect(&refreshTimer, &QTimer::timeout, this, &ContentView::refresh);
    connect(&session, &VideoSyncViewModel::objectWillChange, this, &ContentView::scheduleRefresh);
    refresh();
}

/// The signal is emitted before the value is stored, so the window reads it in a later turn of the event loop: several
/// writes in a row cause one refresh, which sees the newest values.
void ContentView::scheduleRefresh()
{
    if (!refreshTimer.isActive())
        refreshTimer.start(int(std::max<qint64>(0, frame - sinceRefresh.elapsed())));
}

void ContentView::refresh()
{
    content.refresh();
    restoreTabOrder(this);
    sinceRefresh.start();
}

View ContentView::body()
{
    return VStack(
        {.spacing = 20, .padding = measure::windowPadding, .maximumContentWidth = measure::contentWidth},
        header(),
        folderSelectors(),
        actionArea(),
        summaryCards(),
        missingFilesList(),
        footer()
    );
}

View ContentView::header()
{
    return VStack(
        {.spacing = 8},
        Text(tr("Reelkeep")).style(type::windowTitle).heading(),
        Text(tr("Controla que tu material de camara ya este archivado en uno o varios discos y copia solo lo que falta "
                "al destino principal."))
            .secondary()
    );
}

} // namespace reelkeep
