#include "Fixtures/ScriptedFolderDialogs.h"

#include <ostream>
#include <stdexcept>
#include <utility>

namespace reelkeep {

namespace {

class ScriptedDialog : public FolderDialog {
public:
    explicit ScriptedDialog(ScriptedFolderDialogs& dialogs) : script(dialogs) { ++script.openCount; }
    ~ScriptedDialog() override { --script.openCount; }

    Response runModal() override
    {
        script.shown.push_back({title, canChooseDirectories, canChooseFiles, allowsMultipleSelection});
        if (script.answers.empty())
            throw std::logic_error("an unexpected dialog: " + title);
        answer = std::move(script.answers.front());
        script.answers.pop_front();
        if (answer.whileOpen)
            answer.whileOpen();
        return answer.response;
    }

    std::optional<Location> URL() const override
    {
        return answer.chosen.empty() ? std::nullopt : std::optional(answer.chosen.front());
    }

    std::vector<Location> URLs() const override { return answer.chosen; }

private:
    ScriptedFolderDialogs& script;
    ScriptedFolderDialogs::Answer answer;
};

} // namespace

std::vector<Location> locations(const std::vector<std::string>& paths)
{
    return {paths.begin(), paths.end()};
}

void PrintTo(const ScriptedFolderDialogs::Shown& dialog, std::ostream* stream)
{
    *stream << dialog.title << (dialog.canChooseDirectories ? ", folders" : "")
            << (dialog.canChooseFiles ? ", files" : "") << (dialog.allowsMultipleSelection ? ", several" : "");
}

ScriptedFolderDialogs::Shown ScriptedFolderDialogs::forOneFolder(std::string title)
{
    return {std::move(title), true, false, false};
}

ScriptedFolderDialogs::Shown ScriptedFolderDialogs::forSeveralFolders(std::string title)
{
    return {std::move(title), true, false, true};
}

void ScriptedFolderDialogs::willChoose(const std::vector<std::string>& paths)
{
    answers.push_back({.response = FolderDialog::Response::ok, .chosen = locations(paths), .whileOpen = {}});
}

void ScriptedFolderDialogs::willCancel()
{
    // A cancelled dialog may still report what was selected in it.
    answers.push_back({.response = FolderDialog::Response::cancel, .chosen = locations({"/marked"}), .whileOpen = {}});
}

FolderDialogFactory ScriptedFolderDialogs::factory()
{
    return [this] { return std::make_unique<ScriptedDialog>(*this); };
}

} // namespace reelkeep
