#include "Fixtures/Desktops.h"
#include "Fixtures/EventLoop.h"
#include "Fixtures/ShownView.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace reelkeep {
namespace {

TEST(View, showsAConstant)
{
    EXPECT_EQ(ShownView(Text("Listo")).words(), QStringList{QStringLiteral("Listo")});
}

TEST(View, callsALambdaAtEachRefresh)
{
    int count = 4;
    const ShownView shown(VStack({}, {Text([&] { return QString::number(count); })}));
    EXPECT_EQ(shown.words(), QStringList{QStringLiteral("4")});
    count = 12;
    EXPECT_EQ(shown.words(), QStringList{QStringLiteral("4")});
    shown.refresh();
    EXPECT_EQ(shown.words(), QStringList{QStringLiteral("12")});
}

TEST(View, decodesBytesAsText)
{
    EXPECT_EQ(displayText("C\xc3\xa1mara"), QStringLiteral("Cámara"));
    EXPECT_EQ(displayText("a\xff.MOV"), QStringLiteral("a\uFFFD.MOV"));
    EXPECT_EQ(displayText(""), QString());
    const ShownView shown(VStack({}, {Text([] { return std::string("a\xff.MOV"); })}));
    EXPECT_EQ(shown.words(), QStringList{QStringLiteral("a\uFFFD.MOV")});
}

TEST(View, isShownWhileItsConditionHolds)
{
    bool holds = false;
    const ShownView shown(VStack({}, {Text("siempre"), Text("a veces").visible([&] { return holds; })}));
    EXPECT_EQ(shown.words(), QStringList{QStringLiteral("siempre")});
    holds = true;
    shown.refresh();
    EXPECT_EQ(shown.words(), (QStringList{QStringLiteral("siempre"), QStringLiteral("a veces")}));
    holds = false;
    shown.refresh();
    EXPECT_EQ(shown.words(), QStringList{QStringLiteral("siempre")});
}

TEST(View, isEnabledWhileItsConditionHolds)
{
    bool holds = false;
    const ShownView shown(VStack({}, {PushButton("Quitar", [] {}).enabled([&] { return holds; })}));
    EXPECT_FALSE(shown.find<QPushButton>().isEnabled());
    holds = true;
    shown.refresh();
    EXPECT_TRUE(shown.find<QPushButton>().isEnabled());
}

TEST(View, callsItsActionOncePerPress)
{
    int presses = 0;
    const ShownView shown(VStack({}, {PushButton("Quitar", [&] { ++presses; })}));
    QTest::mouseClick(&shown.find<QPushButton>(), Qt::LeftButton);
    EXPECT_EQ(presses, 1);
}

TEST(View, refreshesNestedViews)
{
    int reads = 0;
    const ShownView shown(HStack({}, {VStack({}, {HStack({}, {Text([&] { return QString::number(++reads); })})})}));
    shown.refresh();
    EXPECT_EQ(shown.words(), QStringList{QStringLiteral("2")});
}

TEST(ViewToggle, writesOnlyWhatTheUserChose)
{
    bool value = true;
    int writes = 0;
    const ShownView shown(VStack({}, {Toggle(
                                         QStringLiteral("Mantener"), [&] { return value; },
                                         [&](bool on) {
                                             value = on;
                                             ++writes;
                                         })}));
    auto& toggle = shown.find<QAbstractButton>();
    EXPECT_TRUE(toggle.isChecked());
    value = false;
    shown.refresh();
    EXPECT_FALSE(toggle.isChecked());
    EXPECT_EQ(writes, 0);
    QTest::keyClick(&toggle, Qt::Key_Space);
    EXPECT_TRUE(value);
    EXPECT_EQ(writes, 1);
}

class ViewPicker : public testing::Test {
protected:
    View make()
    {
        return VStack({}, {Picker(
                              QStringLiteral("HD"), [this] { return entries; }, [this] { return selection; },
                              [this](const std::string& tag) { written.push_back(tag); })});
    }

