#include "Fixtures/ScriptedFolderDialogs.h"

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
            throw std::logic_error("a dialog that nobody expected: " + title);
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

FolderDialogFactory ScriptedFolderDialogs::factory()
{
    return [this] { return std::make_unique<ScriptedDialog>(*this); };
}

} // namespace reelkeep
