#include "Fixtures/Desktops.h"
#include "Fixtures/EventLoop.h"
#include "Fixtures/Widgets.h"
#include "UI/OverlayScrollBar.h"
#include "UI/ScrollingWindow.h"

#include <QScreen>
#include <QScrollBar>
#include <QTest>

#include <gtest/gtest.h>

namespace reelkeep {
namespace {

/// Content of a fixed area: the narrower it is, the taller.
class Content : public QWidget {
public:
    explicit Content(int heightAt1148) : area(heightAt1148 * 1148)
    {
        QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
        policy.setHeightForWidth(true);
        setSizePolicy(policy);
        setFocusPolicy(Qt::StrongFocus);
    }
    QSize sizeHint() const override { return {1148, heightForWidth(1148)}; }
    QSize minimumSizeHint() const override { return {468, 10}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override { return area / width; }

private:
    int area;
};

QSize firstSize(int heightAt1148, const char* screen)
{
    ScrollingWindow window(QStringLiteral("Reelkeep"), new Content(heightAt1148));
    window.setScreen(screenNamed(screen));
    window.openAtFirstSize();
    return window.size();
}

TEST(ScrollingWindow, opensAsTallAsItsContentIfTheScreenAllows)
{
    EXPECT_EQ(firstSize(1709, "tall"), QSize(1148, 1709));
}

TEST(ScrollingWindow, opensOnePointTallerIfTheDesktopMayRoundTheHeightDown)
{
    EXPECT_EQ(firstSize(1709, "uneven"), QSize(1148, 1710));
}

TEST(ScrollingWindow, opensNoTallerThanTheScreen)
{
    const QSize full = firstSize(1709, "full");
    EXPECT_EQ(full.width(), 1148);
    EXPECT_LE(full.height(), 1080);
    EXPECT_GE(full.height(), 1000);
    EXPECT_LE(firstSize(1709, "laptop").height(), 768);
}

class ScrollingWindowOpen : public testing::Test {
protected:
    void open(const QSize& size, int heightAt1148 = 1709)
    {
        content = new Content(heightAt1148);
        window = std::make_unique<ScrollingWindow>(QStringLiteral("Reelkeep"), content);
        window->openAtFirstSize();
        window->resize(size);
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
        letEventsPass();
    }
    QScrollBar& bar() const { return *window->scrollArea()->verticalScrollBar(); }
    OverlayScrollBar& shownBar() const { return *window->findChild<OverlayScrollBar*>(); }

    Content* content = nullptr;
    std::unique_ptr<ScrollingWindow> window;
};

TEST_F(ScrollingWindowOpen, hasItsTitle)
{
    open({1148, 700});
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Reelkeep"));
}

TEST_F(ScrollingWindowOpen, scrollsVerticallyIfItIsTooLow)
{
    open({1148, 700});
    EXPECT_EQ(content->height(), 1709);
    EXPECT_EQ(bar().maximum(), 1709 - 700);
    EXPECT_TRUE(shownBar().isVisible());
}

TEST_F(ScrollingWindowOpen, doesNotScrollIfItIsTallEnough)
{
    open({1148, 1800});
    EXPECT_EQ(bar().maximum(), 0);
    EXPECT_FALSE(shownBar().isVisible());
    EXPECT_EQ(content->height(), 1800);
}

TEST_F(ScrollingWindowOpen, laysItsBarOverTheContentInsteadOfBesideIt)
{
    open({1148, 700});
    EXPECT_EQ(content->width(), 1148);
    EXPECT_EQ(shownBar().geometry().right(), 1147);
    open({1148, 1800});
    EXPECT_EQ(content->width(), 1148);
}

TEST_F(ScrollingWindowOpen, neverScrollsSideways)
{
    for (const int width : {480, 760, 1148, 1600}) {
        open({width, 500});
        EXPECT_EQ(content->width(), width);
        EXPECT_EQ(window->scrollArea()->horizontalScrollBar()->maximum(), 0);
        EXPECT_FALSE(window->scrollArea()->horizontalScrollBar()->isVisible());
    }
}

TEST_F(ScrollingWindowOpen, isNeverNarrowerThan480)
{
    open({300, 200});
    EXPECT_EQ(window->width(), 480);
    EXPECT_EQ(window->height(), 400);
}

TEST_F(ScrollingWindowOpen, scrollsWithTheWheel)
{
    open({1148, 700});
    turnWheel(*content, {500, 300}, -1);
    EXPECT_GT(bar().value(), 0);
}

TEST_F(ScrollingWindowOpen, scrollsWhenItsBarIsDragged)
{
    open({1148, 700});
    shownBar().setValue(300);
    EXPECT_EQ(bar().value(), 300);
    EXPECT_EQ(content->y(), -300);
    bar().setValue(100);
    EXPECT_EQ(shownBar().value(), 100);
}

TEST_F(ScrollingWindowOpen, drawsItsBarVisiblyOnBothThemes)
{
    for (const QPalette& palette : {lightPalette(), darkPalette()}) {
        const PaletteChange change(palette);
        open({1148, 700});
        const QImage image = picture(*window);
        const QColor thumb = image.pixelColor(1148 - 6, 40);
        const QColor ground = image.pixelColor(600, 40);
        EXPECT_GT(std::abs(thumb.lightness() - ground.lightness()), 40);
    }
}

} // namespace
} // namespace reelkeep
