#include "Fixtures/EventLoop.h"
#include "Fixtures/Widgets.h"
#include "UI/Appearance.h"
#include "UI/FocusRing.h"

#include <QApplication>
#include <QFocusEvent>
#include <QImage>
#include <QPainter>
#include <QScrollArea>

#include <gtest/gtest.h>

#include <memory>
#include <set>

namespace reelkeep {
namespace {

/// A widget that fills its parent, in content that is taller than the scroll area around it.
class FocusRingTest : public testing::Test {
protected:
    FocusRingTest()
    {
        window.setFrameShape(QFrame::NoFrame);
        window.resize(300, 200);
        window.setWidget(content);
        content->resize(300, 600);
        parent->setGeometry(100, 50, 80, 20);
        inner->setGeometry(parent->rect());
        inner->setFocusPolicy(Qt::StrongFocus);
        showActive(window);
        window.setFocus();
    }
    /// The place of the ring in the content; empty if it is not shown.
    QRect place() const
    {
        letEventsPass();
        const QFocusFrame* frame = ring->shownFrame();
        return frame ? QRect(content->mapFromGlobal(frame->mapToGlobal(QPoint())), frame->size()) : QRect();
    }

    QScrollArea window;
    QWidget* content = new QWidget;
    QWidget* parent = new QWidget(content);
    QWidget* inner = new QWidget(parent);
    FocusRing* ring = new FocusRing(inner, 4);
};

TEST_F(FocusRingTest, isShownWhileTheWidgetHasTheFocus)
{
    EXPECT_FALSE(ring->shownFrame());
    inner->setFocus();
    ASSERT_TRUE(ring->shownFrame());
    EXPECT_TRUE(ring->shownFrame()->isVisible());
    inner->clearFocus();
    EXPECT_FALSE(ring->shownFrame());
}

TEST_F(FocusRingTest, isNotShownAfterAClick)
{
    inner->setFocus(Qt::MouseFocusReason);
    EXPECT_FALSE(ring->shownFrame());
    inner->clearFocus();
    for (const Qt::FocusReason reason : {Qt::TabFocusReason, Qt::BacktabFocusReason, Qt::OtherFocusReason}) {
        inner->setFocus(reason);
        EXPECT_TRUE(ring->shownFrame()) << reason;
        inner->clearFocus();
    }
}

TEST_F(FocusRingTest, returnsWithTheFocusFromAnotherWindowOnlyIfItWasShown)
{
    for (const auto& [reason, expected] : {std::pair(Qt::MouseFocusReason, false), std::pair(Qt::TabFocusReason, true),
                                           std::pair(Qt::MouseFocusReason, false)}) {
        inner->clearFocus();
        inner->setFocus(reason);
        QWidget other;
        showActive(other);
        ASSERT_FALSE(inner->hasFocus());
        EXPECT_FALSE(ring->shownFrame());
        other.close();
        showActive(window);
        ASSERT_TRUE(waitUntil([this] { return inner->hasFocus(); }));
        EXPECT_EQ(ring->shownFrame() != nullptr, expected) << reason;
    }
}

TEST_F(FocusRingTest, returnsWithTheFocusFromAMenuOnlyIfItWasShown)
{
    for (const auto& [reason, expected] :
         {std::pair(Qt::MouseFocusReason, false), std::pair(Qt::TabFocusReason, true)}) {
        inner->clearFocus();
        inner->setFocus(reason);
        // What the toolkit sends when a menu opens and closes.
        QFocusEvent lent(QEvent::FocusOut, Qt::PopupFocusReason);
        QFocusEvent returned(QEvent::FocusIn, Qt::PopupFocusReason);
        QApplication::sendEvent(inner, &lent);
        EXPECT_FALSE(ring->shownFrame()) << reason;
        QApplication::sendEvent(inner, &returned);
        EXPECT_EQ(ring->shownFrame() != nullptr, expected) << reason;
    }
}

TEST_F(FocusRingTest, isDrawnAroundTheWidgetEvenOutsideItsParent)
{
    const QImage without = picture(window);
    inner->setFocus();
    EXPECT_EQ(place(), QRect(97, 47, 86, 26));
    const QImage with = picture(window);
    EXPECT_NE(with.pixelColor(140, 47), without.pixelColor(140, 47));
    EXPECT_EQ(with.copy(100, 50, 80, 20), without.copy(100, 50, 80, 20)) << "nothing is drawn over the widget";
}

TEST_F(FocusRingTest, followsTheWidgetWhenItsParentMovesOrScrolls)
{
    inner->setFocus();
    parent->move(20, 80);
    EXPECT_EQ(place(), QRect(17, 77, 86, 26));
    window.ensureVisible(0, 600);
    EXPECT_EQ(place(), QRect(17, 77, 86, 26));
}

TEST_F(FocusRingTest, isDestroyedWithTheWidget)
{
    inner->setFocus();
    const QPointer<const QFocusFrame> frame = ring->shownFrame();
    ASSERT_TRUE(frame);
    delete inner;
    EXPECT_FALSE(frame);
}

TEST_F(FocusRingTest, mayBeDestroyedBeforeTheWidget)
{
    inner->setFocus();
    delete ring->shownFrame();
    EXPECT_EQ(place(), QRect());
}

TEST(FocusRingPaint, hasSmoothCorners)
{
    QImage image(40, 30, QImage::Format_RGB32);
    image.fill(Qt::white);
    const QWidget widget;
    QPainter painter(&image);
    paintFocusRing(painter, image.rect(), 8, Appearance::of(&widget));
    painter.end();
    std::set<QRgb> colours;
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            colours.insert(image.pixel(x, y));
    EXPECT_GT(colours.size(), 2U);
}

} // namespace
} // namespace reelkeep
