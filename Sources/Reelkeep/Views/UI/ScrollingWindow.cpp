#include "UI/ScrollingWindow.h"

#include "UI/AvailableSize.h"
#include "UI/OverlayScrollBar.h"

#include <QApplication>
#include <QKeyEvent>
#include <QScreen>
#include <QScrollBar>
#include <QShortcut>

#include <algorithm>
#include <cmath>

namespace reelkeep {

namespace {

constexpr int firstWidth = 1148;
constexpr QSize smallest(480, 400);

/// Does not move the view when the content becomes shorter: what has been scrolled past and what is in view stays,
/// until it is scrolled out of view at the end, or the window gets another size.
class Page : public QScrollArea {
public:
    Page()
    {
        connect(verticalScrollBar(), &QScrollBar::valueChanged, this, [this] {
            if (widget()->minimumHeight() > reached())
                widget()->setMinimumHeight(reached());
        });
    }

protected:
    bool event(QEvent* event) override
    {
        if (event->type() == QEvent::LayoutRequest)
            widget()->setMinimumHeight(reached());
        return QScrollArea::event(event);
    }
    void resizeEvent(QResizeEvent* event) override
    {
        widget()->setMinimumHeight(0);
        QScrollArea::resizeEvent(event);
    }

private:
    int reached() const { return verticalScrollBar()->value() + viewport()->height(); }
};

} // namespace

ScrollingWindow::ScrollingWindow(const QString& title, QWidget* content) : area(new Page)
{
    setWindowTitle(title);
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidget(content);
    area->verticalScrollBar()->setSingleStep(24);
    // The window's own background shows behind the content.
    content->setAutoFillBackground(false);
    area->viewport()->setAutoFillBackground(false);
    new OverlayScrollBar(area);
    setCentralWidget(area);
    setMinimumSize(smallest);
    for (const Qt::Key key : {Qt::Key_Q, Qt::Key_W})
        connect(new QShortcut(Qt::CTRL | key, this), &QShortcut::activated, this, &QWidget::close);
}

void ScrollingWindow::openAtFirstSize()
{
    const QSize available = availableSize(*this);
    const int width = std::min(firstWidth, available.width());
    // If a point is not a whole number of pixels, the desktop may round the height down and the window would scroll; a
    // spare point prevents that.
    const double ratio = screen()->devicePixelRatio();
    const int spare = ratio == std::floor(ratio) ? 0 : 1;
    const int height = std::min(area->widget()->heightForWidth(width) + spare, available.height());
    resize(QSize(width, height).expandedTo(minimumSize()));
    show();
    // No button has the focus, so none is pressed by accident and no ring is drawn, until the user presses Tab.
    area->widget()->setFocus();
}

bool ScrollingWindow::event(QEvent* event)
{
    // The toolkit adopts the font of a new theme, but widgets keep the old one until a font is set again.
    if (event->type() == QEvent::ThemeChange)
        setFont({});
    return QMainWindow::event(event);
}

void ScrollingWindow::keyPressEvent(QKeyEvent* event)
{
    QScrollBar* bar = area->verticalScrollBar();
    switch (event->key()) {
    case Qt::Key_Home:
        return bar->setValue(bar->minimum());
    case Qt::Key_End:
        return bar->setValue(bar->maximum());
    default:
        QMainWindow::keyPressEvent(event);
    }
}

} // namespace reelkeep
