#pragma once

#include "FolderDialog.h"

#include <deque>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace reelkeep {

std::vector<Location> locations(const std::vector<std::string>& paths);

/// Answers folder dialogs from a script and records how they were shown. Must outlive the dialogs it makes.
class ScriptedFolderDialogs {
public:
    struct Answer {
        FolderDialog::Response response = FolderDialog::Response::ok;
        std::vector<Location> chosen;
        std::function<void()> whileOpen;
    };
    struct Shown {
        std::string title;
        bool canChooseDirectories;
        bool canChooseFiles;
        bool allowsMultipleSelection;

        bool operator==(const Shown&) const = default;
    };

    /// Dialogs that choose a folder, or several, and no files.
    static Shown forOneFolder(std::string title);
    static Shown forSeveralFolders(std::string title);

    /// The user's answer to the next dialog.
    void willChoose(const std::vector<std::string>& paths);
    void willCancel();
    FolderDialogFactory factory();

    std::deque<Answer> answers; ///< One for each dialog that will be shown.
    std::vector<Shown> shown;
    int openCount = 0; ///< Number of dialogs that exist now.
};

/// How a failed test prints a dialog.
void PrintTo(const ScriptedFolderDialogs::Shown& dialog, std::ostream* stream);

} // namespace reelkeep
