#include "UI/FocusHome.h"

#include "UI/FocusRing.h"

#include <QFocusEvent>
#include <QMouseEvent>

namespace reelkeep {

namespace {

bool isIn(const QWidget& element, const QWidget* widget)
{
    return widget && (widget == &element || element.isAncestorOf(widget));
}

void setKeepingFocus(QWidget& element, void (QWidget::*set)(bool), bool canBeUsed)
{
    FocusHome* home = FocusHome::around(element);
    if (home && !canBeUsed)
        home->takeFocusFrom(element);
    (element.*set)(canBeUsed);
    if (home && canBeUsed)
        home->returnFocusTo(element);
}

} // namespace

FocusHome::FocusHome(QWidget* parent) : QWidget(parent)
{
    setFocusPolicy(Qt::ClickFocus);
    following.setSingleShot(true);
    connect(&following, &QTimer::timeout, this, [this] {
        if (QWidget* focused = window()->focusWidget())
            scrollIntoView(*focused);
    });
}

FocusHome* FocusHome::around(const QWidget& widget)
{
    for (QWidget* parent = widget.parentWidget(); parent; parent = parent->parentWidget()) {
        if (auto* home = qobject_cast<FocusHome*>(parent))
            return home;
    }
    return nullptr;
}

QWidget* FocusHome::ownerIn(const QWidget& element) const
{
    QWidget* focused = window()->focusWidget();
    QWidget* owner = focused == this ? absent.data() : focused;
    return isIn(element, owner) ? owner : nullptr;
}

void FocusHome::takeFocusFrom(const QWidget& element)
{
    QWidget* focused = window()->focusWidget();
    if (!isIn(element, focused))
        return;
    absentHadRing = FocusRing::belongsAround(*focused);
    setFocus(Qt::OtherFocusReason);
    absent = focused;
}

void FocusHome::returnFocusTo(const QWidget& element)
{
    QWidget* owner = absent;
    if (window()->focusWidget() != this || !isIn(element, owner))
        return;
    if (owner->isEnabledTo(this) && owner->isVisibleTo(this))
        FocusRing::moveFocus(*owner, absentHadRing);
}

void FocusHome::passFocusOn(const QWidget& element, const QWidget& list)
{
    const QWidget* owner = ownerIn(element);
    if (!owner)
        return;
    const auto canTakeIt = [&](const QWidget& widget) {
        return widget.metaObject() == owner->metaObject() && (widget.focusPolicy() & Qt::TabFocus) &&
               widget.isEnabled() && widget.isVisible() && isAncestorOf(&widget);
    };
    QWidget* next = owner->nextInFocusChain();
    while (list.isAncestorOf(next) && !canTakeIt(*next))
        next = next->nextInFocusChain();
    if (!list.isAncestorOf(next)) {
        next = owner->previousInFocusChain();
        while (next != owner && !canTakeIt(*next))
            next = next->previousInFocusChain();
    }
    if (next == owner)
        return;
    const bool hadRing = absent == owner ? absentHadRing : FocusRing::belongsAround(*owner);
    FocusRing::moveFocus(*next, hadRing);
    if (hadRing)
        following.start();
}

void FocusHome::mousePressEvent(QMouseEvent* event)
{
    // The second press of a double click on a button that was disabled by the first is not a way elsewhere.
    const QPoint place = event->position().toPoint();
    if (absent && !absent->rect().contains(absent->mapFrom(this, place)))
        absent.clear();
    QWidget::mousePressEvent(event);
}

void FocusHome::focusOutEvent(QFocusEvent* event)
{
    if (event->reason() != Qt::ActiveWindowFocusReason && event->reason() != Qt::PopupFocusReason)
        absent.clear();
    QWidget::focusOutEvent(event);
}

/// Goes on from the control that left the focus here.
bool FocusHome::focusNextPrevChild(bool next)
{
    if (!absent)
        return QWidget::focusNextPrevChild(next);
    const auto step = [next](const QWidget* from) {
        return next ? from->nextInFocusChain() : from->previousInFocusChain();
    };
    for (QWidget* widget = step(absent); widget != absent; widget = step(widget)) {
        const bool isStop = (widget->focusPolicy() & Qt::TabFocus) && isAncestorOf(widget);
        if (!isStop || !widget->isEnabled() || !widget->isVisible())
            continue;
        widget->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
        scrollIntoView(*widget);
        return true;
    }
    return QWidget::focusNextPrevChild(next);
}

void setEnabledKeepingFocus(QWidget& element, bool enabled)
{
    setKeepingFocus(element, &QWidget::setEnabled, enabled);
}

void setVisibleKeepingFocus(QWidget& element, bool visible)
{
    setKeepingFocus(element, &QWidget::setVisible, visible);
}

} // namespace reelkeep
