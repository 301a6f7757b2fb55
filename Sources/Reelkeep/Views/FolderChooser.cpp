#include "FolderChooser.h"

#include "MountedVolumes.h"
#include "UI/Announcer.h"
#include "UI/Controls.h"
#include "UI/TextWidget.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QDir>
#include <QFileSystemModel>
#include <QLineEdit>
#include <QListView>
#include <QRegularExpression>
#include <QSignalBlocker>
#include <QTreeView>

#include <utility>

namespace reelkeep {

namespace {

/// They exist only in the toolkit's own dialog, not in the desktop's.
FileDialogParts partsOf(QFileDialog& dialog)
{
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    return FileDialogParts(dialog);
}

} // namespace

FolderChooser::FolderChooser(QWidget* parent, const QString& folder, bool choosesFiles, bool severalAllowed)
    : QFileDialog(parent, {}, folder), parts(partsOf(*this)), choosesSeveral(severalAllowed)
{
    setOption(ReadOnly);
    setOption(ShowDirsOnly, !choosesFiles);
    setFileMode(Directory);
    // After the mode, which resets the views to single selection.
    for (QAbstractItemView* view : std::initializer_list<QAbstractItemView*>{parts.list, parts.details}) {
        if (view && choosesSeveral)
            view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    }
    if (!parts.missing.isEmpty())
        return; // Another toolkit than this one is dressed for: its plain dialog chooses folders, too.
    hideDeadControls();
    drawSymbols();
    outlineField();
    writeTexts();
    replaceButtons();
    fillSidebar();
    fitToScreen();
    followChoice();
}

void FolderChooser::followChoice()
{
    // Later in the turn: the toolkit clears the field after it has entered a folder.
    const auto show = [this] { describeChoice(); };
    connect(parts.model, &QFileSystemModel::rootPathChanged, this, show, Qt::QueuedConnection);
    connect(this, &QFileDialog::directoryEntered, this, show, Qt::QueuedConnection);
    connect(parts.list->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        if (!parts.field->hasFocus()) // Otherwise the toolkit follows what is being typed.
            describeChoice();
    });
    connect(parts.field, &QLineEdit::textChanged, this, [this](const QString& text) {
        chooseButton->setEnabled(!text.isEmpty());
        complain({});
    });
    // Return in the field closes the dialog but not the list of completions below it. While that is open, the toolkit
    // does not notice that the window behind has become active, and the window gets no keys.
    connect(this, &QDialog::finished, parts.field->completer()->popup(), &QWidget::hide);
    describeChoice();
}

QStringList FolderChooser::selectedFolders() const
{
    QStringList folders;
    for (const QModelIndex& row : parts.list->selectionModel()->selectedRows()) {
        if (row != parts.list->rootIndex()) // Selected when its path was typed.
            folders.append(row.data(QFileSystemModel::FilePathRole).toString());
    }
    return folders;
}

void FolderChooser::describeChoice()
{
    described = selectedFolders();
    // While the whole computer is shown, this is no path.
    if (described.isEmpty() && QDir::isAbsolutePath(parts.model->rootPath()))
        described.append(parts.model->rootPath());
    description = described.value(0);
    if (described.size() > 1) {
        QStringList names;
        for (const QString& folder : std::as_const(described))
            names.append(u'"' + QDir(folder).dirName() + u'"');
        description = names.join(u' ');
    }
    // The toolkit would take it for typed, and select what it names.
    const QSignalBlocker silence(parts.field);
    parts.field->setText(description);
    if (parts.field->hasFocus())
        parts.field->selectAll(); // So that typing replaces it.
    chooseButton->setEnabled(!description.isEmpty());
    complain({});
}

QString FolderChooser::absolutePath(QString path) const
{
    if (path == QLatin1String("~") || path.startsWith(QLatin1String("~/")))
        path.replace(0, 1, QDir::homePath());
    return QDir::cleanPath(QDir(parts.model->rootPath()).absoluteFilePath(path));
}

/// One path, in which a quote is a letter like any other, or several names or paths in quotes.
QStringList FolderChooser::typedFolders(const QString& text) const
{
    const QString whole = absolutePath(text);
    static const QRegularExpression inQuotes(QStringLiteral("\"([^\"]+)\""));
    if (!text.contains(inQuotes) || isAnsweringFolder(whole, patienceWithDisks))
        return {whole};
    QStringList folders;
    for (auto match = inQuotes.globalMatch(text); match.hasNext();)
        folders.append(absolutePath(match.next().captured(1)));
    return choosesSeveral ? folders : folders.mid(0, 1);
}

void FolderChooser::accept()
{
    if (!parts.missing.isEmpty()) {
        chosen = selectedFiles();
        return QFileDialog::accept();
    }
    const QString text = parts.field->text();
    if (text.isEmpty())
        return;
    const QStringList folders = text == description ? described : typedFolders(text);
    for (const QString& folder : folders) {
        if (!isAnsweringFolder(folder, patienceWithDisks))
            return complain(tr("No he encontrado la carpeta %1").arg(folder));
    }
    chosen = folders;
    done(Accepted); // The toolkit's own `accept` would judge the field once more.
}

void FolderChooser::complain(const QString& text)
{
    complaint->setText(text);
    announcer->announce(text);
}

} // namespace reelkeep
