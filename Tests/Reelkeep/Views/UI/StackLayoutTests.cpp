#include "UI/StackLayout.h"

#include <QWidget>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace reelkeep {
namespace {

/// A child of given sizes. Below its ideal width it wraps, and so keeps its area.
class Block : public QWidget {
public:
    Block(int idealWidth, int minimumWidth = 20, int lineHeight = 10, QSizePolicy::Policy across = QSizePolicy::Maximum,
          QSizePolicy::Policy down = QSizePolicy::Preferred)
        : ideal(idealWidth), least(minimumWidth), line(lineHeight)
    {
        QSizePolicy policy(across, down);
        policy.setHeightForWidth(true);
        setSizePolicy(policy);
    }
    QSize sizeHint() const override { return {ideal, line}; }
    QSize minimumSizeHint() const override { return {least, line}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override { return line * ((ideal + width - 1) / width); }

private:
    int ideal;
    int least;
    int line;
};

Block* expanding(int idealWidth)
{
    return new Block(idealWidth, 20, 10, QSizePolicy::Expanding);
}

Block* growing(int lineHeight)
{
    return new Block(50, 20, lineHeight, QSizePolicy::Expanding, QSizePolicy::Expanding);
}

struct StackOf {
    explicit StackOf(std::vector<Arrangement> choices) : layout(new StackLayout(std::move(choices)))
    {
        widget.setLayout(layout);
    }
    Block* add(Block* block)
    {
        layout->addWidget(block);
        blocks.push_back(block);
        return block;
    }
    void place(int width, int height = 100) { layout->setGeometry(QRect(0, 0, width, height)); }
    std::vector<int> widths() const
    {
        std::vector<int> result;
        for (const Block* block : blocks)
            result.push_back(block->width());
        return result;
    }
    std::vector<int> lefts() const
    {
        std::vector<int> result;
        for (const Block* block : blocks)
            result.push_back(block->x());
        return result;
    }
    std::vector<int> tops() const
    {
        std::vector<int> result;
        for (const Block* block : blocks)
            result.push_back(block->y());
        return result;
    }

