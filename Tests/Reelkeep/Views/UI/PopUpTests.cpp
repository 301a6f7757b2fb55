#include "Fixtures/Desktops.h"
#include "Fixtures/Widgets.h"
#include "UI/PopUp.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace reelkeep {
namespace {

TEST(PopUp, showsNothingWhileNothingIsChosen)
{
    PopUp popUp;
    popUp.addItem(QStringLiteral("Disco A"));
    popUp.setCurrentIndex(-1);
    resizeToIdeal(popUp);
    const QImage nothing = picture(popUp);
    popUp.setCurrentIndex(0);
    EXPECT_NE(nothing, picture(popUp));
}

class PopUpKeys : public testing::Test {
protected:
    PopUpKeys()
    {
        popUp.addItems({QStringLiteral("Disco A"), QStringLiteral("Disco B"), QStringLiteral("Disco C")});
        popUp.setCurrentIndex(1);
        changes.clear();
        showActive(popUp);
    }

    PopUp popUp;
    QSignalSpy choices{&popUp, &QComboBox::activated};
    QSignalSpy changes{&popUp, &QComboBox::currentIndexChanged};
};

TEST_F(PopUpKeys, openTheList)
{
    for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Up, Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter, Qt::Key_F4}) {
        QTest::keyClick(&popUp, key);
        EXPECT_TRUE(popUp.view()->isVisible()) << key;
        popUp.hidePopup();
    }
    EXPECT_EQ(changes.count() + choices.count(), 0);
}

TEST_F(PopUpKeys, goToTheWindowIfTheyDoNotOpenTheList)
{
    for (const Qt::Key key : {Qt::Key_PageDown, Qt::Key_PageUp, Qt::Key_Home, Qt::Key_End, Qt::Key_D, Qt::Key_Escape}) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, key == Qt::Key_D ? QStringLiteral("D") : QString());
        QApplication::sendEvent(&popUp, &event);
        EXPECT_FALSE(event.isAccepted()) << key;
        EXPECT_FALSE(popUp.view()->isVisible()) << key;
    }
    EXPECT_EQ(changes.count() + choices.count(), 0);
}

TEST_F(PopUpKeys, chooseInTheOpenList)
{
    QTest::keyClick(&popUp, Qt::Key_Down);
    QTest::keyClick(popUp.view(), Qt::Key_Down);
    EXPECT_EQ(changes.count(), 0);
    QTest::keyClick(popUp.view(), Qt::Key_Return);
    EXPECT_EQ(popUp.currentText(), QStringLiteral("Disco C"));
    EXPECT_EQ(choices.count(), 1);
}

TEST(PopUp, leavesTheWheelToTheWindow)
{
    PopUp popUp;
    popUp.addItems({QStringLiteral("Disco A"), QStringLiteral("Disco B")});
    showActive(popUp);
    turnWheel(popUp, {5, 5}, -1);
    EXPECT_EQ(popUp.currentText(), QStringLiteral("Disco A"));
}

TEST(PopUp, isNotWidenedByALongName)
{
    PopUp popUp;
    popUp.addItem(QStringLiteral("Disco ").repeated(100));
    EXPECT_LE(popUp.minimumSizeHint().width(), 80);
}

TEST(PopUp, growsWithTheUsersFont)
{
    QWidget window;
    PopUp& popUp = shownIn(window, new PopUp);
    popUp.addItem(QStringLiteral("Disco A"));
    EXPECT_EQ(popUp.sizeHint().height(), 28);
    const int width = popUp.sizeHint().width();
    const FontChange change(designFont(2));
    EXPECT_EQ(popUp.sizeHint().height(), 44);
    EXPECT_GT(popUp.sizeHint().width(), width);
}

} // namespace
} // namespace reelkeep
