#include "Platform/QtFolderDialog.h"

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
#include <QStandardPaths>
#include <QStorageInfo>
#include <QTreeView>

#include <algorithm>

namespace reelkeep {

namespace {

/// Disks, and network folders, where desktops and people mount what is not part of the system.
bool isRemovable(const QStorageInfo& volume)
{
    const QString path = volume.rootPath();
    const bool isDisk = volume.device().startsWith("/dev/");
    const bool isRemote = volume.fileSystemType().startsWith("fuse") || volume.fileSystemType().startsWith("nfs") ||
                          volume.fileSystemType() == "cifs";
    return volume.isValid() && volume.isReady() && (isDisk || isRemote) &&
           (path.startsWith(QStringLiteral("/media/")) || path.startsWith(QStringLiteral("/run/media/")) ||
            path.startsWith(QStringLiteral("/mnt")));
}

/// Cameras and phones that speak a protocol instead of being a disk appear as folders here.
QList<QUrl> attachedDevices()
{
    const QDir mounts(QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + QStringLiteral("/gvfs"));
    QList<QUrl> urls;
    for (const QString& name : mounts.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        urls.append(QUrl::fromLocalFile(mounts.filePath(name)));
    return urls;
}

/// Home and computer as in a bare dialog, then cards and disks under the labels that their owner gave them.
void fillSidebar(QFileDialog& dialog)
{
    QList<QUrl> urls = dialog.sidebarUrls();
    QHash<QString, QString> labels;
    for (const QStorageInfo& volume : QStorageInfo::mountedVolumes()) {
        if (!isRemovable(volume))
            continue;
        urls.append(QUrl::fromLocalFile(volume.rootPath()));
        if (!volume.name().isEmpty())
            labels.insert(volume.rootPath(), volume.name());
    }
    dialog.setSidebarUrls(urls + attachedDevices());

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
    // The dialog writes the folder's name back whenever its file system model reports on the folder.
    QObject::connect(model, &QAbstractItemModel::dataChanged, &dialog, label);
}

/// Wide enough for the names of disks; folders have neither a size nor a type worth a column.
void makeRoom(QFileDialog& dialog)
{
    dialog.resize(860, 540);
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

/// Return in the field closes the dialog while the completions below it stay open. As long as they are, the toolkit
/// overlooks that the window behind has become active, and that would then take no keys.
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
        // The dialog would remember itself in a file under the user's configuration. This program leaves no files
        // behind, so its settings lead to a place where nothing can be written.
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("/dev/null"));

        auto* shown = new QFileDialog(QApplication::activeWindow());
        const QPointer<QFileDialog> dialog(shown);
        configure(*shown);
        const int result = shown->exec();
        // The program may have ended meanwhile, and the dialog with its window.
        if (!dialog)
            return Response::cancel;
        if (result == QDialog::Accepted)
            collect(dialog->selectedFiles());
        delete dialog;
        return result == QDialog::Accepted ? Response::ok : Response::cancel;
    }
    std::optional<Location> URL() const override
    {
        return chosen.empty() ? std::nullopt : std::optional(chosen.front());
    }
    std::vector<Location> URLs() const override { return chosen; }

private:
    void configure(QFileDialog& dialog) const
    {
        dialog.setWindowTitle(QString::fromStdString(title));
        dialog.setOption(QFileDialog::DontUseNativeDialog);
        dialog.setOption(QFileDialog::ReadOnly);
        dialog.setOption(QFileDialog::ShowDirsOnly, canChooseDirectories && !canChooseFiles);
        dialog.setFileMode(QFileDialog::Directory);
        // The mode resets the views to a single choice, so this comes after it.
        for (const auto* name : {"listView", "treeView"}) {
            auto* view = dialog.findChild<QAbstractItemView*>(QLatin1String(name));
            if (view && allowsMultipleSelection)
                view->setSelectionMode(QAbstractItemView::ExtendedSelection);
        }
        fillSidebar(dialog);
        makeRoom(dialog);
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
