#include "UI/ScrollingWindow.h"

#include "UI/AvailableSize.h"
#include "UI/OverlayScrollBar.h"

#include <QApplication>
#include <QScreen>
#include <QScrollBar>

#include <algorithm>
#include <cmath>

namespace reelkeep {

namespace {

constexpr int firstWidth = 1148;
constexpr QSize smallest(480, 400);

} // namespace

ScrollingWindow::ScrollingWindow(const QString& title, QWidget* content) : area(new QScrollArea)
{
    setWindowTitle(title);
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidget(content);
    area->verticalScrollBar()->setSingleStep(24);
    // The window's own ground shows behind the content.
    content->setAutoFillBackground(false);
    area->viewport()->setAutoFillBackground(false);
    new OverlayScrollBar(area);
    setCentralWidget(area);
    setMinimumSize(smallest);
}

void ScrollingWindow::openAtFirstSize()
{
    const QSize room = roomOnScreen(*this);
    const int width = std::min(firstWidth, room.width());
    // Where a point is not a whole number of pixels the desktop may round the height down, and there would be something
    // to scroll; a point to spare prevents that.
    const double ratio = screen()->devicePixelRatio();
    const int spare = ratio == std::floor(ratio) ? 0 : 1;
    const int height = std::min(area->widget()->heightForWidth(width) + spare, room.height());
    resize(QSize(width, height).expandedTo(minimumSize()));
    show();
    // Nothing is pressed by accident, and no ring is drawn, until the user reaches for the Tab key.
    area->widget()->setFocus();
}

} // namespace reelkeep
