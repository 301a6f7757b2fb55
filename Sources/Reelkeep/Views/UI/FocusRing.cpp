#include "UI/FocusRing.h"

#include "UI/Appearance.h"

#include <QCommonStyle>
#include <QFocusEvent>
#include <QPainter>

namespace reelkeep {

namespace {

constexpr int distance = 3;
constexpr int thickness = 2;

/// Makes the frame a sibling of the widget's ancestors instead of the widget: its parent would cut the ring off.
class AroundStyle : public QCommonStyle {
public:
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* result) const override
    {
        return hint == SH_FocusFrame_AboveWidget ? 1 : QCommonStyle::styleHint(hint, option, widget, result);
    }
    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override
    {
        const bool isMargin = metric == PM_FocusFrameHMargin || metric == PM_FocusFrameVMargin;
        return isMargin ? distance : QCommonStyle::pixelMetric(metric, option, widget);
    }
};

class Frame : public QFocusFrame {
public:
    explicit Frame(double frameRadius) : radius(frameRadius) { setStyle(&around); }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        paintFocusRing(painter, rect(), radius, Appearance::of(this));
    }

private:
    double radius;
    AroundStyle around;
};

} // namespace

void paintFocusRing(QPainter& painter, const QRectF& rect, double radius, const Appearance& appearance)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(appearance.focusRing(), thickness));
    painter.drawPath(roundedOutline(painter, rect, radius, thickness / 2.0));
}

FocusRing::FocusRing(QWidget* widget, double widgetRadius) : QObject(widget), radius(widgetRadius + distance)
{
    widget->installEventFilter(this);
}

FocusRing::~FocusRing()
{
    delete frame;
}

bool FocusRing::isShownAround(const QWidget& widget)
{
    const auto* ring = widget.findChild<FocusRing*>(QString(), Qt::FindDirectChildrenOnly);
    return ring && ring->frame;
}

bool FocusRing::eventFilter(QObject* watched, QEvent* event)
{
    const auto isByMouse = [event] { return static_cast<QFocusEvent*>(event)->reason() == Qt::MouseFocusReason; };
    if (event->type() == QEvent::FocusIn && !frame && !isByMouse()) {
        frame = new Frame(radius);
        frame->setWidget(static_cast<QWidget*>(watched));
    } else if (event->type() == QEvent::FocusOut) {
        delete frame;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace reelkeep
