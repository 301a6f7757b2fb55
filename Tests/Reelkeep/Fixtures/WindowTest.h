#pragma once

#include "ContentView.h"
#include "Fixtures/EventLoop.h"
#include "Fixtures/ScriptedFolderDialogs.h"
#include "Fixtures/StagedFiles.h"
#include "Fixtures/Widgets.h"
#include "UI/Box.h"
#include "UI/Controls.h"
#include "UI/PopUp.h"
#include "UI/RowList.h"
#include "UI/ScrollingWindow.h"
#include "UI/TextWidget.h"

#include <gtest/gtest.h>

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace reelkeep {

/// The five states in which the window was designed.
enum class WindowState { fresh, chosen, analysed, copying, allSaved };
std::ostream& operator<<(std::ostream& stream, WindowState state);

// The names of the two buttons that start work.
inline const QString scanLabel = QStringLiteral("Analizar ubicaciones");
inline const QString copyLabel = QStringLiteral("Copiar faltantes al HD seleccionado");

/// The window as a user sees it, on files in memory, with dialogs that the test answers.
class WindowTest : public testing::Test {
protected:
    WindowTest() : WindowTest(std::make_shared<StagedFiles>()) {}
    explicit WindowTest(std::shared_ptr<StagedFiles> stagedFiles);
    ~WindowTest() override;

    VideoSyncViewModel& session() { return content->viewModel(); }

    /// Waits until the window shows what the session holds, and no longer changes.
    void settle() const;
    void resize(int width, int height);
    /// As low as the content allows at this width.
    void resizeToContent(int width);

    // What the user sees. A name is what a screen reader says; a query for something that is not shown fails the test.
    Button& button(const QString& name) const;
    bool hasButton(const QString& name) const { return shownWidget<Button>(*content, name) != nullptr; }
    Switch& toggle() const;
    PopUp* chooser() const { return shownWidgetWith<PopUp>(QStringLiteral("HD de copia activo")); }
    /// The part of the window with a name; its texts in reading order.
    QWidget& part(const QString& name) const;
    QStringList wordsIn(const QString& partName) const { return shownWords(part(partName)); }
    QStringList words() const { return shownWords(*content); }
    TextWidget& text(const QString& words) const;
    TextWidget& textIn(const QString& partName, const QString& words) const;
    RowList* list() const { return shownWidget<RowList>(*content, QStringLiteral("Videos pendientes")); }
    Bar* bar() const { return shownWidget<Bar>(*content, QStringLiteral("Progreso")); }
    QString status() const;

    // What the user does. Each waits until the window shows the outcome.
    void press(const QString& buttonName);
    void chooseCamera(const std::string& path);
    void chooseDestination(const std::string& path);
    void addReviewFolders(const std::vector<std::string>& paths);
    void analyse();
    void pick(const QString& entry);

    void willChoose(const std::vector<std::string>& paths) { dialogs.willChoose(paths); }
    void willCancel() { dialogs.willCancel(); }
    bool becomesIdle();

    /// A card with `onCard` videos of 1000 bytes each, of which the first `onDisk` are on the disk too.
    void fill(const std::string& card, const std::string& disk, int onCard, int onDisk);

    /// Does what a user would do to get there from a new window.
    void enterState(WindowState state);

    std::shared_ptr<StagedFiles> files;
    ScriptedFolderDialogs dialogs;
    ContentView* content;
    std::unique_ptr<ScrollingWindow> window;

private:
    template <class Widget>
    Widget* shownWidgetWith(const QString& beginning) const
    {
        for (Widget* widget : content->findChildren<Widget*>()) {
            if (widget->isVisible() && spokenName(*widget).startsWith(beginning))
                return widget;
        }
        return nullptr;
    }
};

} // namespace reelkeep
