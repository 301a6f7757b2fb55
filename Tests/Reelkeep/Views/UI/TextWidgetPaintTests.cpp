#include "Fixtures/Widgets.h"
#include "UI/TextWidget.h"

#include <gtest/gtest.h>

namespace reelkeep {
namespace {

/// Letters whose lower half shows whether a line is drawn to its end.
const QString letters = QStringLiteral("ggggggggggggggggggggggg");

class TextWidgetPaint : public testing::Test {
protected:
    TextWidgetPaint()
    {
        text.setStyle(type::monospacedCaption);
        text.setSelectable(true);
    }
    /// Shows `words` words, each on its own line, in at most `limit` lines.
    void show(int words, int limit)
    {
        text.setLineLimit(limit);
        text.setText(QStringList(words, letters).join(u' '));
        text.resize(200, text.heightForWidth(200));
        showActive(text);
    }
    /// The lowest row of pixels of a column that differs from the ground.
    static int lowestInk(const QImage& image, int from, int to)
    {
        for (int y = image.height() - 1; y >= 0; --y) {
            for (int x = from; x < to; ++x) {
                if (image.pixelColor(x, y) != image.pixelColor(image.width() - 1, image.height() - 1))
                    return y;
            }
        }
        return -1;
    }

    TextWidget text;
};

TEST_F(TextWidgetPaint, drawsAWholeLineWhilePartOfItIsSelected)
{
    for (const int words : {1, 3}) {
        show(words, 3);
        const int last = (words - 1) * 24;
        text.clearSelection();
        const int bottom = lowestInk(picture(text), 0, 30);
        text.select(last + 10, last + 15);
        const QImage image = picture(text);
        EXPECT_EQ(lowestInk(image, 0, 30), bottom) << words << ", what is not selected";
        EXPECT_GE(lowestInk(image, 70, 80), bottom) << words << ", what is selected";
    }
}

TEST_F(TextWidgetPaint, drawsNoLineBehindTheOneThatIsCut)
{
    show(6, 3);
    ASSERT_EQ(text.height(), 3 * 13);
    const QImage before = picture(text);
    text.select(0, 3);
    const QImage after = picture(text);
    const QRect others(0, 13, 200, 26);
    EXPECT_EQ(after.copy(others), before.copy(others));
}

TEST_F(TextWidgetPaint, showsASelectionInTheLineThatIsCut)
{
    show(6, 3);
    text.select(2 * 24 + 2, 2 * 24 + 6);
    const QImage image = picture(text);
    const auto above = [&](int position) { return image.pixel(int(text.characterRect(position).center().x()), 26); };
    const QRgb ground = image.pixel(199, 0);
    EXPECT_NE(above(2 * 24 + 4), ground);
    for (const int position : {1, 8, 20})
        EXPECT_EQ(above(2 * 24 + position), ground) << position;
}

} // namespace
} // namespace reelkeep
