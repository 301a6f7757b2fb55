#include "FileDialogParts.h"

#include <QAction>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileSystemModel>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QSplitter>
#include <QToolButton>
#include <QTreeView>

namespace reelkeep {

FileDialogParts::FileDialogParts(const QFileDialog& dialog)
{
    const auto find = [this, &dialog](auto*& part, const char* name) {
        using Part = std::remove_pointer_t<std::remove_reference_t<decltype(part)>>;
        part = dialog.findChild<Part*>(QLatin1String(name));
        if (!part)
            missing.append(QLatin1String(name));
    };
    find(model, "qt_filesystem_model");
    find(path, "lookInCombo");
    find(back, "backButton");
    find(forward, "forwardButton");
    find(up, "toParentButton");
    find(newFolder, "newFolderButton");
    find(listMode, "listModeButton");
    find(detailMode, "detailModeButton");
    find(splitter, "splitter");
    find(sidebar, "sidebar");
    find(list, "listView");
    find(details, "treeView");
    find(field, "fileNameEdit");
    find(fileTypeLabel, "fileTypeLabel");
    find(fileType, "fileTypeCombo");
    find(buttons, "buttonBox");
    find(renameEntry, "qt_rename_action");
    find(deleteEntry, "qt_delete_action");
}

} // namespace reelkeep
