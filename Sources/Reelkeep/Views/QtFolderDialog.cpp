#include "QtFolderDialog.h"

#include "MountedVolumes.h"
#include "UI/AvailableSize.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCompleter>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QHeaderView>
#include <QLineEdit>
#include <QListView>
#include <QPointer>
#include <QSettings>
#include <QSplitter>
#include <QTreeView>

#include <chrono>

namespace reelkeep {

namespace {

/// How long to wait for disks before opening the dialog.
constexpr std::chrono::milliseconds patience{300};

/// The default entries, home and computer, then cards and disks by their labels.
void fillSidebar(QFileDialog& dialog)
{
    QList<QUrl> urls = dialog.sidebarUrls();
    QHash<QString, QString> labels;
    for (const Volume& volume : answeringVolumes(patience)) {
        urls.append(QUrl::fromLocalFile(volume.path));
        if (!volume.label.isEmpty())
            labels.insert(volume.path, volume.label);
    }
    dialog.setSidebarUrls(urls);

    auto* sidebar = dialog.findChild<QListView*>(QStringLiteral("sidebar"));
    if (!sidebar)
        return;
    QAbstractItemModel* model = sidebar->model();
    const auto label = [model, labels] {
        constexpr int urlRole = Qt::UserRole + 1;
        for (int row = 0; row < model->rowCount(); ++row) {
            const QModelIndex index = model->index(row, 0);
            const QString wanted = labels.value(index.data(urlRole).toUrl().toLocalFile());
            if (!wanted.isEmpty() && index.data().toString() != wanted)
                model->setData(index, wanted);
        }
    };
    label();
    // The dialog restores the folder's name whenever its file system model reports a change of the folder.
    QObject::connect(model, &QAbstractItemModel::dataChanged, &dialog, label);
}

/// Makes the dialog wide enough for the names of disks, if the screen is; hides the columns that say nothing of
/// folders.
void fitColumns(QFileDialog& dialog)
{
    dialog.resize(QSize(860, 540).boundedTo(availableSize(dialog)));
    if (auto* splitter = dialog.findChild<QSplitter*>())
        splitter->setSizes({220, 640});
    if (auto* details = dialog.findChild<QTreeView*>(QStringLiteral("treeView"))) {
        constexpr int sizeColumn = 1;
        constexpr int typeColumn = 2;
        details->hideColumn(sizeColumn);
        details->hideColumn(typeColumn);
        details->header()->resizeSection(0, 400);
        details->header()->setStretchLastSection(true);
    }
}

/// Return in the field closes the dialog but not the list of completions below it. While that is open, the toolkit does
/// not notice that the window behind has become active, and the window gets no keys.
void closeCompletionsWith(QFileDialog& dialog)
{
    auto* field = dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    if (field && field->completer())
        QObject::connect(&dialog, &QDialog::finished, field->completer()->popup(), &QWidget::hide);
}

class QtFolderDialog : public FolderDialog {
public:
    Response runModal() override
    {
        // The dialog would save its state in a file under the user's configuration. This program leaves no files
        // behind, so the settings path leads to a place that cannot be written to.
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("/dev/null"));

        auto* shown = new QFileDialog(QApplication::activeWindow(), {}, firstFolder());
        const QPointer<QFileDialog> dialog(shown);
        configure(*shown);
        const int result = shown->exec();
        // The program may have ended in the meantime, and destroyed the dialog with its window.
        if (!dialog)
            return Response::cancel;
        if (result == QDialog::Accepted)
            collect(dialog->selectedFiles());
        lastFolder() = dialog->directory().absolutePath();
        delete dialog;
        return result == QDialog::Accepted ? Response::ok : Response::cancel;
    }
    std::optional<Location> URL() const override
    {
        return chosen.empty() ? std::nullopt : std::optional(chosen.front());
    }
    std::vector<Location> URLs() const override { return chosen; }

private:
    /// The last folder of any dialog of this program.
    static QString& lastFolder()
    {
        static QString folder;
        return folder;
    }
    /// The last folder, or home if its disk does not answer in time.
    static QString firstFolder()
    {
        const QString& last = lastFolder();
        return last.isEmpty() || isAnsweringFolder(last, patience) ? last : QDir::homePath();
    }

    void configure(QFileDialog& dialog) const
    {
        dialog.setWindowTitle(QString::fromStdString(title));
        dialog.setOption(QFileDialog::DontUseNativeDialog);
        dialog.setOption(QFileDialog::ReadOnly);
        dialog.setOption(QFileDialog::ShowDirsOnly, canChooseDirectories && !canChooseFiles);
        dialog.setFileMode(QFileDialog::Directory);
        // After the mode, which resets the views to single selection.
        for (const auto* name : {"listView", "treeView"}) {
            auto* view = dialog.findChild<QAbstractItemView*>(QLatin1String(name));
            if (view && allowsMultipleSelection)
                view->setSelectionMode(QAbstractItemView::ExtendedSelection);
        }
        fillSidebar(dialog);
        fitColumns(dialog);
        closeCompletionsWith(dialog);
    }

    void collect(const QStringList& paths)
    {
        for (const QString& path : paths)
            chosen.emplace_back(QFile::encodeName(QDir::cleanPath(path)).toStdString());
    }

    std::vector<Location> chosen;
};

} // namespace

FolderDialogFactory qtFolderDialogs()
{
    return [] { return std::make_unique<QtFolderDialog>(); };
}

} // namespace reelkeep
