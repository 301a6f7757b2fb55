#include "FolderChooser.h"

#include "MountedVolumes.h"
#include "UI/Announcer.h"
#include "UI/Appearance.h"
#include "UI/AvailableSize.h"
#include "UI/Controls.h"
#include "UI/SymbolIcon.h"
#include "UI/TextWidget.h"

#include <QAbstractFileIconProvider>
#include <QAction>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPalette>
#include <QSplitter>
#include <QToolButton>
#include <QTreeView>

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

void name(QToolButton* button, const QString& text)
{
    button->setToolTip(text);
    button->setAccessibleName(text);
    button->setAccessibleDescription({});
}

} // namespace

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

/// The toolkit draws the edge of a field darker than the window. In a dark theme it would be almost invisible.
void FolderChooser::outlineField()
{
    const Appearance appearance = Appearance::of(this);
    QPalette colours; // the desktop decides all that are not set
    if (appearance.isDark()) {
        constexpr int darkenedBy = 140; // per cent, by the toolkit's style
        const QColor edge = Appearance::over(appearance.primaryFill(0.2), appearance.window());
        colours.setColor(QPalette::Window, edge.lighter(darkenedBy));
    }
    parts.field->setPalette(colours);
}

void FolderChooser::changeEvent(QEvent* event)
{
    QFileDialog::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && parts.field)
        outlineField();
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

} // namespace reelkeep
