#include "UI/Box.h"

#include <QLayout>
#include <QPainter>

namespace reelkeep {

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
    paint(painter, rect(), plate.background, Appearance::of(this));
}

} // namespace reelkeep
