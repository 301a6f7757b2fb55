#include "UI/ScrollingWindow.h"

#include "UI/OverlayScrollBar.h"

#include <QApplication>
#include <QScreen>
#include <QScrollBar>

#include <algorithm>

namespace reelkeep {

namespace {

constexpr int firstWidth = 1148;
constexpr QSize smallest(480, 400);
/// What a title bar and borders take of the screen, where the desktop has not told yet.
constexpr QSize frame(8, 40);

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
    const QSize room = screen()->availableSize() - frame;
    const int width = std::min(firstWidth, room.width());
    const int height = std::min(area->widget()->heightForWidth(width), room.height());
    resize(QSize(width, height).expandedTo(minimumSize()));
    show();
    // Nothing is pressed by accident, and no ring is drawn, until the user reaches for the Tab key.
    area->widget()->setFocus();
}

} // namespace reelkeep
