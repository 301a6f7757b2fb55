#include "UI/Box.h"

#include "UI/Design.h"
#include "UI/Raised.h"

#include <QLayout>
#include <QPainter>

namespace reelkeep {

const Box* Box::plateBelow(const QWidget& widget)
{
    const QWidget* parent = widget.parentWidget();
    while (parent) {
        const auto* box = qobject_cast<const Box*>(parent);
        if (box && box->plate.background != Background{})
            return box;
        parent = parent->parentWidget();
    }
    return nullptr;
}

void Box::setPlate(const Plate& newPlate)
{
    if (newPlate == plate)
        return;
    plate = newPlate;
    const Padding& padding = plate.padding;
    layout()->setContentsMargins(padding.leading, padding.top, padding.trailing, padding.bottom);
    update();
}

void Box::paintEvent(QPaintEvent*)
{
    if (plate.background == Background{})
        return;
    QPainter painter(this);
    const Appearance appearance = Appearance::of(this);
    paint(painter, rect(), plate.background, appearance);
    const Background shadow{.fill = Tint::of(appearance.buttonShadow()), .radius = measure::controlRadius};
    for (const QWidget* widget : findChildren<QWidget*>()) {
        const auto* raised = dynamic_cast<const Raised*>(widget);
        if (raised && raised->castsShadow() && widget->isVisible() && plateBelow(*widget) == this)
            paint(painter, QRectF(widget->mapTo(this, QPoint(0, 1)), widget->size()), shadow, appearance);
    }
}

} // namespace reelkeep
