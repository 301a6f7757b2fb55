#include "UI/OverlayScrollBar.h"

#include "UI/Appearance.h"

#include <QAbstractScrollArea>
#include <QEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionSlider>

namespace reelkeep {

namespace {
constexpr int thickness = 12;
constexpr int thumb = 6;
} // namespace

OverlayScrollBar::OverlayScrollBar(QAbstractScrollArea* scrolledArea)
    : QScrollBar(Qt::Vertical, scrolledArea), area(scrolledArea)
{
    area->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->installEventFilter(this);
    setFocusPolicy(Qt::NoFocus);
    QScrollBar* own = area->verticalScrollBar();
    connect(own, &QScrollBar::rangeChanged, this, &OverlayScrollBar::followRange);
    connect(own, &QScrollBar::valueChanged, this, &QScrollBar::setValue);
    connect(this, &QScrollBar::valueChanged, own, &QScrollBar::setValue);
    followRange();
}

void OverlayScrollBar::followRange()
{
    const QScrollBar* own = area->verticalScrollBar();
    setPageStep(own->pageStep());
    setSingleStep(own->singleStep());
    setRange(own->minimum(), own->maximum());
    setValue(own->value());
    setVisible(own->maximum() > own->minimum());
    raise();
}

bool OverlayScrollBar::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == area && event->type() == QEvent::Resize) // also before it is shown for the first time
        setGeometry(area->width() - thickness, 2, thickness, area->height() - 4);
    return QScrollBar::eventFilter(watched, event);
}

void OverlayScrollBar::paintEvent(QPaintEvent*)
{
    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRect slider = style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this);
    QPainter painter(this);
    const Appearance appearance = Appearance::of(this);
    const double opacity = isSliderDown() || underMouse() || appearance.isHighContrast() ? 0.70 : 0.40;
    const Tint fill = Tint::primary(opacity);
    const QRectF shape(width() - thumb - 3, slider.top(), thumb, slider.height());
    paint(painter, shape, {.fill = fill, .radius = thumb / 2.0}, appearance);
}

void OverlayScrollBar::enterEvent(QEnterEvent* event)
{
    update();
    QScrollBar::enterEvent(event);
}

void OverlayScrollBar::leaveEvent(QEvent* event)
{
    update();
    QScrollBar::leaveEvent(event);
}

} // namespace reelkeep
