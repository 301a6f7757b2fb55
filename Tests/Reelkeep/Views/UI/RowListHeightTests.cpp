#include "Fixtures/Desktops.h"
#include "Fixtures/EventLoop.h"
#include "Fixtures/Widgets.h"
#include "UI/RowList.h"
#include "UI/TextWidget.h"

#include <QScrollBar>
#include <QTest>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <set>

namespace reelkeep {
namespace {

/// A row of a given height, whatever its width.
class Brick : public QWidget {
public:
    int heightForWidth(int) const override { return needed; }
    bool hasHeightForWidth() const override { return true; }

    int row = -1;
    int needed = 0;
};

class Bricks {
public:
    explicit Bricks(std::vector<int> neededHeights) : heights(std::move(neededHeights))
    {
        list.resize(300, 220);
        list.show();
        list.reload(heights.size());
    }

    int heightOf(int row) const { return std::max(49, heights[std::size_t(row)]); }
    int rowCount() const { return int(heights.size()); }
    QScrollBar& bar() const { return *list.verticalScrollBar(); }
    /// The rows in view, from top to bottom.
    std::vector<const Brick*> inView() const
    {
        std::vector<const Brick*> found;
        for (const QObject* child : list.viewport()->children()) {
            const auto* brick = dynamic_cast<const Brick*>(child);
            if (brick && brick->isVisible() && brick->geometry().intersects(list.viewport()->rect()))
                found.push_back(brick);
        }
        std::sort(found.begin(), found.end(), [](const Brick* a, const Brick* b) { return a->y() < b->y(); });
        return found;
    }
    /// What must hold at every scroll position: rows in order, each as high as it needs, filling the view.
    void check() const
    {
        const auto rows = inView();
        RC_ASSERT(rows.empty() == heights.empty());
        for (std::size_t i = 0; i < rows.size(); ++i) {
            RC_ASSERT(rows[i]->height() == heightOf(rows[i]->row));
            RC_ASSERT(rows[i]->geometry() == list.rowRect(rows[i]->row));
            if (i == 0)
                continue;
            RC_ASSERT(rows[i]->row == rows[i - 1]->row + 1);
            RC_ASSERT(rows[i]->y() == rows[i - 1]->geometry().bottom() + 1);
        }
        if (rows.empty())
            return;
        if (rows.front()->y() > 0) {
            RC_ASSERT(rows.front()->row == 0);
            RC_ASSERT(rows.front()->y() <= 10);
        }
        const int below = list.viewport()->height() - 1 - rows.back()->geometry().bottom();
        if (below > 0)
            RC_ASSERT(rows.back()->row == rowCount() - 1);
        if (bar().maximum() > 0 && bar().value() == bar().maximum())
            RC_ASSERT(below == 10);
    }

