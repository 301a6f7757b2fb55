#pragma once

#include "FolderDialog.h"

#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace reelkeep {

/// Answers folder dialogs from a script and records how they were shown. Outlives the dialogs it makes.
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
    };

    std::deque<Answer> answers; ///< One for each dialog that will be shown.
    std::vector<Shown> shown;
    int openCount = 0; ///< Dialogs that exist now.

    FolderDialogFactory factory();
};

} // namespace reelkeep
