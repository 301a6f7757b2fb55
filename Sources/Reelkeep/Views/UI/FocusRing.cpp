#include "UI/FocusRing.h"

#include "UI/Appearance.h"

#include <QCommonStyle>
#include <QFocusEvent>
#include <QPainter>
#include <QScrollArea>

namespace reelkeep {

namespace {

constexpr int distance = 3;
constexpr int ringWidth = 2;

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
    painter.setPen(QPen(appearance.focusRing(), ringWidth));
    painter.drawPath(roundedOutline(painter, rect, radius, ringWidth / 2.0));
}

void scrollIntoView(QWidget& widget)
{
    for (QWidget* parent = widget.parentWidget(); parent; parent = parent->parentWidget()) {
        if (auto* area = qobject_cast<QScrollArea*>(parent))
            area->ensureWidgetVisible(&widget);
    }
}

FocusRing::FocusRing(QWidget* widget, double widgetRadius) : FocusRing(widget)
{
    radius = widgetRadius + distance;
}

FocusRing::FocusRing(QWidget* widget) : QObject(widget)
{
    widget->installEventFilter(this);
}

FocusRing::~FocusRing()
{
    delete frame;
}

FocusRing* FocusRing::of(const QWidget& widget)
{
    return widget.findChild<FocusRing*>(QString(), Qt::FindDirectChildrenOnly);
}

bool FocusRing::belongsAround(const QWidget& widget)
{
    const FocusRing* ring = of(widget);
    return ring && ring->belongs;
}

void FocusRing::moveFocus(QWidget& to, bool withRing)
{
    to.setFocus(withRing ? Qt::TabFocusReason : Qt::MouseFocusReason);
    // While the window is not active, no event says why the focus moved.
    if (FocusRing* ring = of(to))
        ring->belongs = withRing;
}

bool FocusRing::eventFilter(QObject* watched, QEvent* event)
{
    const bool isIn = event->type() == QEvent::FocusIn;
    if (!isIn && event->type() != QEvent::FocusOut)
        return QObject::eventFilter(watched, event);
    const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
    const bool isLent = reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason;
    if (!isLent)
        belongs = isIn && reason != Qt::MouseFocusReason;
    // The toolkit scrolls after Tab alone.
    if (isIn && reason == Qt::OtherFocusReason)
        scrollIntoView(*static_cast<QWidget*>(watched));
    if (isIn && belongs && radius && !frame) {
        frame = new Frame(*radius);
        frame->setWidget(static_cast<QWidget*>(watched));
    } else if (!isIn) {
        delete frame;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace reelkeep
