#pragma once

#include "UI/FocusHome.h"
#include "UI/View.h"
#include "VideoSyncViewModel.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

#include <memory>
#include <optional>
#include <vector>

namespace reelkeep {

/// The content of the one window. It owns the session; every section is computed from the session and holds no state of
/// its own. Interface thread only.
class ContentView : public FocusHome {
    Q_OBJECT

public:
    /// `fileManager` stands in for the real one in tests.
    explicit ContentView(
        FolderDialogFactory makeFolderDialog, std::shared_ptr<FileManager> fileManager = nullptr,
        QWidget* parent = nullptr
    );

    VideoSyncViewModel& viewModel() { return session; }
    /// False from a change of the session to the refresh that shows it.
    bool isUpToDate() const { return !refreshTimer.isActive(); }

private:
    using FolderSource = std::function<std::optional<Location>()>;

    struct SetupPill {
        QString number;
        QString title;
        QString subtitle;
    };
    struct SelectionCard {
        QString step;
        QString title;
        QString subtitle;
        FolderSource path;
        QString buttonTitle;
        Glyph glyph;
        QColor accent;
        Action action;
    };
    struct SummaryCard {
        QString title;
        std::function<std::size_t()> value;
        QString subtitle;
    };

    View body();
    View header();

    View folderSelectors();
    View setupOverview();
    View setupPill(const SetupPill& pill);
    View selectionCard(const SelectionCard& card);
    View pathBox(const FolderSource& path, const QColor& accent);
    View selectionStateBadge(const Condition& isSelected, const QColor& accent);
    View destinationReviewFoldersSection();
    View reviewSummaryPanel();
    View reviewRow(const Location& folder);

    View actionArea();
    View panelHeader(const Glyph& glyph, const QColor& accent, const QString& title, const QString& subtitle);
    View analysisPanel();
    View copyPanel();
    View destinationChooser();
    View destinationBox();

    View summaryCards();
    View summaryCard(const SummaryCard& card);
    View missingFilesList();
    View missingFileRow(const std::function<const VideoFile&()>& video);
    View emptyPendingState();
    View footer();

    void scheduleRefresh();
    void refresh();

    VideoSyncViewModel session;
    View content;
    QTimer refreshTimer;
    QElapsedTimer sinceRefresh;
};

} // namespace reelkeep
