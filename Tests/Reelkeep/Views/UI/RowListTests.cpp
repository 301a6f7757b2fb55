#include "Fixtures/Desktops.h"
#include "Fixtures/EventLoop.h"
#include "Fixtures/Widgets.h"
#include "UI/Appearance.h"
#include "UI/RowList.h"
#include "UI/TextWidget.h"

#include <QApplication>
#include <QClipboard>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

namespace reelkeep {
namespace {

class RowListTest : public testing::Test {
protected:
    RowListTest()
    {
        list.resize(600, 220);
        showActive(list);
    }

    RowList::Row makeRow()
    {
        ++made;
        auto* text = new TextWidget;
        return {text, [this, text](std::size_t index) {
                    ++shown;
                    text->setText(nameOf(index));
                }};
    }
    static QString nameOf(std::size_t index) { return QStringLiteral("MVI_%1.MOV").arg(index); }
    QStringList wordsInView() const
    {
        QStringList words;
        for (const TextWidget* text : shownTexts(list)) {
            if (text->parentWidget() == list.viewport() && text->geometry().intersects(list.viewport()->rect()))
                words.append(text->text());
        }
        std::sort(words.begin(), words.end());
        return words;
    }
    int scrollPosition() const { return list.verticalScrollBar()->value(); }
    void press(Qt::Key key) { QTest::keyClick(&list, key); }

