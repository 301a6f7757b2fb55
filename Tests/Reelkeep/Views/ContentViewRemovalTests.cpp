#include "Fixtures/WindowTest.h"
#include "UI/FocusRing.h"

#include <QAccessible>
#include <QApplication>
#include <QScrollBar>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>

namespace reelkeep {
namespace {

/// Pressing "Quitar", and repeating the key or the click when other controls have taken the button's place.
class ContentViewRemoval : public WindowTest {
protected:
    ContentViewRemoval() { pressQuickly(); }
    ~ContentViewRemoval() override { QApplication::setDoubleClickInterval(before); }

    /// From now on every press counts as the second of a double click, or none does, however slow the machine is.
    static void pressQuickly() { QApplication::setDoubleClickInterval(60'000); }
    static void pressSlowly() { QApplication::setDoubleClickInterval(0); }

    Button& removeButton(const char* path) const
    {
        for (Button* button : content->findChildren<Button*>()) {
            if (button->isVisible() && button->accessibleDescription() == QLatin1String(path))
                return *button;
        }
        throw std::invalid_argument(path);
    }
    QScrollBar& page() const { return *window->scrollArea()->verticalScrollBar(); }
    QPoint placeOf(const QWidget& widget) const { return widget.mapTo(window.get(), widget.rect().center()); }
    void clickAt(QPoint place) const
    {
        QTest::mouseClick(window->windowHandle(), Qt::LeftButton, {}, place);
        settle();
    }
    /// Removes a place and waits until the layout has come to rest.
    void removeByClick(const char* path) const
    {
        const int height = content->heightForWidth(content->width());
        const QPoint place = placeOf(removeButton(path));
        ASSERT_TRUE(window->rect().contains(place));
        clickAt(place);
        ASSERT_TRUE(waitUntil([&] { return content->heightForWidth(content->width()) < height; }));
        letEventsPass();
    }
    void scrollTo(const Button& button, int y) const
    {
        page().setValue(page().value() + placeOf(button).y() - y);
        ASSERT_EQ(placeOf(button).y(), y);
    }
    void reachByTab(Button& button) const
    {
        content->setFocus();
        button.setFocus(Qt::TabFocusReason);
    }
    void strike(Qt::Key key) const
    {
        QTest::keyClick(window->windowHandle(), key);
        settle();
    }
    QWidget* focused() const { return window->focusWidget(); }
    static bool hasRing(const QWidget& widget) { return FocusRing::belongsAround(widget); }
    std::vector<Location> reviewed() { return session().destinationReviewFolders(); }

private:
    int before = QApplication::doubleClickInterval();
};

TEST_F(ContentViewRemoval, movesTheFocusToTheNextRemoveButton)
{
    addReviewFolders({"/media/a", "/media/b", "/media/c"});
    reachByTab(removeButton("/media/b"));
    strike(Qt::Key_Space);
    EXPECT_EQ(reviewed(), locations({"/media/a", "/media/c"}));
    EXPECT_EQ(focused(), &removeButton("/media/c"));
    EXPECT_TRUE(hasRing(removeButton("/media/c")));
}

TEST_F(ContentViewRemoval, movesTheFocusBackFromTheLastRow)
{
    addReviewFolders({"/media/a", "/media/b", "/media/c"});
    reachByTab(removeButton("/media/c"));
    strike(Qt::Key_Return);
    EXPECT_EQ(focused(), &removeButton("/media/b"));
    EXPECT_TRUE(hasRing(removeButton("/media/b")));
}

TEST_F(ContentViewRemoval, movesTheFocusToTheAddButtonWhenNoRowIsLeft)
{
    addReviewFolders({"/media/a"});
    reachByTab(removeButton("/media/a"));
    strike(Qt::Key_Space);
    EXPECT_EQ(focused(), &button(QStringLiteral("Anadir ubicaciones")));
    EXPECT_TRUE(hasRing(*focused()));
}

TEST_F(ContentViewRemoval, movesTheFocusToTheAddButtonWhenOnlyTheCopyDestinationIsLeft)
{
    chooseDestination("/media/disk");
    addReviewFolders({"/media/a"});
    reachByTab(removeButton("/media/a"));
    strike(Qt::Key_Space);
    EXPECT_EQ(focused(), &button(QStringLiteral("Anadir ubicaciones")));
}

TEST_F(ContentViewRemoval, countsQuickPressesOfSpaceAsOne)
{
    addReviewFolders({"/media/a", "/media/b", "/media/c"});
    reachByTab(removeButton("/media/a"));
    for (int count = 0; count < 5; ++count)
        strike(Qt::Key_Space);
    EXPECT_EQ(reviewed(), locations({"/media/b", "/media/c"}));
    EXPECT_TRUE(session().preserveFolderStructure());
    EXPECT_EQ(dialogs.shown.size(), 1U) << "only the dialog that added the rows";
}

TEST_F(ContentViewRemoval, removesARowWithEachSlowPressOfSpace)
{
    pressSlowly();
    addReviewFolders({"/media/a", "/media/b", "/media/c"});
    reachByTab(removeButton("/media/a"));
    for (int count = 0; count < 3; ++count)
        strike(Qt::Key_Space);
    EXPECT_TRUE(reviewed().empty());
    EXPECT_TRUE(session().preserveFolderStructure());
}

TEST_F(ContentViewRemoval, countsADoubleClickAsOnePress)
{
    addReviewFolders({"/media/a", "/media/b", "/media/c"});
    const QPoint place = placeOf(removeButton("/media/b"));
    clickAt(place);
    clickAt(place);
    EXPECT_EQ(reviewed(), locations({"/media/a", "/media/c"}));
}

TEST_F(ContentViewRemoval, removesARowWithEachPressByAssistiveTechnology)
{
    addReviewFolders({"/media/a", "/media/b", "/media/c"});
    for (const std::size_t left : {2U, 1U, 0U}) {
        Button& next = removeButton(reviewed().front().path().c_str());
        QAccessible::queryAccessibleInterface(&next)->actionInterface()->doAction(
            QAccessibleActionInterface::pressAction());
        ASSERT_TRUE(waitUntil([&] { return reviewed().size() == left; }));
        settle();
    }
}

TEST_F(ContentViewRemoval, turnsNoSwitchThatMovesUnderADoubleClick)
{
    chooseDestination("/media/disk");
    addReviewFolders({"/media/a"});
    const QPoint place = placeOf(removeButton("/media/a"));
    const auto removed = [this] { return session().destinationReviewFolders() == locations({"/media/disk"}); };
    clickAt(place);
    ASSERT_TRUE(removed());
    clickAt(place);
    EXPECT_TRUE(removed());
    EXPECT_TRUE(session().preserveFolderStructure());
}

TEST_F(ContentViewRemoval, removesARowWithEachSlowClickAtOnePoint)
{
    pressSlowly();
    addReviewFolders({"/media/a", "/media/b", "/media/c"});
    const QPoint place = placeOf(removeButton("/media/a"));
    clickAt(place);
    clickAt(place);
    EXPECT_EQ(reviewed(), locations({"/media/c"}));
}

TEST_F(ContentViewRemoval, doesNotScrollThePageUnderThePointer)
{
    pressSlowly();
    addReviewFolders({"/media/a", "/media/b", "/media/c"});
    resize(1148, 700);
    for (const char* path : {"/media/a", "/media/c", "/media/b"}) {
        scrollTo(removeButton(path), 400);
        const int position = page().value();
        removeByClick(path);
        EXPECT_EQ(page().value(), position) << path;
        EXPECT_FALSE(hasRing(*focused())) << path;
    }
}

TEST_F(ContentViewRemoval, leavesThePageAloneAtItsEnd)
{
    pressSlowly();
    addReviewFolders({"/media/a", "/media/b", "/media/c"});
    fill("/media/card", "/media/a", 2, 0);
    chooseCamera("/media/card");
    chooseDestination("/media/disk");
    analyse();
    resize(1148, 1200);
    page().setValue(page().maximum());
    const int position = page().value();
    const TextWidget& note = text(QStringLiteral("La comprobacion es solo de camara hacia los destinos revisados."));
    const QPoint notePlace = placeOf(note);
    for (const char* path : {"/media/a", "/media/c", "/media/b"}) {
        removeByClick(path);
        EXPECT_EQ(page().value(), position) << path;
        EXPECT_EQ(placeOf(note), notePlace) << path;
    }
}

TEST_F(ContentViewRemoval, leavesNoEmptyGroundWhenThePageIsScrolledOn)
{
    addReviewFolders({"/media/a", "/media/b", "/media/c"});
    resize(1148, 1000);
    page().setValue(page().maximum());
    removeByClick("/media/c");
    for (int left = 60; left > 0; --left) {
        page().setValue(page().value() - 1);
        letEventsPass();
        ASSERT_EQ(content->height(), std::max(content->heightForWidth(1148), page().value() + 1000)) << left;
    }
    page().setValue(0);
    letEventsPass();
    EXPECT_EQ(content->height(), content->heightForWidth(1148));
    EXPECT_EQ(page().maximum(), content->height() - 1000);
}

TEST_F(ContentViewRemoval, leavesNoEmptyGroundInAWindowOfAnotherSize)
{
    addReviewFolders({"/media/a", "/media/b", "/media/c"});
    resize(1148, 1000);
    page().setValue(page().maximum());
    removeByClick("/media/c");
    resize(1148, 900);
    EXPECT_EQ(content->height(), content->heightForWidth(1148));
    resize(760, 900);
    EXPECT_EQ(content->height(), content->heightForWidth(760));
}

TEST_F(ContentViewRemoval, scrollsToTheNextButtonIfAKeyWasUsed)
{
    std::vector<std::string> many;
    for (int number = 0; number < 20; ++number)
        many.push_back("/media/disk" + std::to_string(number));
    addReviewFolders(many);
    resize(1148, 600);
    reachByTab(removeButton("/media/disk19"));
    page().setValue(0);
    strike(Qt::Key_Space);
    const QWidget& next = removeButton("/media/disk18");
    ASSERT_EQ(focused(), &next);
    EXPECT_TRUE(waitUntil([&] { return window->rect().contains(placeOf(next)); }));
}

TEST_F(ContentViewRemoval, keepsTheFocusWhenOtherRowsChange)
{
    addReviewFolders({"/media/a", "/media/b", "/media/c"});
    QWidget& kept = removeButton("/media/c");
    reachByTab(removeButton("/media/c"));
    session().removeDestinationReviewFolder(Location("/media/a"));
    settle();
    EXPECT_EQ(focused(), &kept);
    session().setCopyDestinationFolder(Location("/media/b"));
    settle();
    EXPECT_EQ(focused(), &kept);
    session().setCopyDestinationFolder(Location("/media/new"));
    settle();
    EXPECT_EQ(focused(), &kept);
    EXPECT_TRUE(hasRing(kept));
    EXPECT_EQ(&kept, &removeButton("/media/c"));
}

TEST_F(ContentViewRemoval, doesNothingOnSpaceOnceTheFocusedButtonIsDisabled)
{
    addReviewFolders({"/media/a", "/media/b"});
    reachByTab(removeButton("/media/b"));
    session().setCopyDestinationFolder(Location("/media/b"));
    settle();
    strike(Qt::Key_Space);
    EXPECT_EQ(reviewed(), locations({"/media/a", "/media/b"}));
    EXPECT_TRUE(session().preserveFolderStructure());
}

} // namespace
} // namespace reelkeep
