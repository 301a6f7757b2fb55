#include "FolderChooser.h"

#include "MountedVolumes.h"
#include "UI/Announcer.h"
#include "UI/AvailableSize.h"
#include "UI/Controls.h"
#include "UI/SymbolIcon.h"
#include "UI/TextWidget.h"

#include <QAbstractFileIconProvider>
#include <QAction>
#include <QComboBox>
#include <QCompleter>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileSystemModel>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QRegularExpression>
#include <QSignalBlocker>
#include <QSplitter>
#include <QToolButton>
#include <QTreeView>

#include <algorithm>
#include <utility>

namespace reelkeep {

namespace {

/// Every entry is a folder. Looks at no file; called by threads of the toolkit too, which use it until the end.
class FolderIcons : public QAbstractFileIconProvider {
public:
    static FolderIcons* shared()
    {
        static FolderIcons icons;
        return &icons;
    }
    QIcon icon(IconType) const override { return folder; }
    QIcon icon(const QFileInfo&) const override { return folder; }
    /// With an empty one the toolkit's model loses entries.
    QString type(const QFileInfo&) const override { return QStringLiteral("Carpeta"); }

private:
    const QIcon folder = symbolIcon("folder");
};

struct Place {
    QString label;
    QIcon icon;
};

/// They exist only in the toolkit's own dialog, not in the desktop's.
FileDialogParts partsOf(QFileDialog& dialog)
{
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    return FileDialogParts(dialog);
}

void name(QToolButton* button, const QString& text)
{
    button->setToolTip(text);
    button->setAccessibleName(text);
    button->setAccessibleDescription({});
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
    writeTexts();
    replaceButtons();
    fillSidebar();
    fitToScreen();
    followChoice();
}

void FolderChooser::hideDeadControls()
{
    for (QWidget* control : std::initializer_list<QWidget*>{parts.newFolder, parts.fileTypeLabel, parts.fileType})
        control->hide();
    for (QAction* entry : {parts.renameEntry, parts.deleteEntry})
        entry->setVisible(false);
    // They would show columns that say nothing of folders, and take disks out of the side bar.
    parts.details->header()->setContextMenuPolicy(Qt::NoContextMenu);
    parts.sidebar->setContextMenuPolicy(Qt::NoContextMenu);
    for (QAbstractItemView* view : std::initializer_list<QAbstractItemView*>{parts.sidebar, parts.list, parts.details})
        view->setDragDropMode(QAbstractItemView::NoDragDrop);
}

void FolderChooser::drawSymbols()
{
    setIconProvider(FolderIcons::shared());
    const QSize size(scaledWithFont(18), scaledWithFont(18));
    for (QAbstractItemView* view : std::initializer_list<QAbstractItemView*>{parts.sidebar, parts.list, parts.details})
        view->setIconSize(size);
    parts.path->setIconSize(size);
    const std::pair<QToolButton*, const char*> symbols[] = {
        {parts.back, "back"},
        {parts.forward, "forward"},
        {parts.up, "up"},
        {parts.listMode, "grid"},
        {parts.detailMode, "rows"}};
    for (const auto& [button, symbol] : symbols) {
        button->setIcon(symbolIcon(symbol));
        button->setIconSize(size * 0.9);
    }
}

void FolderChooser::writeTexts()
{
    setLabelText(LookIn, tr("Ver en:"));
    setLabelText(FileName, tr("Carpeta:"));
    name(parts.back, tr("Atras"));
    name(parts.forward, tr("Adelante"));
    name(parts.up, tr("Carpeta superior"));
    name(parts.listMode, tr("Lista"));
    name(parts.detailMode, tr("Detalles"));
    parts.sidebar->setAccessibleName(tr("Lugares"));
    parts.sidebar->setAccessibleDescription({});
    for (QAbstractItemView* view : std::initializer_list<QAbstractItemView*>{parts.list, parts.details})
        view->setAccessibleName(tr("Carpetas"));
}

/// The toolkit enables its own button also when nothing can be chosen, and not for every folder that can.
void FolderChooser::replaceButtons()
{
    chooseButton = new Button(tr("Seleccionar"));
    chooseButton->setTint(accent::analysisBlue);
    parts.buttons->clear();
    parts.buttons->addButton(chooseButton, QDialogButtonBox::AcceptRole);
    auto* cancelButton = new Button(tr("Cancelar"));
    parts.buttons->addButton(cancelButton, QDialogButtonBox::RejectRole);
    for (Button* button : {chooseButton, cancelButton})
        button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);

    complaint = new TextWidget;
    announcer = new Announcer(complaint);
    complaint->setLineLimit(2);
    const int lastRow = 3; // That of the hidden file types, beside the second button.
    static_cast<QGridLayout*>(layout())->addWidget(complaint, lastRow, 1);
}

/// Home, the whole computer, then cards and disks by their labels.
void FolderChooser::fillSidebar()
{
    QHash<QString, Place> places{
        {QDir::homePath(), {tr("Carpeta personal"), symbolIcon("home")}},
        {QDir::rootPath(), {tr("Equipo"), symbolIcon("computer")}}};
    QList<QUrl> urls{QUrl::fromLocalFile(QDir::homePath()), QUrl::fromLocalFile(QDir::rootPath())};
    for (const Volume& volume : answeringVolumes(patienceWithDisks)) {
        urls.append(QUrl::fromLocalFile(volume.path));
        places.insert(
            volume.path,
            {volume.label.isEmpty() ? QDir(volume.path).dirName() : volume.label,
             symbolIcon(volume.isCard ? "card" : "disk")}
        );
    }
    setSidebarUrls(urls);

    QAbstractItemModel* model = parts.sidebar->model();
    const auto dress = [model, places] {
        constexpr int urlRole = Qt::UserRole + 1;
        for (int row = 0; row < model->rowCount(); ++row) {
            const QModelIndex index = model->index(row, 0);
            const auto place = places.find(index.data(urlRole).toUrl().toLocalFile());
            if (place == places.end())
                continue;
            if (index.data().toString() != place->label)
                model->setData(index, place->label);
            if (index.data(Qt::DecorationRole).value<QIcon>().cacheKey() != place->icon.cacheKey())
                model->setData(index, place->icon, Qt::DecorationRole);
        }
    };
    dress();
    // The dialog restores the folder's name whenever its file system model reports a change of the folder.
    connect(model, &QAbstractItemModel::dataChanged, this, dress);
}

/// Makes the dialog wide enough for the names of disks, if the screen is; hides the columns that say nothing of
/// folders.
void FolderChooser::fitToScreen()
{
    resize(QSize(scaledWithFont(860), scaledWithFont(540)).boundedTo(availableSize(*this)));
    parts.splitter->setSizes({width() / 4, width() * 3 / 4});
    constexpr int nameColumn = 0;
    constexpr int sizeColumn = 1;
    constexpr int typeColumn = 2;
    parts.details->hideColumn(sizeColumn);
    parts.details->hideColumn(typeColumn);
    QHeaderView* header = parts.details->header();
    header->setSectionResizeMode(QHeaderView::ResizeToContents);
    header->setSectionResizeMode(nameColumn, QHeaderView::Stretch);
}

/// Gives the room of the dates to the names where it is short.
void FolderChooser::resizeEvent(QResizeEvent* event)
{
    constexpr int dateColumn = 3;
    if (parts.details)
        parts.details->setColumnHidden(dateColumn, width() < scaledWithFont(600));
    QFileDialog::resizeEvent(event);
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
