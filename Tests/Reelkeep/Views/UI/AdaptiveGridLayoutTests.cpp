#include "UI/AdaptiveGridLayout.h"

#include <QWidget>

#include <gtest/gtest.h>

#include <vector>

namespace reelkeep {
namespace {

class Tile : public QWidget {
public:
    explicit Tile(int cardHeight) : needed(cardHeight)
    {
        QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Preferred);
        policy.setHeightForWidth(true);
        setSizePolicy(policy);
    }
    QSize sizeHint() const override { return {100, needed}; }
    QSize minimumSizeHint() const override { return {90, needed}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int) const override { return needed; }

private:
    int needed;
};

class AdaptiveGridLayoutTest : public testing::Test {
protected:
    explicit AdaptiveGridLayoutTest(const std::vector<int>& heights = {100, 100, 100})
    {
        grid.setLayout(layout);
        for (const int height : heights) {
            cards.push_back(new Tile(height));
            layout->addWidget(cards.back());
        }
    }
    void place(int width) { layout->setGeometry(QRect(5, 7, width, layout->heightForWidth(width))); }

    QWidget grid;
    AdaptiveGridLayout* layout = new AdaptiveGridLayout(220, 12);
    std::vector<Tile*> cards;
};

TEST_F(AdaptiveGridLayoutTest, hasAsManyColumnsAsFit)
{
    const std::vector<std::pair<int, int>> expected = {{1100, 4}, {916, 4}, {915, 3}, {684, 3},
                                                       {683, 2},  {452, 2}, {451, 1}, {220, 1}};
    for (const auto& [width, columns] : expected)
        EXPECT_EQ(layout->columnCount(width), columns) << width;
}

TEST_F(AdaptiveGridLayoutTest, leavesAColumnEmptyRatherThanWidenTheCards)
{
    place(1100);
    EXPECT_EQ(cards[0]->geometry(), QRect(5, 7, 266, 100));
    EXPECT_EQ(cards[1]->geometry(), QRect(5 + 278, 7, 266, 100));
    EXPECT_EQ(cards[2]->geometry(), QRect(5 + 556, 7, 266, 100));
}

TEST_F(AdaptiveGridLayoutTest, continuesInANewRow)
{
    place(452);
    EXPECT_EQ(cards[2]->geometry(), QRect(5, 7 + 112, 220, 100));
    EXPECT_EQ(layout->heightForWidth(452), 212);
    EXPECT_EQ(layout->heightForWidth(300), 324);
}

TEST_F(AdaptiveGridLayoutTest, makesNoCardNarrowerThanItsMinimum)
{
    for (int width = 220; width < 1300; ++width) {
        place(width);
        for (const Tile* card : cards)
            ASSERT_GE(card->width(), 220) << width;
    }
}

TEST_F(AdaptiveGridLayoutTest, usesTheWholeWidthWhateverTheRounding)
{
    for (int width = 684; width < 916; ++width) {
        place(width);
        ASSERT_EQ(cards[2]->geometry().right() + 1, 5 + width);
        ASSERT_EQ(cards[1]->x() - (cards[0]->geometry().right() + 1), 12);
    }
}

TEST_F(AdaptiveGridLayoutTest, givesALoneColumnTheWholeWidthEvenBelowItsMinimum)
{
    place(150);
    EXPECT_EQ(cards[0]->width(), 150);
}

TEST_F(AdaptiveGridLayoutTest, needsNoMoreWidthThanItsWidestCard)
{
    EXPECT_EQ(layout->minimumSize().width(), 90);
}

class AdaptiveGridLayoutUneven : public AdaptiveGridLayoutTest {
protected:
    AdaptiveGridLayoutUneven() : AdaptiveGridLayoutTest({80, 120, 60}) {}
};

TEST_F(AdaptiveGridLayoutUneven, makesTheCardsOfARowEquallyTall)
{
    place(452);
    EXPECT_EQ(cards[0]->height(), 120);
    EXPECT_EQ(cards[1]->height(), 120);
    EXPECT_EQ(cards[2]->height(), 60);
    EXPECT_EQ(layout->heightForWidth(452), 120 + 12 + 60);
}

TEST(AdaptiveGridLayoutEmpty, hasNoHeight)
{
    AdaptiveGridLayout layout(220, 12);
    EXPECT_EQ(layout.heightForWidth(1100), 0);
}

} // namespace
} // namespace reelkeep
