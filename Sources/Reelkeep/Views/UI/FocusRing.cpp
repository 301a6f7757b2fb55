#include "UI/FocusRing.h"

#include "UI/Appearance.h"

#include <QCommonStyle>
#include <QEvent>
#include <QPainter>

namespace reelkeep {

namespace {

/// Has the frame stand over the widget's surroundings instead of inside its parent, which may end where it does.
class AroundStyle : public QCommonStyle {
public:
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* answer) const override
    {
        return hint == SH_FocusFrame_AboveWidget ? 1 : QCommonStyle::styleHint(hint, option, widget, answer);
    }
    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override
    {
        const bool isMargin = metric == PM_FocusFrameHMargin || metric == PM_FocusFrameVMargin;
        return isMargin ? 3 : QCommonStyle::pixelMetric(metric, option, widget);
    }
};

class Frame : public QFocusFrame {
public:
    Frame() { setStyle(&around); }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(Appearance::of(this).focusRing(), hairline(painter)));
        painter.drawPath(roundedOutline(painter, rect(), 4, hairline(painter) / 2));
    }

private:
    AroundStyle around;
};

} // namespace

FocusRing::FocusRing(QWidget* widget) : QObject(widget)
{
    widget->installEventFilter(this);
}

FocusRing::~FocusRing()
{
    delete frame;
}

bool FocusRing::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::FocusIn && !frame) {
        frame = new Frame;
        frame->setWidget(static_cast<QWidget*>(watched));
    } else if (event->type() == QEvent::FocusOut) {
        delete frame;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace reelkeep
