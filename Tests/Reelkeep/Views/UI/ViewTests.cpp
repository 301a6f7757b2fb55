#include "Fixtures/Desktops.h"
#include "Fixtures/EventLoop.h"
#include "Fixtures/Widgets.h"
#include "UI/RowList.h"
#include "UI/View.h"
#include "VideoSyncModels.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

namespace reelkeep {
namespace {

/// A view, shown as a window.
class Shown {
public:
    explicit Shown(View made) : view(std::move(made)), widget(view.widget)
    {
        view.refresh();
        widget->resize(600, 400);
        showActive(*widget);
    }
    void refresh() const { view.refresh(); }
    QStringList words() const
    {
        if (auto* text = qobject_cast<TextWidget*>(widget.get()))
            return {text->text()};
        return shownWords(*widget);
    }
    template <class Wanted>
    Wanted& find() const
    {
        return *widget->findChild<Wanted*>();
    }

private:
    View view;

public:
    std::unique_ptr<QWidget> widget;
};

TEST(View, showsAConstant)
{
    EXPECT_EQ(Shown(Text("Listo")).words(), QStringList{QStringLiteral("Listo")});
}

TEST(View, callsALambdaAtEachRefresh)
{
    int count = 4;
    const Shown shown(VStack({}, {Text([&] { return QString::number(count); })}));
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
    const Shown shown(VStack({}, {Text([] { return std::string("a\xff.MOV"); })}));
    EXPECT_EQ(shown.words(), QStringList{QStringLiteral("a\uFFFD.MOV")});
}

TEST(View, isShownWhileItsConditionHolds)
{
    bool holds = false;
    const Shown shown(VStack({}, {Text("siempre"), Text("a veces").visible([&] { return holds; })}));
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
    const Shown shown(VStack({}, {PushButton("Quitar", [] {}).enabled([&] { return holds; })}));
    EXPECT_FALSE(shown.find<QPushButton>().isEnabled());
    holds = true;
    shown.refresh();
    EXPECT_TRUE(shown.find<QPushButton>().isEnabled());
}

TEST(View, callsItsActionOncePerPress)
{
    int presses = 0;
    const Shown shown(VStack({}, {PushButton("Quitar", [&] { ++presses; })}));
    QTest::mouseClick(&shown.find<QPushButton>(), Qt::LeftButton);
    EXPECT_EQ(presses, 1);
}

TEST(View, refreshesNestedViews)
{
    int reads = 0;
    const Shown shown(HStack({}, {VStack({}, {HStack({}, {Text([&] { return QString::number(++reads); })})})}));
    shown.refresh();
    EXPECT_EQ(shown.words(), QStringList{QStringLiteral("2")});
}

TEST(ViewToggle, writesOnlyWhatTheUserChose)
{
    bool value = true;
    int writes = 0;
    const Shown shown(VStack({}, {Toggle(
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
    Shown shown{make()};
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
    EXPECT_EQ(shown.words(), QStringList{QStringLiteral("HD")});
}

TEST(ViewProgressBar, showsItsFraction)
{
    double value = 0.0;
    const Shown shown(VStack({}, {ProgressBar(QStringLiteral("Progreso"), [&] { return value; })}));
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

    Shown shown{
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
    const Shown shown{Symbol({"down", 26, 30})};
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
    std::unique_ptr<Shown> shown = std::make_unique<Shown>(make());
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

class ViewList : public testing::Test {
protected:
    static VideoList videos(int begin, int end)
    {
        std::vector<VideoFile> made;
        for (int number = begin; number < end; ++number) {
            const std::string name = "MVI_" + std::to_string(number) + ".MOV";
            made.push_back({.id = name, .url = {}, .relativePath = name, .fileName = name, .size = 1, .createdAt = {}});
        }
        return made;
    }
    View make()
    {
        return VStack(
            {}, {List<VideoList>(
                    QStringLiteral("Videos"),
                    {.items = [this] { return items; },
                     .id = [](const VideoFile& video) { return std::string_view(video.id); },
                     .row =
                         [](const std::function<const VideoFile&()>& video) {
                             return HStack(
                                 {}, {VStack({}, {Text([video] { return video().fileName; }).selectableByMouse()}),
                                      Spacer()});
                         },
                     .description = [](const VideoFile& video) { return QStringList(displayText(video.fileName)); },
                     .copiedText = [](const VideoFile& video) { return displayText(video.relativePath); }})});
    }
    void scrollTo(int position) const { list.verticalScrollBar()->setValue(position); }
    int position() const { return list.verticalScrollBar()->value(); }

    VideoList items = videos(0, 1000);
    Shown shown{make()};
    RowList& list = shown.find<RowList>();
};

TEST_F(ViewList, isReadByItsName)
{
    EXPECT_EQ(spokenName(list), QStringLiteral("Videos"));
    EXPECT_EQ(list.rowCount(), 1000);
}

TEST_F(ViewList, keepsScrollPositionAndSelectionWhileTheListIsTheSame)
{
    scrollTo(5000);
    list.setCurrentRow(105);
    const int before = position();
    TextWidget* text = shownTexts(list).front();
    text->selectAll();
    shown.refresh();
    EXPECT_EQ(position(), before);
    EXPECT_EQ(list.currentRow(), 105);
    EXPECT_TRUE(text->hasSelection());
}

TEST_F(ViewList, keepsScrollPositionAndSelectionWhenTheItemsAreEqual)
{
    scrollTo(5000);
    list.setCurrentRow(105);
    const int before = position();
    TextWidget* text = shownTexts(list).front();
    text->selectAll();
    items = videos(0, 1000);
    shown.refresh();
    EXPECT_EQ(position(), before);
    EXPECT_EQ(list.currentRow(), 105);
    EXPECT_TRUE(text->hasSelection());
}

TEST_F(ViewList, keepsTheItemsInViewWhenOthersComeOrGo)
{
    scrollTo(200 * 49 + 7);
    list.setCurrentRow(203);
    items = videos(150, 1000);
    shown.refresh();
    EXPECT_EQ(position(), 50 * 49 + 7);
    EXPECT_EQ(list.currentRow(), 53);
    items = videos(100, 204);
    shown.refresh();
    EXPECT_EQ(list.currentRow(), 103);
    EXPECT_TRUE(list.viewport()->rect().contains(list.rowRect(103)));
}

TEST_F(ViewList, startsAtTheTopWhenItsItemsAreGone)
{
    scrollTo(5000);
    items = videos(2000, 3000);
    shown.refresh();
    EXPECT_EQ(position(), 0);
    EXPECT_EQ(list.currentRow(), 0);
    EXPECT_EQ(list.rowCount(), 1000);
}

TEST_F(ViewList, growsRowsForLongerNames)
{
    shown.widget->resize(200, 400);
    letEventsPass();
    const int before = list.rowRect(0).height();
    VideoFile deep = items[0];
    deep.fileName = "carpeta con un nombre largo y otra carpeta y otra mas en un camino que no cabe en dos ni en tres "
                    "ni en cuatro lineas.MOV";
    deep.relativePath = deep.fileName;
    items = {items[1], deep};
    shown.refresh();
    EXPECT_EQ(list.rowRect(0).height(), before);
    EXPECT_GT(list.rowRect(1).height(), before);
    letEventsPass();
    for (const TextWidget* text : shownTexts(list))
        EXPECT_FALSE(text->isCut()) << text->text().toStdString();
}

TEST_F(ViewList, showsBothOfTwoItemsThatShareAnId)
{
    const VideoFile twin = items[0];
    items = {twin, twin};
    shown.refresh();
    EXPECT_EQ(shown.words(), (QStringList{QStringLiteral("MVI_0.MOV"), QStringLiteral("MVI_0.MOV")}));
}

} // namespace
} // namespace reelkeep
