#include "Fixtures/AnnouncementRecorder.h"
#include "Fixtures/WindowTest.h"

#include <QAbstractItemView>
#include <QScrollBar>
#include <QTest>

#include <gtest/gtest.h>

#include <set>

namespace reelkeep {
namespace {

using enum WindowState;

const std::vector<QKeyCombination> strikes = {Qt::Key_Up,
                                              Qt::Key_Down,
                                              Qt::Key_Left,
                                              Qt::Key_Right,
                                              Qt::Key_PageUp,
                                              Qt::Key_PageDown,
                                              Qt::Key_Home,
                                              Qt::Key_End,
                                              Qt::Key_Space,
                                              Qt::Key_Return,
                                              Qt::Key_Enter,
                                              Qt::Key_Escape,
                                              Qt::Key_Tab,
                                              Qt::SHIFT | Qt::Key_Backtab,
                                              Qt::Key_A,
                                              Qt::Key_B,
                                              Qt::Key_D,
                                              Qt::Key_M,
                                              Qt::Key_1,
                                              Qt::Key_Plus,
                                              Qt::Key_Delete,
                                              Qt::Key_Backspace,
                                              Qt::Key_Insert,
                                              Qt::Key_F1,
                                              Qt::Key_F2,
                                              Qt::Key_F4,
                                              Qt::Key_F5,
                                              Qt::Key_F10,
                                              Qt::ALT | Qt::Key_Down,
                                              Qt::CTRL | Qt::Key_A,
                                              Qt::CTRL | Qt::Key_C,
                                              Qt::CTRL | Qt::Key_V,
                                              Qt::CTRL | Qt::Key_Z,
                                              Qt::SHIFT | Qt::Key_Right,
                                              Qt::CTRL | Qt::Key_End};

/// Every key is pressed on every control: a stray one must change nothing.
class ContentViewWalk : public WindowTest, public testing::WithParamInterface<WindowState> {
protected:
    void SetUp() override
    {
        enterState(GetParam());
        resize(1148, 700);
    }
    QScrollBar& page() const { return *window->scrollArea()->verticalScrollBar(); }
    /// Everything that can have the focus: the content as a whole, and the widgets in the Tab order.
    std::vector<QWidget*> controls() const
    {
        std::vector<QWidget*> found = {content};
        content->setFocus();
        QTest::keyClick(content, Qt::Key_Tab);
        for (QWidget* first = window->focusWidget(); found.size() == 1 || window->focusWidget() != first;) {
            found.push_back(window->focusWidget());
            QTest::keyClick(window->focusWidget(), Qt::Key_Tab);
        }
        return found;
    }
    /// Whether the manual page gives this key a use on this control.
    static bool works(Qt::Key key, const QWidget& control)
    {
        static const std::set<Qt::Key> pressing = {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter};
        if (qobject_cast<const Button*>(&control))
            return pressing.count(key) > 0;
        return qobject_cast<const Switch*>(&control) && key == Qt::Key_Space;
    }
    static bool scrolls(Qt::Key key)
    {
        static const std::set<Qt::Key> scrolling = {Qt::Key_Up,       Qt::Key_Down, Qt::Key_PageUp,
                                                    Qt::Key_PageDown, Qt::Key_Home, Qt::Key_End};
        return scrolling.count(key) > 0;
    }
    void closeChooser() const
    {
        if (chooser() && chooser()->view()->isVisible())
            QTest::keyClick(chooser()->view(), Qt::Key_Escape);
    }
};

TEST_P(ContentViewWalk, ignoresKeysThatTheManualDoesNotName)
{
    const Snapshot before = snapshot(session());
    const std::size_t dialogsBefore = dialogs.shown.size();
    for (QWidget* control : controls()) {
        for (const QKeyCombination strike : strikes) {
            const Qt::Key key = strike.key();
            if (works(key, *control))
                continue;
            control->setFocus(Qt::TabFocusReason);
            const int position = page().maximum() / 2;
            page().setValue(position);
            QTest::keyClick(control, key, strike.keyboardModifiers());
            closeChooser();
            settle();
            const auto what = [&] {
                return spokenName(*control).toStdString() + ": " + QKeySequence(strike).toString().toStdString();
            };
            ASSERT_EQ(snapshot(session()), before) << what();
            ASSERT_EQ(dialogs.shown.size(), dialogsBefore) << what();
            const bool isStep = key == Qt::Key_Tab || key == Qt::Key_Backtab;
            EXPECT_EQ(window->focusWidget() != control, isStep) << what();
            if (!isStep && !scrolls(key)) {
                EXPECT_EQ(page().value(), position) << what();
            }
        }
    }
}

TEST_P(ContentViewWalk, scrollsTheWindowFromEveryControlThatDoesNotUseTheKey)
{
    for (QWidget* control : controls()) {
        const bool usesAll = qobject_cast<RowList*>(control);
        const bool usesArrows = usesAll || qobject_cast<PopUp*>(control);
        const bool usesEnds = usesAll || qobject_cast<TextWidget*>(control);
        for (const auto& [key, isUsed, goesDown] :
             {std::tuple(Qt::Key_Up, usesArrows, false), std::tuple(Qt::Key_Down, usesArrows, true),
              std::tuple(Qt::Key_PageUp, usesAll, false), std::tuple(Qt::Key_PageDown, usesAll, true),
              std::tuple(Qt::Key_Home, usesEnds, false), std::tuple(Qt::Key_End, usesEnds, true)}) {
            control->setFocus(Qt::TabFocusReason);
            const int position = page().maximum() / 2;
            page().setValue(position);
            QTest::keyClick(control, key);
            closeChooser();
            const int moved = page().value() - position;
            const std::string what =
                spokenName(*control).toStdString() + ": " + QKeySequence(key).toString().toStdString();
            EXPECT_EQ(moved > 0, !isUsed && goesDown) << what;
            EXPECT_EQ(moved < 0, !isUsed && !goesDown) << what;
        }
    }
}

TEST_P(ContentViewWalk, changesNothingWithTheWheel)
{
    const Snapshot before = snapshot(session());
    for (QWidget* widget : content->findChildren<QWidget*>()) {
        if (!widget->isVisible())
            continue;
        content->setFocus();
        for (const int notches : {-1, 1, -20, 20})
            turnWheel(*widget, widget->rect().center(), notches);
        settle();
        ASSERT_EQ(snapshot(session()), before) << widget->metaObject()->className();
        ASSERT_EQ(window->focusWidget(), content) << widget->metaObject()->className();
    }
}

INSTANTIATE_TEST_SUITE_P(States, ContentViewWalk, testing::Values(fresh, chosen, analysed, copying, allSaved));

} // namespace
} // namespace reelkeep