    QWidget widget;
    StackLayout* layout;
    std::vector<Block*> blocks;
};

using Numbers = std::vector<int>;

constexpr Arrangement row{.axis = Qt::Horizontal, .spacing = 8};
constexpr Arrangement centredRow{.axis = Qt::Horizontal, .spacing = 8, .alignment = Qt::AlignCenter};
constexpr Arrangement column{.axis = Qt::Vertical, .spacing = 8};
constexpr Arrangement centredColumn{.axis = Qt::Vertical, .spacing = 8, .alignment = Qt::AlignCenter};

TEST(StackLayout, givesEveryChildOfARowItsIdealWidthIfThereIsRoom)
{
    StackOf stack({row});
    stack.add(new Block(100));
    stack.add(new Block(60));
    stack.place(400);
    EXPECT_EQ(stack.widths(), (Numbers{100, 60}));
    EXPECT_EQ(stack.lefts(), (Numbers{0, 108}));
}

TEST(StackLayout, sharesAShortageOfRoomEvenly)
{
    StackOf stack({row});
    stack.add(new Block(300));
    stack.add(new Block(300));
    stack.place(208);
    EXPECT_EQ(stack.widths(), (Numbers{100, 100}));
}

TEST(StackLayout, givesTheOddPointOfAShortageToTheLastOfEqualChildren)
{
    StackOf stack({row});
    stack.add(new Block(300));
    stack.add(new Block(300));
    stack.place(209);
    EXPECT_EQ(stack.widths(), (Numbers{100, 101}));
}

TEST(StackLayout, wrapsNoChildForALittleThatAnotherCanSpare)
{
    StackOf stack({row});
    stack.add(new Block(115));
    stack.add(new Block(300));
    stack.place(208);
    EXPECT_EQ(stack.widths(), (Numbers{115, 85}));
}

TEST(StackLayout, sharesAShortageEvenlyIfALittleDoesNotHelp)
{
    StackOf stack({row});
    stack.add(new Block(130));
    stack.add(new Block(300));
    stack.place(208);
    EXPECT_EQ(stack.widths(), (Numbers{100, 100}));
}

TEST(StackLayout, shrinksNoChildBelowItsShareOfTheRoom)
{
    StackOf stack({row});
    stack.add(new Block(300));
    stack.add(new Block(60));
    stack.place(268);
    EXPECT_EQ(stack.widths(), (Numbers{200, 60}));
}

TEST(StackLayout, makesNoChildNarrowerThanItsMinimum)
{
    StackOf stack({row});
    stack.add(new Block(300, 150));
    stack.add(new Block(300, 20));
    stack.place(208);
    EXPECT_EQ(stack.widths(), (Numbers{150, 50}));
}

TEST(StackLayout, givesSpareWidthToChildrenThatExpand)
{
    StackOf stack({row});
    stack.add(new Block(100));
    stack.add(expanding(50));
    stack.place(400);
    EXPECT_EQ(stack.widths(), (Numbers{100, 292}));
}

TEST(StackLayout, makesChildrenThatExpandEquallyWide)
{
    StackOf stack({row});
    stack.add(expanding(300));
    stack.add(expanding(100));
    stack.place(608);
    EXPECT_EQ(stack.widths(), (Numbers{300, 300}));
}

TEST(StackLayout, pushesNeighboursApartWithASpacer)
{
    StackOf stack({row});
    stack.add(new Block(100));
    stack.layout->addSpacer();
    stack.add(new Block(60));
    stack.place(400);
    EXPECT_EQ(stack.widths(), (Numbers{100, 60}));
    EXPECT_EQ(stack.lefts(), (Numbers{0, 340}));
}

TEST(StackLayout, keepsASpacerOpenIfRoomIsShort)
{
    StackOf stack({row});
    stack.add(new Block(300));
    stack.layout->addSpacer();
    stack.add(new Block(60));
    stack.place(200);
    EXPECT_EQ(stack.lefts()[1] - stack.widths()[0], 8 + 8 + 8);
    EXPECT_EQ(stack.lefts()[1] + 60, 200);
}

TEST(StackLayout, givesSpareWidthToChildrenThatExpandBeforeSpacers)
{
    StackOf stack({row});
    stack.add(expanding(50));
    stack.layout->addSpacer();
    stack.add(new Block(60));
    stack.place(400);
    EXPECT_EQ(stack.widths(), (Numbers{400 - 60 - 3 * 8, 60}));
}

TEST(StackLayout, alignsTheChildrenOfARowAtTheirTops)
{
    StackOf stack({row});
    stack.add(new Block(50, 20, 40));
    stack.add(new Block(50, 20, 10));
    stack.place(400, 40);
    EXPECT_EQ(stack.tops(), (Numbers{0, 0}));
}

TEST(StackLayout, centresTheChildrenOfACentredRow)
{
    StackOf stack({centredRow});
    stack.add(new Block(50, 20, 40));
    stack.add(new Block(50, 20, 10));
    stack.place(400, 40);
    EXPECT_EQ(stack.tops(), (Numbers{0, 15}));
}

TEST(StackLayout, centresWithTheOddPointAbove)
{
    StackOf stack({centredRow});
    stack.add(new Block(50, 20, 15));
    stack.add(new Block(50, 20, 8));
    stack.place(400, 15);
    EXPECT_EQ(stack.tops(), (Numbers{0, 4}));
}

TEST(StackLayout, putsTheChildrenOfAColumnAtTheLeadingEdge)
{
    StackOf stack({column});
    stack.add(new Block(100));
    stack.add(new Block(60));
    stack.place(400);
    EXPECT_EQ(stack.lefts(), (Numbers{0, 0}));
    EXPECT_EQ(stack.tops(), (Numbers{0, 18}));
}

TEST(StackLayout, centresTheChildrenOfAColumnOnEachOther)
{
    StackOf stack({centredColumn});
    stack.add(new Block(100));
    stack.add(new Block(60));
    stack.place(400);
    EXPECT_EQ(stack.lefts(), (Numbers{0, 20}));
}

TEST(StackLayout, centresInTheWholeWidthWhenItFillsIt)
{
    StackOf stack({centredColumn});
    stack.layout->setFillsWidth(true);
    stack.add(new Block(100));
    stack.place(400);
    EXPECT_EQ(stack.lefts(), (Numbers{150}));
}

TEST(StackLayout, wrapsAChildOfAColumnThatIsWiderThanTheColumn)
{
    StackOf stack({column});
    stack.add(new Block(100));
    stack.add(new Block(60));
    stack.place(50);
    EXPECT_EQ(stack.widths(), (Numbers{50, 50}));
    EXPECT_EQ(stack.tops(), (Numbers{0, 28}));
    EXPECT_EQ(stack.layout->heightForWidth(50), 20 + 8 + 20);
}

TEST(StackLayout, isAsTallAsItsTallestChildInARow)
{
    StackOf stack({row});
    stack.add(new Block(300));
    stack.add(new Block(60));
    EXPECT_EQ(stack.layout->heightForWidth(400), 10);
    EXPECT_EQ(stack.layout->heightForWidth(218), 20);
}

TEST(StackLayout, usesTheFirstArrangementWhoseIdealWidthFits)
{
    StackOf stack({row, column});
    stack.add(new Block(100));
    stack.add(new Block(60));
    EXPECT_EQ(stack.layout->arrangement(168).axis, Qt::Horizontal);
    EXPECT_EQ(stack.layout->arrangement(167).axis, Qt::Vertical);
    stack.place(168);
    EXPECT_EQ(stack.tops(), (Numbers{0, 0}));
    stack.place(167);
    EXPECT_EQ(stack.tops(), (Numbers{0, 18}));
}

TEST(StackLayout, usesTheLastArrangementIfNoneFits)
{
    StackOf stack({row, column});
    stack.add(new Block(100));
    stack.add(new Block(60));
    EXPECT_EQ(stack.layout->arrangement(30).axis, Qt::Vertical);
    EXPECT_EQ(stack.layout->minimumSize().width(), 20);
}

TEST(StackLayout, usesTheSpacingOfItsArrangement)
{
    StackOf stack({{.axis = Qt::Horizontal, .spacing = 12}, {.axis = Qt::Vertical, .spacing = 10}});
    stack.add(new Block(100));
    stack.add(new Block(60));
    stack.place(172);
    EXPECT_EQ(stack.lefts(), (Numbers{0, 112}));
    stack.place(171);
    EXPECT_EQ(stack.tops(), (Numbers{0, 20}));
}

TEST(StackLayout, leavesNoRoomForHiddenChildren)
{
    StackOf stack({column});
    stack.add(new Block(100));
    stack.add(new Block(100))->hide();
    stack.add(new Block(100));
    EXPECT_EQ(stack.layout->heightForWidth(100), 28);
    stack.place(100);
    EXPECT_EQ(stack.blocks[2]->y(), 18);
}

TEST(StackLayout, staysAtTheLeadingEdgeIfThereIsMoreRoomThanItsLimit)
{
    StackOf stack({column});
    stack.layout->setMaximumContentWidth(1100);
    stack.layout->setContentsMargins(24, 24, 24, 24);
    stack.add(expanding(50));
    stack.place(1600);
    EXPECT_EQ(stack.lefts(), (Numbers{24}));
    EXPECT_EQ(stack.widths(), (Numbers{1100}));
}

TEST(StackLayout, addsItsPaddingOnAllSides)
{
    StackOf stack({column});
    stack.layout->setContentsMargins(1, 2, 4, 8);
    stack.add(new Block(100));
    EXPECT_EQ(stack.layout->sizeHint(), QSize(105, 20));
    EXPECT_EQ(stack.layout->minimumSize(), QSize(25, 20));
    stack.place(105);
    EXPECT_EQ(stack.blocks[0]->geometry(), QRect(1, 2, 100, 10));
}

TEST(StackLayout, centresItsChildrenInItsMinimumHeight)
{
    StackOf stack({column});
    stack.layout->setMinimumContentHeight(220);
    stack.add(new Block(100));
    EXPECT_EQ(stack.layout->heightForWidth(100), 220);
    stack.place(100, 220);
    EXPECT_EQ(stack.tops(), (Numbers{105}));
}

TEST(StackLayout, givesSpareHeightToTheChildThatGrows)
{
    StackOf stack({column});
    stack.add(new Block(50));
    stack.add(growing(30));
    stack.add(new Block(50));
    stack.place(100, 200);
    EXPECT_EQ(stack.blocks[1]->height(), 200 - 2 * 10 - 2 * 8);
    EXPECT_EQ(stack.blocks[2]->y(), 190);
}

TEST(StackLayout, measuresAgainWhenAChildChanges)
{
    StackOf stack({row, column});
    stack.add(new Block(100));
    EXPECT_EQ(stack.layout->sizeHint().width(), 100);
    stack.add(new Block(60));
    EXPECT_EQ(stack.layout->sizeHint().width(), 168);
    stack.blocks[0]->hide();
    EXPECT_EQ(stack.layout->sizeHint().width(), 60);
}

} // namespace
} // namespace reelkeep
