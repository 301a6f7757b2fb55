#include "Fixtures/Desktops.h"
#include "Fixtures/WindowTest.h"

#include <gtest/gtest.h>

namespace reelkeep {
namespace {

using enum WindowState;

struct Room {
    int width;
    double fontScale;
};
void PrintTo(const Room& room, std::ostream* stream)
{
    *stream << room.width << " wide, font at " << room.fontScale * 100 << " %";
}
class ContentViewRoom : public WindowTest, public testing::WithParamInterface<Room> {
protected:
    void SetUp() override
    {
        if (!isDesignFontInstalled())
            GTEST_SKIP() << "the measures are those of Inter, which is not installed";
    }
    static std::string nameOf(QWidget& widget)
    {
        const auto* words = qobject_cast<TextWidget*>(&widget);
        const QString name = words ? words->text() : spokenName(widget);
        return std::string(widget.metaObject()->className()) + " \"" +
               (name.isEmpty() ? shownWords(widget).join(QStringLiteral(" | ")) : name).toStdString() + "\"";
    }
    void expectNothingClippedOrOverlapping() const
    {
        int examined = 0;
        for (QWidget* widget : content->findChildren<QWidget*>()) {
            if (!widget->isVisible() || list() == widget || (list() && list()->isAncestorOf(widget)))
                continue;
            EXPECT_TRUE(widget->parentWidget()->rect().contains(widget->geometry()))
                << nameOf(*widget) << " sticks out of " << nameOf(*widget->parentWidget());
            ++examined;
            EXPECT_GT(widget->width(), 0) << nameOf(*widget);
            EXPECT_GT(widget->height(), 0) << nameOf(*widget);
            expectWholeAt(*widget);
            expectApartFromSiblings(*widget);
        }
        EXPECT_GT(examined, 80);
        if (list())
            expectWholeRows();
    }
    static void expectWholeAt(QWidget& widget)
    {
        const auto* words = qobject_cast<TextWidget*>(&widget);
        EXPECT_FALSE(words && words->isCut()) << nameOf(widget);
        EXPECT_FALSE(words && breaksAWord(*words)) << nameOf(widget);
        EXPECT_GE(widget.width(), widget.minimumSizeHint().width()) << nameOf(widget);
        if (widget.hasHeightForWidth() && !widget.layout()) {
            EXPECT_GE(widget.height(), widget.heightForWidth(widget.width())) << nameOf(widget);
        }
        const auto* button = qobject_cast<Button*>(&widget);
        if (button && button->sizePolicy().horizontalPolicy() != QSizePolicy::Expanding) {
            EXPECT_EQ(button->height(), button->sizeHint().height()) << nameOf(widget) << " wraps";
        }
    }
    static void expectApartFromSiblings(QWidget& widget)
    {
        for (QObject* other : widget.parentWidget()->children()) {
            auto* sibling = qobject_cast<QWidget*>(other);
            if (sibling && sibling != &widget && sibling->isVisible()) {
                EXPECT_FALSE(sibling->geometry().intersects(widget.geometry()))
                    << nameOf(widget) << " overlaps " << nameOf(*sibling);
            }
        }
    }
    void expectWholeRows() const
    {
        for (QWidget* widget : list()->viewport()->findChildren<QWidget*>()) {
            if (!widget->isVisible())
                continue;
            expectWholeAt(*widget);
            if (widget->parentWidget() != list()->viewport()) {
                EXPECT_TRUE(widget->parentWidget()->rect().contains(widget->geometry())) << nameOf(*widget);
                expectApartFromSiblings(*widget);
            }
        }
    }
};

TEST_P(ContentViewRoom, holdsAFreshWindowAndResultsWithoutClippingOrOverlapping)
{
    const FontChange change(designFont(GetParam().fontScale));
    for (const WindowState state : {fresh, analysed}) {
        SCOPED_TRACE(state);
        enterState(state);
        resize(GetParam().width, 700);
        EXPECT_EQ(content->width(), GetParam().width);
        expectNothingClippedOrOverlapping();
    }
}

TEST_P(ContentViewRoom, holdsACopyWithoutClippingOrOverlapping)
{
    const FontChange change(designFont(GetParam().fontScale));
    enterState(copying);
    resize(GetParam().width, 700);
    expectNothingClippedOrOverlapping();
}

TEST_P(ContentViewRoom, holdsTheEmptyStateWithoutClippingOrOverlapping)
{
    const FontChange change(designFont(GetParam().fontScale));
    enterState(allSaved);
    resize(GetParam().width, 700);
    expectNothingClippedOrOverlapping();
}

INSTANTIATE_TEST_SUITE_P(Rooms, ContentViewRoom,
                         testing::Values(Room{480, 1.0}, Room{760, 1.0}, Room{1148, 1.0}, Room{1600, 1.0},
                                         Room{480, 1.5}, Room{760, 1.5}, Room{1148, 1.5}, Room{480, 2.0},
                                         Room{760, 2.0}, Room{1148, 2.0}));

} // namespace
} // namespace reelkeep