    std::vector<PickerEntry> entries = {{"/a", QStringLiteral("a")}, {"/b", QStringLiteral("b")}};
    std::string selection = "/b";
    std::vector<std::string> written;
    ShownView shown{make()};
    QComboBox& popUp = shown.find<QComboBox>();
};

TEST_F(ViewPicker, showsTheEntryThatIsSelected)
{
    EXPECT_EQ(popUp.currentText(), QStringLiteral("b"));
    selection = "/a";
    shown.refresh();
    EXPECT_EQ(popUp.currentText(), QStringLiteral("a"));
    EXPECT_TRUE(written.empty());
}

TEST_F(ViewPicker, showsNothingIfNothingIsSelected)
{
    selection.clear();
    shown.refresh();
    EXPECT_EQ(popUp.currentIndex(), -1);
    EXPECT_EQ(popUp.currentText(), QString());
}

TEST_F(ViewPicker, writesWhatTheUserPicks)
{
    popUp.showPopup();
    QTest::keyClick(popUp.view(), Qt::Key_Up);
    EXPECT_TRUE(written.empty());
    QTest::keyClick(popUp.view(), Qt::Key_Return);
    EXPECT_EQ(written, std::vector<std::string>{"/a"});
}

TEST_F(ViewPicker, writesNothingWhenItsEntriesChange)
{
    entries.insert(entries.begin(), {"/c", QStringLiteral("c")});
    shown.refresh();
    EXPECT_EQ(popUp.count(), 3);
    EXPECT_EQ(popUp.currentText(), QStringLiteral("b"));
    EXPECT_TRUE(written.empty());
}

TEST_F(ViewPicker, hasItsLabelBeforeIt)
{
    ASSERT_EQ(shown.words(), QStringList{QStringLiteral("HD")});
    const TextWidget& label = *shownTexts(*shown.widget).front();
    EXPECT_GT(popUp.mapTo(shown.widget.get(), QPoint()).x(),
              label.mapTo(shown.widget.get(), label.rect().topRight()).x());
}

TEST(ViewProgressBar, showsItsFraction)
{
    double value = 0.0;
    const ShownView shown(VStack({}, {ProgressBar(QStringLiteral("Progreso"), [&] { return value; })}));
    auto& bar = shown.find<QProgressBar>();
    EXPECT_EQ(bar.value(), bar.minimum());
    value = 1.0;
    shown.refresh();
    EXPECT_EQ(bar.value(), bar.maximum());
}

class ViewCircle : public testing::Test {
protected:
    void expectCentred(const QWidget& circle) const
    {
        const TextWidget* number = shownTexts(circle).front();
        const QPointF middle = QRectF(number->geometry()).center();
        EXPECT_NEAR(middle.x(), circle.width() / 2.0, 1);
        EXPECT_NEAR(middle.y(), circle.height() / 2.0, 1);
        EXPECT_TRUE(circle.rect().contains(number->geometry()));
    }

    ShownView shown{
        VStack({}, {Circle(28, Plate{{.fill = Tint::of(Qt::red), .radius = plate::capsule}}, {Text("1").headline()})})};
};

TEST_F(ViewCircle, isRoundAroundItsText)
{
    QWidget& circle = *shownTexts(*shown.widget).front()->parentWidget();
    EXPECT_EQ(circle.size(), QSize(28, 28));
    expectCentred(circle);
    const QImage drawn = picture(circle);
    EXPECT_EQ(drawn.pixelColor(2, 14), QColor(Qt::red));
    EXPECT_NE(drawn.pixelColor(2, 2), QColor(Qt::red));
}

TEST_F(ViewCircle, growsWithTheUsersFont)
{
    const FontChange change(designFont(2));
    letEventsPass();
    QWidget& circle = *shownTexts(*shown.widget).front()->parentWidget();
    EXPECT_EQ(circle.size(), QSize(56, 56));
    expectCentred(circle);
    EXPECT_NE(picture(circle).pixelColor(5, 5), QColor(Qt::red)) << "still round";
}

TEST(ViewSymbol, growsWithTheUsersFont)
{
    const ShownView shown{Symbol({"down", 26, 30})};
    EXPECT_EQ(shown.widget->sizeHint(), QSize(30, 26));
    const FontChange change(designFont(2));
    EXPECT_EQ(shown.widget->sizeHint(), QSize(60, 52));
}

class ViewForEach : public testing::Test {
protected:
    View make()
    {
        return ForEach<int>(
            8, [this] { return items; },
            [this](const int& item) {
                ++built;
                return HStack({}, {Text(QString::number(item)), PushButton("Quitar", [this, item] {
                                       items.erase(std::find(items.begin(), items.end(), item));
                                       shown->refresh();
                                   })});
            });
    }

    std::vector<int> items = {1, 2, 3};
    int built = 0;
    std::unique_ptr<ShownView> shown = std::make_unique<ShownView>(make());
};

TEST_F(ViewForEach, hasOneElementPerItemInTheirOrder)
{
    EXPECT_EQ(shown->words(), (QStringList{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")}));
    items = {3, 1};
    shown->refresh();
    letEventsPass();
    EXPECT_EQ(shown->words(), (QStringList{QStringLiteral("3"), QStringLiteral("1")}));
}

TEST_F(ViewForEach, keepsItsElementsWhileTheItemsStay)
{
    QWidget* first = shown->widget->findChild<QPushButton*>();
    shown->refresh();
    EXPECT_EQ(built, 3);
    EXPECT_EQ(shown->widget->findChild<QPushButton*>(), first);
}

TEST_F(ViewForEach, survivesAButtonThatRemovesItsOwnElement)
{
    QTest::mouseClick(&shown->find<QPushButton>(), Qt::LeftButton);
    letEventsPass();
    EXPECT_EQ(shown->words(), (QStringList{QStringLiteral("2"), QStringLiteral("3")}));
}

TEST_F(ViewForEach, canBecomeEmptyAndFillAgain)
{
    items.clear();
    shown->refresh();
    EXPECT_EQ(shown->words(), QStringList());
    items = {7};
    shown->refresh();
    letEventsPass();
    EXPECT_EQ(shown->words(), QStringList{QStringLiteral("7")});
}

} // namespace
} // namespace reelkeep
