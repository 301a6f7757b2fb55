#pragma once

#include "Fixtures/TemporaryFolder.h"
#include "FolderDialog.h"

#include <QDialogButtonBox>
#include <QModelIndex>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

class QAbstractItemView;
class QFileDialog;
class QPushButton;

namespace reelkeep {

/// The real dialog, operated by a function while it is open.
class QtFolderDialogTest : public testing::Test {
protected:
    QtFolderDialogTest();

    Location inside(const char* name) const { return folder / name; }

    /// Shows the dialog on the test's folder and calls `person` once the folders are listed.
    FolderDialog::Response run(const std::function<void(QFileDialog&)>& person);
    /// The folder in which a new dialog opens; it is cancelled at once.
    static QString firstFolder();
    static std::unique_ptr<FolderDialog> made(bool several);

    static QAbstractItemView& view(QFileDialog& shown);
    static QStringList rowsOf(QFileDialog& shown);
    static QModelIndex rowOf(QFileDialog& shown, const QString& name);
    static QPushButton& button(QFileDialog& shown, QDialogButtonBox::ButtonRole role);
    static void click(QFileDialog& shown, const char* name, Qt::KeyboardModifiers modifiers = {});
    static void accept(QFileDialog& shown);
    static void cancel(QFileDialog& shown);

    TemporaryFolder folder;
    std::unique_ptr<FolderDialog> dialog = made(false);
};

} // namespace reelkeep
