#include "Fixtures/EventLoop.h"
#include "Fixtures/ShownView.h"
#include "UI/RowList.h"
#include "VideoSyncModels.h"

#include <QScrollBar>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace reelkeep {
namespace {

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
    ShownView shown{make()};
    RowList& list = shown.find<RowList>();
};

TEST_F(ViewList, isReadByItsName)
{
    EXPECT_EQ(spokenName(list), QStringLiteral("Videos"));
    EXPECT_EQ(list.rowCount(), 1000);
}

TEST_F(ViewList, keepsScrollPositionAndSelectionIfItsItemsAreTheSameOrEqual)
{
    scrollTo(5000);
    list.setCurrentRow(105);
    const int before = position();
    TextWidget* text = shownTexts(list).front();
    text->selectAll();
    for (const VideoList& next : {items, videos(0, 1000)}) {
        items = next;
        shown.refresh();
        EXPECT_EQ(position(), before);
        EXPECT_EQ(list.currentRow(), 105);
        EXPECT_TRUE(text->hasSelection());
    }
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
