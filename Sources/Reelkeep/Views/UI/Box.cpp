#include "UI/Box.h"

#include <QPainter>

namespace reelkeep {

void Box::setBackground(const Background& ground)
{
    if (ground == background)
        return;
    background = ground;
    update();
}

void Box::paintEvent(QPaintEvent*)
{
    if (background == Background{})
        return;
    QPainter painter(this);
    paint(painter, rect(), background, Appearance::of(this));
}

} // namespace reelkeep