    std::vector<int> heights;
    RowList list{{.makeRow =
                      [this] {
                          auto* brick = new Brick;
                          return RowList::Row{brick, [this, brick](std::size_t row) {
                                                  brick->row = int(row);
                                                  brick->needed = heights[row];
                                              }};
                      },
                  .description = [](std::size_t) { return QStringList(); },
                  .copiedText = [](std::size_t) { return QString(); }}};
};

rc::Gen<std::vector<int>> anyHeights()
{
    return rc::gen::container<std::vector<int>>(rc::gen::weightedOneOf<int>(
        {{4, rc::gen::just(49)}, {3, rc::gen::inRange(30, 120)}, {1, rc::gen::inRange(150, 900)}}));
}

RC_GTEST_PROP(RowListHeight, fitsEachRowAtEveryScrollPosition, ())
{
    Bricks bricks(*anyHeights());
    bricks.check();
    const int actions = *rc::gen::inRange(1, 30);
    for (int i = 0; i < actions; ++i) {
        switch (*rc::gen::inRange(0, 6)) {
        case 0:
            bricks.bar().setValue(*rc::gen::inRange(0, bricks.bar().maximum() + 1));
            break;
        case 1:
            turnWheel(*bricks.list.viewport(), {50, 50}, *rc::gen::inRange(-4, 5));
            break;
        case 2:
            bricks.list.resize(300, *rc::gen::inRange(60, 900));
            break;
        case 3:
            bricks.list.setCurrentRow(*rc::gen::inRange(-1, bricks.rowCount() + 1));
            break;
        case 4:
            QTest::keyClick(&bricks.list, *rc::gen::element(Qt::Key_Up, Qt::Key_Down, Qt::Key_PageUp, Qt::Key_PageDown,
                                                            Qt::Key_Home, Qt::Key_End));
            break;
        default:
            bricks.heights = *anyHeights();
            bricks.list.reload(bricks.heights.size(), [&](int row) { return std::min(row, bricks.rowCount() - 1); });
        }
        bricks.check();
    }
}

RC_GTEST_PROP(RowListHeight, skipsNoRowWhenTheWheelTurns, ())
{
    Bricks bricks(*rc::gen::nonEmpty(anyHeights()));
    // The last row in view before each turn.
    int seen = 0;
    for (int turns = 0;; ++turns) {
        const auto rows = bricks.inView();
        RC_ASSERT(rows.front()->row <= seen);
        seen = rows.back()->row;
        if (bricks.bar().value() == bricks.bar().maximum())
            break;
        const int before = bricks.bar().value();
        const QRect last = rows.back()->geometry();
        turnWheel(*bricks.list.viewport(), {50, 50}, -1);
        RC_ASSERT(bricks.bar().value() > before);
        RC_ASSERT(bricks.list.rowRect(rows.back()->row).top() >= last.top() - 220);
        RC_ASSERT(turns < 10'000);
    }
    RC_ASSERT(seen == bricks.rowCount() - 1);
}

RC_GTEST_PROP(RowListHeight, letsTheKeyboardShowAllOfEveryRow, ())
{
    Bricks bricks(*rc::gen::nonEmpty(anyHeights()));
    const Qt::Key key = *rc::gen::element(Qt::Key_Down, Qt::Key_Up);
    bricks.list.setCurrentRow(key == Qt::Key_Down ? 0 : bricks.rowCount() - 1);
    bricks.bar().setValue(key == Qt::Key_Down ? 0 : bricks.bar().maximum());
    const int end = key == Qt::Key_Down ? bricks.rowCount() - 1 : 0;
    // The pixels of the current row that have not been in view yet.
    std::set<int> unseen;
    const auto begin = [&](int row) {
        for (int pixel = 0; pixel < bricks.heightOf(row); ++pixel)
            unseen.insert(pixel);
    };
    const auto look = [&] {
        const QRect place = bricks.list.rowRect(bricks.list.currentRow()) & bricks.list.viewport()->rect();
        const int top = bricks.list.rowRect(bricks.list.currentRow()).top();
        for (int y = place.top(); y <= place.bottom(); ++y)
            unseen.erase(y - top);
    };
    int row = bricks.list.currentRow();
    begin(row);
    for (int presses = 0; presses < 10'000; ++presses) {
        look();
        QTest::keyClick(&bricks.list, key);
        if (bricks.list.currentRow() == row && row != end)
            continue;
        look();
        if (bricks.list.currentRow() != row) {
            RC_ASSERT(unseen.empty());
            row = bricks.list.currentRow();
            begin(row);
        } else if (unseen.empty()) {
            return;
        }
    }
    RC_FAIL("the end is never reached");
}

/// Rows whose texts wrap.
class RowListHeightWrapped : public testing::Test {
protected:
    RowListHeightWrapped()
    {
        list.resize(300, 220);
        showActive(list);
        list.reload(100);
    }
    static QString textOf(std::size_t index)
    {
        return QStringLiteral("palabra ").repeated(index % 7 == 3 ? 40 : 1) + QString::number(index);
    }
    void expectWholeTexts() const
    {
        int shown = 0;
        for (const TextWidget* text : shownTexts(*list.viewport())) {
            EXPECT_FALSE(text->isCut()) << text->text().toStdString();
            ++shown;
        }
        EXPECT_GT(shown, 0);
    }

    RowList list{{.makeRow =
                      [] {
                          auto* text = new TextWidget;
                          return RowList::Row{text, [text](std::size_t index) { text->setText(textOf(index)); }};
                      },
                  .description = [](std::size_t) { return QStringList(); },
                  .copiedText = [](std::size_t) { return QString(); }}};
};

TEST_F(RowListHeightWrapped, growsOnlyIfATextWraps)
{
    EXPECT_EQ(list.rowRect(0).height(), 49);
    EXPECT_EQ(list.rowRect(2).height(), 49);
    EXPECT_GT(list.rowRect(3).height(), 49);
    expectWholeTexts();
}

TEST_F(RowListHeightWrapped, keepsTheTopmostRowWhenTheListIsResized)
{
    list.verticalScrollBar()->setValue(50 * 49);
    for (const int width : {250, 900, 480, 300}) {
        list.resize(width, 220);
        letEventsPass();
        EXPECT_EQ(list.rowRect(50).top(), 10) << width;
        expectWholeTexts();
    }
}

TEST_F(RowListHeightWrapped, keepsTheTopmostRowWhenTheFontChanges)
{
    list.verticalScrollBar()->setValue(51 * 49);
    const int before = list.rowRect(52).height();
    ASSERT_GT(before, 49);
    const FontChange change(designFont(2));
    letEventsPass();
    EXPECT_EQ(list.rowRect(51).top(), 10);
    EXPECT_GT(list.rowRect(52).height(), before);
    expectWholeTexts();
}

TEST_F(RowListHeightWrapped, staysAtTheEndWhenTheListIsResizedThere)
{
    list.verticalScrollBar()->setValue(list.verticalScrollBar()->maximum());
    list.resize(300, 500);
    EXPECT_EQ(list.rowRect(99).bottom(), 500 - 10 - 1);
}

} // namespace
} // namespace reelkeep
