#include "UI/PopUp.h"

#include "UI/Design.h"
#include "UI/FocusRing.h"
#include "UI/PopUpList.h"
#include "UI/WholeText.h"

#include <QAbstractItemView>
#include <QFontMetrics>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>

namespace reelkeep {

PopUp::PopUp()
{
    new FocusRing(this, measure::controlRadius);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setFocusPolicy(Qt::StrongFocus);
    // The name of a folder may be wider than any window.
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setView(new PopUpList(this));
}

QSize PopUp::sizeHint() const
{
    const QFontMetrics metrics(type::body.font());
    int widest = 0;
    for (int index = 0; index < count(); ++index)
        widest = std::max(widest, metrics.horizontalAdvance(itemText(index)));
    return {widest + scaledWithFont(40), std::max(measure::controlHeight, int(type::body.height()) + 12)};
}

QSize PopUp::minimumSizeHint() const
{
    return {80, sizeHint().height()};
}

int PopUp::readableWidth() const
{
    // Longer names are cut in the middle before the label in front of them wraps.
    return std::min(sizeHint().width(), scaledWithFont(160));
}

QRect PopUp::textRect() const
{
    return rect().adjusted(10, 0, -scaledWithFont(24), 0);
}

QString PopUp::shownText() const
{
    return QFontMetrics(type::body.font()).elidedText(currentText(), Qt::ElideMiddle, textRect().width());
}

bool PopUp::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip)
        return QComboBox::event(event);
    if (shownText() != currentText())
        showWholeText(currentText(), *static_cast<QHelpEvent*>(event), *this);
    return true;
}

void PopUp::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const Appearance appearance = Appearance::of(this);
    paint(painter, rect(),
          {.fill = Tint::of(appearance.buttonFace(touchOf(*this, view()->isVisible()))),
           .stroke = Tint::of(appearance.buttonEdge()),
           .radius = measure::controlRadius},
          appearance);
    painter.setPen(appearance.primary());
    painter.setFont(type::body.font());
    painter.drawText(textRect(), Qt::AlignVCenter | Qt::TextSingleLine, shownText());

    const double scale = textScale();
    painter.translate(width() - 11.5 * scale, height() / 2.0);
    painter.scale(scale, scale);
    painter.setPen(QPen(appearance.primary(), 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    for (const double side : {-1.0, 1.0})
        painter.drawPolyline(QPolygonF({{-3, side * 2}, {0, side * 5}, {3, side * 2}}));
}

void PopUp::keyPressEvent(QKeyEvent* event)
{
    // A stray key must never change the copy destination.
    switch (event->key()) {
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_F4:
    case Qt::Key_Up:
    case Qt::Key_Down:
        return showPopup();
    default:
        event->ignore();
    }
}

void PopUp::wheelEvent(QWheelEvent* event)
{
    // Scrolling past must never change the copy destination.
    event->ignore();
}

} // namespace reelkeep
