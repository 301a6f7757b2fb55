#pragma once

#include "FileDialogParts.h"

#include <QFileDialog>
#include <QStringList>

#include <chrono>

namespace reelkeep {

class Button;
class TextWidget;
class Announcer;

/// How long to wait for a disk when a dialog opens, or when a folder was typed.
inline constexpr std::chrono::milliseconds patienceWithDisks{300};

/// The toolkit's folder dialog, dressed like the window. It is read-only. Its field always shows what will be chosen:
/// the selected folders or, with none selected, the one whose content is shown.
class FolderChooser : public QFileDialog {
    Q_OBJECT

public:
    FolderChooser(QWidget* parent, const QString& folder, bool choosesFiles, bool choosesSeveral);

    /// What was chosen, once the dialog is accepted: absolute paths.
    const QStringList& chosenFolders() const { return chosen; }

protected:
    void accept() override;
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void hideDeadControls();
    void drawSymbols();
    void outlineField();
    void writeTexts();
    void replaceButtons();
    void fillSidebar();
    void fitToScreen();
    void followChoice();

    QStringList selectedFolders() const;
    QString absolutePath(QString path) const;
    QStringList typedFolders(const QString& text) const;
    void describeChoice();
    void complain(const QString& text);

    FileDialogParts parts;
    bool choosesSeveral;
    Button* chooseButton = nullptr;
    TextWidget* complaint = nullptr;
    Announcer* announcer = nullptr;
    QString description; ///< Of `described`, in the field.
    QStringList described;
    QStringList chosen;
};

} // namespace reelkeep
