#include "Fixtures/WindowTest.h"
#include "UI/FocusRing.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QScrollBar>
#include <QTest>

#include <gtest/gtest.h>

namespace reelkeep {
namespace {

using enum WindowState;

/// The keyboard focus and the scroll position while results arrive and controls disappear.
class ContentViewFocus : public WindowTest {
protected:
    QScrollBar& page() const { return *window->scrollArea()->verticalScrollBar(); }
    int heightInWindow(const QWidget& widget) const { return widget.mapTo(window.get(), QPoint()).y(); }
    static bool hasRing(const QWidget& widget)
    {
        const auto* ring = widget.findChild<FocusRing*>();
        return ring && ring->shownFrame();
    }
    /// Presses a button with the keyboard and waits until it is disabled.
    void pressByKey(Button& pressed)
    {
        content->setFocus();
        pressed.setFocus(Qt::TabFocusReason);
        QTest::keyClick(&pressed, Qt::Key_Space);
        ASSERT_TRUE(waitUntil([&pressed] { return !pressed.isEnabled(); }));
    }
    void startAnalysisByKey()
    {
        files->holdAnalyses();
        pressByKey(button(scanLabel));
    }
    void finishAnalysis()
    {
        files->releaseAnalyses();
        ASSERT_TRUE(becomesIdle());
    }
    QWidget* focused() const { return window->focusWidget(); }
};

TEST_F(ContentViewFocus, isOnNoControlWhileTheScanButtonIsDisabled)
{
    enterState(analysed);
    startAnalysisByKey();
    EXPECT_EQ(focused(), content);
    const auto destination = session().copyDestinationFolder();
    for (const Qt::Key key : {Qt::Key_PageDown, Qt::Key_Down, Qt::Key_D, Qt::Key_Space, Qt::Key_Return}) {
        QTest::keyClick(focused(), key);
        settle();
    }
    EXPECT_EQ(session().copyDestinationFolder(), destination);
    EXPECT_FALSE(chooser()->findChild<QAbstractItemView*>()->isVisible());
    finishAnalysis();
}

TEST_F(ContentViewFocus, returnsToTheScanButtonWithItsRingAndWithoutScrolling)
{
    enterState(analysed);
    resize(1148, 600);
    startAnalysisByKey();
    page().setValue(0);
    finishAnalysis();
    EXPECT_EQ(focused(), &button(scanLabel));
    EXPECT_TRUE(hasRing(button(scanLabel)));
    EXPECT_EQ(page().value(), 0);
}

TEST_F(ContentViewFocus, returnsToAClickedButtonWithoutARing)
{
    enterState(analysed);
    press(scanLabel);
    ASSERT_TRUE(becomesIdle());
    EXPECT_EQ(focused(), &button(scanLabel));
    EXPECT_FALSE(hasRing(button(scanLabel)));
}

TEST_F(ContentViewFocus, staysOnTheControlThatWasChosenMeanwhile)
{
    enterState(analysed);
    startAnalysisByKey();
    toggle().setFocus(Qt::MouseFocusReason);
    finishAnalysis();
    EXPECT_EQ(focused(), &toggle());
}

TEST_F(ContentViewFocus, staysOnTheBackgroundIfThatWasClickedMeanwhile)
{
    enterState(analysed);
    startAnalysisByKey();
    QTest::mouseClick(content, Qt::LeftButton, {}, QPoint(5, 5));
    finishAnalysis();
    EXPECT_EQ(focused(), content);
}

TEST_F(ContentViewFocus, returnsAlthoughAnotherWindowWasActiveMeanwhile)
{
    enterState(analysed);
    startAnalysisByKey();
    QWidget other;
    showActive(other);
    finishAnalysis();
    EXPECT_EQ(focused(), &button(scanLabel));
}

TEST_F(ContentViewFocus, staysWhereItWasMovedWhileAnotherWindowWasActive)
{
    enterState(analysed);
    files->holdAnalyses();
    pressByKey(button(scanLabel));
    QWidget other;
    showActive(other);
    toggle().setFocus();
    finishAnalysis();
    EXPECT_EQ(focused(), &toggle());
}

TEST_F(ContentViewFocus, returnsFromAnotherWindowWithARingOnlyIfAKeyWasUsed)
{
    enterState(analysed);
    const auto leaveAndReturn = [this] {
        QWidget other;
        showActive(other);
        finishAnalysis();
        other.close();
        window->activateWindow();
        ASSERT_TRUE(waitUntil([this] { return button(scanLabel).hasFocus(); }));
    };
    startAnalysisByKey();
    leaveAndReturn();
    EXPECT_TRUE(hasRing(button(scanLabel)));

    content->setFocus();
    files->holdAnalyses();
    press(scanLabel);
    leaveAndReturn();
    EXPECT_FALSE(hasRing(button(scanLabel)));
}

TEST_F(ContentViewFocus, movesOnFromTheDisabledButtonWithTab)
{
    enterState(analysed);
    resize(1148, 600);
    startAnalysisByKey();
    page().setValue(0);
    QTest::keyClick(focused(), Qt::Key_Tab);
    EXPECT_EQ(focused(), chooser());
    EXPECT_GT(page().value(), 0) << "the view follows the keyboard";
    QTest::keyClick(focused(), Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(focused(), &toggle());
    finishAnalysis();
}

TEST_F(ContentViewFocus, keepsTheScrollPositionWhenACopyEnds)
{
    enterState(analysed);
    resize(1366, 768);
    Button& pressed = button(copyLabel);
    page().setValue(heightInWindow(pressed) - 300);
    ASSERT_EQ(heightInWindow(pressed), 300);
    press(copyLabel);
    ASSERT_TRUE(becomesIdle());
    EXPECT_EQ(heightInWindow(pressed), 300);
    EXPECT_EQ(focused(), content);
}

TEST_F(ContentViewFocus, keepsTheScrollPositionWhenTheFocusedListDisappears)
{
    enterState(analysed);
    resize(1366, 768);
    Button& pressed = button(copyLabel);
    page().setValue(heightInWindow(pressed) - 300);
    pressed.setFocus(Qt::TabFocusReason);
    files->holdCopy(2);
    QTest::keyClick(&pressed, Qt::Key_Space);
    ASSERT_TRUE(waitUntil([&pressed] { return !pressed.isEnabled(); }));
    list()->setFocus(Qt::MouseFocusReason);
    files->releaseCopy();
    ASSERT_TRUE(becomesIdle());
    EXPECT_EQ(heightInWindow(pressed), 300);
    EXPECT_EQ(focused(), content);
}

TEST_F(ContentViewFocus, leavesTheEndOfThePageAloneWhenTheProgressBarGoes)
{
    enterState(analysed);
    resize(1148, 700);
    const int height = content->heightForWidth(1148);
    files->holdAnalyses();
    press(scanLabel);
    ASSERT_TRUE(waitUntil([&] { return content->heightForWidth(1148) > height; }));
    page().setValue(page().maximum());
    const int position = page().value();
    finishAnalysis();
    ASSERT_TRUE(waitUntil([&] { return content->heightForWidth(1148) == height; }));
    letEventsPass();
    EXPECT_EQ(page().value(), position);
}

TEST_F(ContentViewFocus, isInViewWhereAssistiveTechnologyMovedIt)
{
    enterState(analysed);
    resize(1148, 600);
    for (QWidget* widget :
         {static_cast<QWidget*>(&button(copyLabel)), static_cast<QWidget*>(list()), static_cast<QWidget*>(&toggle()),
          static_cast<QWidget*>(chooser()), static_cast<QWidget*>(&button(QStringLiteral("Elegir camara")))}) {
        spoken(*widget).actionInterface()->doAction(QAccessibleActionInterface::setFocusAction());
        EXPECT_EQ(focused(), widget);
        const QRect place(widget->mapTo(window.get(), QPoint()), widget->size());
        EXPECT_TRUE(window->rect().contains(place)) << spokenName(*widget).toStdString();
    }
}

TEST_F(ContentViewFocus, leavesAControlWhenTheBackgroundIsClicked)
{
    toggle().setFocus(Qt::TabFocusReason);
    ASSERT_TRUE(hasRing(toggle()));
    QTest::mouseClick(&part(QStringLiteral("Analizar primero")), Qt::LeftButton, {}, QPoint(4, 4));
    EXPECT_EQ(focused(), content);
    EXPECT_FALSE(hasRing(toggle()));
}

TEST_F(ContentViewFocus, scrollsThePageWithHomeAndEnd)
{
    enterState(analysed);
    resize(1148, 600);
    for (QWidget* widget : {static_cast<QWidget*>(content), static_cast<QWidget*>(&button(scanLabel)),
                            static_cast<QWidget*>(chooser()), static_cast<QWidget*>(&toggle())}) {
        widget->setFocus(Qt::MouseFocusReason);
        QTest::keyClick(widget, Qt::Key_End);
        EXPECT_EQ(page().value(), page().maximum()) << widget->metaObject()->className();
        QTest::keyClick(widget, Qt::Key_Home);
        EXPECT_EQ(page().value(), 0) << widget->metaObject()->className();
    }
}

TEST_F(ContentViewFocus, movesInTheListInsteadOfThePageWithHomeAndEnd)
{
    enterState(analysed);
    resize(1148, 600);
    list()->setFocus(Qt::MouseFocusReason);
    page().setValue(100);
    QTest::keyClick(list(), Qt::Key_End);
    EXPECT_EQ(list()->currentRow(), 3);
    QTest::keyClick(list(), Qt::Key_Home);
    EXPECT_EQ(list()->currentRow(), 0);
    EXPECT_EQ(page().value(), 100);
}

} // namespace
} // namespace reelkeep
