#pragma once

#include <QStringList>

class QAbstractItemView;
class QAction;
class QComboBox;
class QDialogButtonBox;
class QFileDialog;
class QFileSystemModel;
class QLabel;
class QLineEdit;
class QListView;
class QSplitter;
class QToolButton;
class QTreeView;

namespace reelkeep {

/// The widgets inside the toolkit's file dialog. Their names are private to the toolkit: one that it has renamed is
/// null here, and its name is in `missing`.
struct FileDialogParts {
    explicit FileDialogParts(const QFileDialog& dialog);

    QStringList missing;
    QFileSystemModel* model;
    QComboBox* path; ///< Of the folder that is shown.
    QToolButton* back;
    QToolButton* forward;
    QToolButton* up;
    QToolButton* newFolder;
    QToolButton* listMode;
    QToolButton* detailMode;
    QSplitter* splitter;
    QListView* sidebar;
    QListView* list; ///< The folders, as icons. It shares its selection with `details`.
    QTreeView* details;
    QLineEdit* field;
    QLabel* fileTypeLabel;
    QComboBox* fileType;
    QDialogButtonBox* buttons;
    QAction* renameEntry;
    QAction* deleteEntry;
};

} // namespace reelkeep
