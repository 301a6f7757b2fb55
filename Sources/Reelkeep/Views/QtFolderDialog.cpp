#include "QtFolderDialog.h"

#include "FolderChooser.h"
#include "MountedVolumes.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QPointer>
#include <QSettings>

namespace reelkeep {

namespace {

class QtFolderDialog : public FolderDialog {
public:
    Response runModal() override
    {
        // The dialog would save its state in a file under the user's configuration. This program leaves no files
        // behind, so the settings path leads to a place that cannot be written to.
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("/dev/null"));

        auto* shown = new FolderChooser(
            QApplication::activeWindow(),
            firstFolder(),
            canChooseFiles || !canChooseDirectories,
            allowsMultipleSelection
        );
        const QPointer<FolderChooser> dialog(shown);
        shown->setWindowTitle(QString::fromStdString(title));
        const int result = shown->exec();
        // The program may have ended in the meantime, and destroyed the dialog with its window.
        if (!dialog)
            return Response::cancel;
        if (result == QDialog::Accepted)
            collect(dialog->chosenFolders());
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
    /// Home at first and when the disk of the last folder does not answer in time, otherwise the last folder.
    static QString firstFolder()
    {
        const QString& last = lastFolder();
        return !last.isEmpty() && isAnsweringFolder(last, patienceWithDisks) ? last : QDir::homePath();
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