    int made = 0;
    int shown = 0;
    RowList list{{.makeRow = [this] { return makeRow(); },
                  .description =
                      [](std::size_t index) {
                          return QStringList{nameOf(index), QStringLiteral("1 kB")};
                      },
                  .copiedText = [](std::size_t index) { return QStringLiteral("DCIM/") + nameOf(index); }}};
};

TEST_F(RowListTest, areBuiltOnlyIfInView)
{
    list.reload(100'000);
    EXPECT_LE(list.builtRowCount(), 7U);
    EXPECT_LE(made, 8);
    EXPECT_EQ(wordsInView(), (QStringList{nameOf(0), nameOf(1), nameOf(2), nameOf(3), nameOf(4)}));
    EXPECT_EQ(list.rowCount(), 100'000);
}

TEST_F(RowListTest, areReusedWhileTheListScrolls)
{
    list.reload(100'000);
    const int before = made;
    for (int position = 0; position < list.verticalScrollBar()->maximum(); position += 1'000'000)
        list.verticalScrollBar()->setValue(position);
    list.verticalScrollBar()->setValue(list.verticalScrollBar()->maximum());
    EXPECT_EQ(made, before);
    EXPECT_TRUE(wordsInView().contains(nameOf(99'999)));
}

TEST_F(RowListTest, showTheRecordsAroundTheScrollPosition)
{
    list.reload(100'000);
    list.verticalScrollBar()->setValue(10 + 50'000 * 49);
    EXPECT_EQ(wordsInView(),
              (QStringList{nameOf(50'000), nameOf(50'001), nameOf(50'002), nameOf(50'003), nameOf(50'004)}));
}

TEST_F(RowListTest, areNotUpdatedWhileTheyStayInView)
{
    list.reload(100);
    shown = 0;
    list.verticalScrollBar()->setValue(10);
    EXPECT_EQ(shown, 0);
    list.verticalScrollBar()->setValue(10 + 49);
    EXPECT_EQ(shown, 2) << "one row, to measure it and to show it";
}

TEST_F(RowListTest, stand49Apart)
{
    list.reload(100);
    EXPECT_EQ(list.rowRect(0), QRect(10, 10, list.viewport()->width() - 20, 49));
    EXPECT_EQ(list.rowRect(1).top(), 59);
    EXPECT_EQ(list.verticalScrollBar()->maximum(), 100 * 49 + 20 - 220);
}

TEST_F(RowListTest, needNoScrollingWhileTheyFit)
{
    list.reload(4);
    EXPECT_EQ(list.verticalScrollBar()->maximum(), 0);
    EXPECT_EQ(wordsInView().size(), 4);
}

TEST_F(RowListTest, doNotMoveWhenAClickOrAnotherWindowGivesTheFocus)
{
    list.reload(100);
    list.clearFocus();
    list.verticalScrollBar()->setValue(50 * 49);
    list.setFocus(Qt::MouseFocusReason);
    EXPECT_EQ(scrollPosition(), 50 * 49);
    list.clearFocus();
    list.setFocus(Qt::ActiveWindowFocusReason);
    EXPECT_EQ(scrollPosition(), 50 * 49);
    list.clearFocus();
    list.setFocus(Qt::TabFocusReason);
    EXPECT_EQ(scrollPosition(), 0) << "a key scrolls to the current row";
}

TEST_F(RowListTest, areGoneWhenTheRecordsAre)
{
    list.reload(100);
    list.reload(0);
    EXPECT_EQ(wordsInView(), QStringList());
    EXPECT_EQ(list.currentRow(), -1);
    press(Qt::Key_Down);
    EXPECT_EQ(list.currentRow(), -1);
}

TEST_F(RowListTest, startAtTheTopWhenTheRecordsChange)
{
    list.reload(100);
    list.setCurrentRow(70);
    EXPECT_GT(scrollPosition(), 0);
    list.reload(90);
    EXPECT_EQ(scrollPosition(), 0);
    EXPECT_EQ(list.currentRow(), 0);
}

TEST_F(RowListTest, areFoundByPosition)
{
    list.reload(100);
    EXPECT_EQ(list.rowAt({20, 5}), -1);
    EXPECT_EQ(list.rowAt({20, 10}), 0);
    EXPECT_EQ(list.rowAt({20, 10 + 49}), 1);
    list.verticalScrollBar()->setValue(490);
    EXPECT_EQ(list.rowAt({20, 10}), 10);
}

TEST_F(RowListTest, areWalkedWithTheArrowKeys)
{
    list.reload(100);
    list.setFocus();
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    EXPECT_EQ(list.currentRow(), 2);
    press(Qt::Key_Up);
    EXPECT_EQ(list.currentRow(), 1);
    press(Qt::Key_Up);
    press(Qt::Key_Up);
    EXPECT_EQ(list.currentRow(), 0);
}

TEST_F(RowListTest, areWalkedByPagesAndToTheEnds)
{
    list.reload(100);
    list.setFocus();
    press(Qt::Key_PageDown);
    EXPECT_EQ(list.currentRow(), 3);
    press(Qt::Key_End);
    EXPECT_EQ(list.currentRow(), 99);
    EXPECT_TRUE(wordsInView().contains(nameOf(99)));
    press(Qt::Key_PageUp);
    EXPECT_EQ(list.currentRow(), 96);
    press(Qt::Key_Home);
    EXPECT_EQ(list.currentRow(), 0);
    EXPECT_EQ(scrollPosition(), 0);
}

TEST_F(RowListTest, comeIntoViewWhenTheyBecomeCurrent)
{
    list.reload(100);
    list.setFocus();
    for (int count = 0; count < 60; ++count) {
        press(Qt::Key_Down);
        ASSERT_TRUE(list.viewport()->rect().contains(list.rowRect(list.currentRow())));
    }
}

TEST_F(RowListTest, becomeCurrentByAClick)
{
    list.reload(100);
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, QPoint(500, 10 + 2 * 49 + 5));
    EXPECT_EQ(list.currentRow(), 2);
}

TEST_F(RowListTest, areCopiedByTheKeyboard)
{
    list.reload(100);
    list.setFocus();
    list.setCurrentRow(7);
    QTest::keySequence(&list, QKeySequence::Copy);
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("DCIM/MVI_7.MOV"));
}

TEST_F(RowListTest, showWhichOneIsCurrentWhileTheListHasTheFocus)
{
    list.reload(4);
    list.clearFocus();
    const QImage without = picture(list);
    list.setFocus();
    const QImage with = picture(list);
    EXPECT_NE(without, with);
    const QPoint inside = list.rowRect(0).center();
    EXPECT_EQ(with.pixelColor(inside), without.pixelColor(inside)) << "a ring, not a filled plate";
}

class RowListRing : public RowListTest {
protected:
    RowListRing()
    {
        list.reload(20);
        list.setFocus();
        list.clearFocus();
    }
    bool isShown()
    {
        letEventsPass();
        const QColor ring = Appearance::of(&list).focusRing();
        const QRect row = list.rowRect(list.currentRow());
        return picture(list).pixelColor(row.center().x(), row.top() + 1) == ring;
    }
    void click(int row) { QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, list.rowRect(row).center()); }
};

TEST_F(RowListRing, isNotThereAfterAClick)
{
    list.setFocus(Qt::MouseFocusReason);
    click(2);
    EXPECT_EQ(list.currentRow(), 2);
    EXPECT_FALSE(isShown());
}

TEST_F(RowListRing, comesWithTheFirstKeyAndGoesWithTheNextClick)
{
    list.setFocus(Qt::MouseFocusReason);
    click(2);
    press(Qt::Key_Down);
    EXPECT_TRUE(isShown());
    click(1);
    EXPECT_FALSE(isShown());
    press(Qt::Key_Home);
    EXPECT_TRUE(isShown());
}

TEST_F(RowListRing, isThereWheneverTheKeyboardMovedTheFocus)
{
    for (const Qt::FocusReason reason : {Qt::TabFocusReason, Qt::BacktabFocusReason, Qt::OtherFocusReason}) {
        list.setFocus(reason);
        EXPECT_TRUE(isShown()) << reason;
        list.clearFocus();
        EXPECT_FALSE(isShown()) << reason;
    }
}

TEST_F(RowListRing, returnsFromAnotherWindowOnlyIfItWasThere)
{
    for (const bool byKey : {false, true}) {
        list.clearFocus();
        list.setFocus(byKey ? Qt::TabFocusReason : Qt::MouseFocusReason);
        QWidget other;
        showActive(other);
        other.close();
        showActive(list);
        ASSERT_TRUE(waitUntil([this] { return list.hasFocus(); }));
        EXPECT_EQ(isShown(), byKey);
    }
}

TEST_F(RowListTest, needAHigherListWithALargeFont)
{
    EXPECT_EQ(list.minimumSizeHint().height(), 220);
    const FontChange change(designFont(2));
    EXPECT_EQ(list.minimumSizeHint().height(), 440);
}

TEST_F(RowListTest, areSeparatedByLinesOnWholePixels)
{
    RowList onUnevenScreen({.makeRow = [this] { return makeRow(); },
                            .description = [](std::size_t) { return QStringList(); },
                            .copiedText = [](std::size_t) { return QString(); }});
    onUnevenScreen.setGeometry({screenNamed("uneven")->geometry().topLeft(), QSize(600, 220)});
    onUnevenScreen.show();
    onUnevenScreen.reload(4);
    const QImage image = picture(onUnevenScreen);
    ASSERT_EQ(image.height(), 330);
    const auto at = [&image](int y) { return image.pixelColor(750, y); };
    std::vector<QColor> lines;
    for (int y = 30; y < 320; ++y) { // the last row ends at 309, without a line
        if (at(y) != at(30))
            lines.push_back(at(y));
    }
    EXPECT_EQ(lines, std::vector<QColor>(3, lines.at(0)));
}

TEST_F(RowListTest, fillATallerList)
{
    list.reload(100);
    list.resize(600, 900);
    EXPECT_EQ(wordsInView().size(), 19);
}

/// A list in the middle of a window that is too low for its content.
class RowListInAScrolledWindow : public RowListTest {
protected:
    RowListInAScrolledWindow()
    {
        list.setParent(nullptr);
        auto* content = new QWidget;
        auto* column = new QVBoxLayout(content);
        auto* above = new QWidget;
        above->setFixedHeight(100);
        auto* below = new QWidget;
        below->setFixedHeight(600);
        column->addWidget(above);
        column->addWidget(&list);
        column->addWidget(below);
        list.setFixedHeight(220);
        list.reload(100);
        window.setWidget(content);
        window.setWidgetResizable(true);
        window.resize(600, 400);
        showActive(window);
    }
    ~RowListInAScrolledWindow() override { list.setParent(nullptr); }

    int windowPosition() const { return window.verticalScrollBar()->value(); }
    void turn(int notches) { turnWheel(*list.viewport(), {300, 100}, notches); }

    QScrollArea window;
};

TEST_F(RowListInAScrolledWindow, scrollWithTheWheelBeforeTheWindowDoes)
{
    turn(-1);
    EXPECT_GT(scrollPosition(), 0);
    EXPECT_EQ(windowPosition(), 0);
}

TEST_F(RowListInAScrolledWindow, leaveTheWheelToTheWindowAtTheirEnd)
{
    list.verticalScrollBar()->setValue(list.verticalScrollBar()->maximum());
    turn(-1);
    EXPECT_GT(windowPosition(), 0);
}

TEST_F(RowListInAScrolledWindow, leaveTheWheelToTheWindowAtTheirBeginning)
{
    window.verticalScrollBar()->setValue(100);
    turn(1);
    EXPECT_EQ(scrollPosition(), 0);
    EXPECT_LT(windowPosition(), 100);
}

TEST_F(RowListInAScrolledWindow, scrollWithTheWheelOverTheTextsInThem)
{
    TextWidget* text = shownTexts(*list.viewport()).front();
    turnWheel(*text, {5, 5}, -1);
    EXPECT_GT(scrollPosition(), 0);
}

TEST_F(RowListInAScrolledWindow, leaveTheWheelToTheWindowWhileTheyAllFit)
{
    list.reload(3);
    turn(-1);
    EXPECT_GT(windowPosition(), 0);
}

} // namespace
} // namespace reelkeep
