#include "Fixtures/Desktops.h"
#include "Fixtures/Widgets.h"
#include "UI/Appearance.h"
#include "UI/PopUp.h"

#include <QAbstractItemView>

#include <gtest/gtest.h>

#include <vector>

namespace reelkeep {
namespace {

/// An open pop-up in a window.
class PopUpList : public testing::Test {
protected:
    void open(const QStringList& names, int current)
    {
        window.resize(500, 100);
        popUp->addItems(names);
        popUp->setCurrentIndex(current);
        popUp->setGeometry(20, 20, 300, 28);
        showActive(window);
        popUp->showPopup();
    }
    QWidget& list() { return *popUp->view()->viewport(); }
    QImage line(int row) { return picture(list()).copy(popUp->view()->visualRect(popUp->model()->index(row, 0))); }
    /// What is drawn before the name.
    QImage leading(int row) { return line(row).copy(5, 3, 28, 22); }

    QWidget window;
    PopUp* popUp = new PopUp;

    PopUpList() { popUp->setParent(&window); }
    ~PopUpList() override { popUp->hidePopup(); }
};

TEST_F(PopUpList, isAsWideAsTheClosedPopUpHoweverLongANameIs)
{
    open({QStringLiteral("Disco A"), QStringLiteral("Disco ").repeated(200)}, 0);
    EXPECT_EQ(popUp->view()->window()->width(), 300);
    EXPECT_EQ(popUp->view()->window()->x(), popUp->mapToGlobal(QPoint()).x());
}

TEST_F(PopUpList, cutsALongNameInItsMiddle)
{
    open({QStringLiteral("Disco A"), QStringLiteral("Disco ").repeated(200) + u'1',
          QStringLiteral("Disco ").repeated(200) + u'2'},
         0);
    EXPECT_NE(line(1), line(2)) << "both ends are shown";
    popUp->hidePopup();
    popUp->setCurrentIndex(1);
    const QImage closed = picture(*popUp);
    popUp->setCurrentIndex(2);
    EXPECT_NE(closed, picture(*popUp)) << "and while it is closed";
}

TEST_F(PopUpList, marksTheCurrentChoice)
{
    open({QStringLiteral("Disco"), QStringLiteral("Disco"), QStringLiteral("Disco")}, 1);
    popUp->view()->setCurrentIndex(popUp->model()->index(0, 0));
    EXPECT_NE(leading(1), leading(2));
    popUp->view()->setCurrentIndex(popUp->model()->index(1, 0));
    EXPECT_NE(leading(1), leading(0)) << "even on the line under the pointer";
}

TEST_F(PopUpList, marksNothingWhileNothingIsChosen)
{
    open({QStringLiteral("Disco"), QStringLiteral("Disco")}, -1);
    popUp->view()->setCurrentIndex({});
    EXPECT_EQ(leading(0), leading(1));
}

TEST_F(PopUpList, hasTheBackgroundOfAListInBothThemes)
{
    for (const QPalette& palette : {lightPalette(), darkPalette()}) {
        const PaletteChange change(palette);
        open({QStringLiteral("Disco A"), QStringLiteral("Disco B")}, 0);
        EXPECT_EQ(line(1).pixelColor(8, 14), palette.color(QPalette::Base));
        popUp->view()->setCurrentIndex(popUp->model()->index(1, 0));
        EXPECT_GE(Appearance::contrast(line(1).pixelColor(8, 14), palette.color(QPalette::Base)), 3);
        popUp->hidePopup();
        popUp->clear();
    }
}

TEST_F(PopUpList, centresTheNamesInTheirLines)
{
    open({QStringLiteral("Disco"), QStringLiteral("XXXX")}, 0);
    popUp->view()->setCurrentIndex({});
    const QImage shown = line(1);
    std::vector<int> inked;
    for (int y = 2; y < shown.height() - 2; ++y)
        for (int x = 20; x < 120; ++x)
            if (shown.pixelColor(x, y) != shown.pixelColor(8, 14)) {
                inked.push_back(y);
                break;
            }
    ASSERT_FALSE(inked.empty());
    EXPECT_NEAR(inked.front(), shown.height() - 1 - inked.back(), 3);
}

TEST_F(PopUpList, growsWithTheUsersFont)
{
    const FontChange change(designFont(2));
    open({QStringLiteral("Disco A")}, 0);
    popUp->view()->setCurrentIndex({});
    const QImage shown = line(0);
    EXPECT_EQ(shown.height(), 44);
    int widthOfMark = 0;
    for (int x = 12; x < 12 + 2 * 24; ++x) {
        bool isInked = false;
        for (int y = 3; y < 41; ++y)
            isInked |= shown.pixelColor(x, y) != shown.pixelColor(8, 14);
        widthOfMark += isInked ? 1 : 0;
    }
    EXPECT_GE(widthOfMark, 22);
}

} // namespace
} // namespace reelkeep
