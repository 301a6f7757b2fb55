#include "UI/Accessible.h"

#include "UI/AccessibleRowList.h"
#include "UI/Announcer.h"
#include "UI/Box.h"
#include "UI/Controls.h"
#include "UI/FocusHome.h"
#include "UI/PopUp.h"
#include "UI/RowList.h"
#include "UI/SymbolWidget.h"
#include "UI/TextWidget.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QAccessibleWidget>

#include <algorithm>
#include <vector>

namespace reelkeep {

namespace {

/// A text of which nothing can be selected.
class AccessibleWords : public QAccessibleTextInterface {
public:
    void selection(int, int* start, int* end) const override { *start = *end = 0; }
    int selectionCount() const override { return 0; }
    void addSelection(int, int) override {}
    void removeSelection(int) override {}
    void setSelection(int, int, int) override {}
    int cursorPosition() const override { return 0; }
    void setCursorPosition(int) override {}
    QString text(int start, int end) const override { return words().mid(start, end - start); }
    int characterCount() const override { return int(words().size()); }
    QRect characterRect(int) const override { return {}; }
    int offsetAtPoint(const QPoint&) const override { return -1; }
    void scrollToSubstring(int, int) override {}
    QString attributes(int, int* start, int* end) const override
    {
        *start = 0;
        *end = characterCount();
        return {};
    }

protected:
    virtual QString words() const = 0;
};

/// A text, which is its own name. A selectable one can be read and selected character by character. So can the status
/// line be read: its name may be what a screen reader remembers from its last announcement, its characters never are.
class AccessibleText : public QAccessibleWidget, public AccessibleWords {
public:
    explicit AccessibleText(TextWidget* text) : QAccessibleWidget(text) {}

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::TextInterface && (widget()->isSelectable() || isStatus()))
            return static_cast<QAccessibleTextInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }
    QAccessible::Role role() const override
    {
        return isStatus()              ? QAccessible::StatusBar
               : widget()->isHeading() ? QAccessible::Heading
                                       : QAccessible::StaticText;
    }
    QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Name ? widget()->text() : QAccessibleWidget::text(kind);
    }
    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.readOnly = true;
        state.selectableText = widget()->isSelectable();
        return state;
    }

    using AccessibleWords::text;
    void selection(int, int* start, int* end) const override
    {
        *start = widget()->selectionBegin();
        *end = widget()->selectionFinish();
    }
    int selectionCount() const override { return widget()->hasSelection() ? 1 : 0; }
    void addSelection(int start, int end) override { setSelection(0, start, end); }
    void removeSelection(int) override { widget()->clearSelection(); }
    void setSelection(int, int start, int end) override
    {
        if (widget()->isSelectable())
            widget()->select(start, end);
    }
    int cursorPosition() const override { return widget()->cursorPosition(); }
    void setCursorPosition(int position) override { setSelection(0, position, position); }
    QRect characterRect(int offset) const override
    {
        const QRect inside = widget()->characterRect(offset).toAlignedRect();
        return {widget()->mapToGlobal(inside.topLeft()), inside.size()};
    }
    int offsetAtPoint(const QPoint& point) const override
    {
        return widget()->positionAt(widget()->mapFromGlobal(point));
    }

protected:
    QString words() const override { return widget()->text(); }

private:
    TextWidget* widget() const { return static_cast<TextWidget*>(QAccessibleWidget::widget()); }
    bool isStatus() const { return widget()->findChild<Announcer*>(); }
};

bool isDecoration(const QWidget& widget);

/// What screen readers find inside a widget: neither what is hidden nor what is decoration.
std::vector<QWidget*> readableChildren(const QWidget& widget)
{
    std::vector<QWidget*> found;
    for (QWidget* child : widget.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (!child->isHidden() && !child->isWindow() && !isDecoration(*child))
            found.push_back(child);
    }
    return found;
}

bool isDecoration(const QWidget& widget)
{
    const bool isEmptyBox =
        qobject_cast<const Box*>(&widget) && widget.accessibleName().isEmpty() && readableChildren(widget).empty();
    return isEmptyBox || qobject_cast<const SymbolWidget*>(&widget) || qobject_cast<const IconTile*>(&widget);
}

/// A container; a group if it has a name.
class AccessibleContainer : public QAccessibleWidget {
public:
    explicit AccessibleContainer(QWidget* container) : QAccessibleWidget(container) {}

    QAccessible::Role role() const override
    {
        return widget()->accessibleName().isEmpty() ? QAccessible::Client : QAccessible::Grouping;
    }
    int childCount() const override { return int(readableChildren(*widget()).size()); }
    QAccessibleInterface* child(int index) const override
    {
        const auto children = readableChildren(*widget());
        return index >= 0 && index < int(children.size())
                   ? QAccessible::queryAccessibleInterface(children[std::size_t(index)])
                   : nullptr;
    }
    int indexOfChild(const QAccessibleInterface* child) const override
    {
        const auto children = readableChildren(*widget());
        const auto found = std::find(children.begin(), children.end(), child ? child->object() : nullptr);
        return found == children.end() ? -1 : int(found - children.begin());
    }
};

/// A switch as large as it is drawn. The toolkit's own has the size that its style would draw.
class AccessibleSwitch : public QAccessibleWidget {
public:
    explicit AccessibleSwitch(Switch* toggle) : QAccessibleWidget(toggle, QAccessible::CheckBox) {}

    QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Name ? toggle()->text() : QAccessibleWidget::text(kind);
    }
    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = true;
        state.checked = toggle()->isChecked();
        return state;
    }
    QStringList actionNames() const override
    {
        return toggle()->isEnabled() ? QStringList{toggleAction(), setFocusAction()} : QStringList();
    }
    void doAction(const QString& action) override
    {
        if (action == toggleAction())
            toggle()->click();
        else
            QAccessibleWidget::doAction(action);
    }

private:
    Switch* toggle() const { return static_cast<Switch*>(widget()); }
};

/// A pop-up menu whose name is its label; its value, and what can be read in it, is its choice. The toolkit's own takes
/// the name from a QLabel, which this vocabulary does not use.
class AccessiblePopUp : public QAccessibleWidget, public AccessibleWords {
public:
    explicit AccessiblePopUp(PopUp* popUp) : QAccessibleWidget(popUp, QAccessible::ComboBox) {}

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::TextInterface ? static_cast<QAccessibleTextInterface*>(this)
                                                  : QAccessibleWidget::interface_cast(type);
    }
    using AccessibleWords::text;
    QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Value ? popUp()->currentText() : QAccessibleWidget::text(kind);
    }
    int childCount() const override { return popUp()->view()->isVisible() ? 1 : 0; }
    QAccessibleInterface* child(int index) const override
    {
        return index == 0 && childCount() == 1 ? QAccessible::queryAccessibleInterface(popUp()->view()) : nullptr;
    }
    int indexOfChild(const QAccessibleInterface* interface) const override
    {
        return interface->object() == popUp()->view() ? 0 : -1;
    }
    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.expandable = true;
        state.expanded = popUp()->view()->isVisible();
        state.collapsed = !state.expanded;
        return state;
    }
    QStringList actionNames() const override
    {
        return {QAccessibleActionInterface::showMenuAction(), setFocusAction()};
    }
    void doAction(const QString& action) override
    {
        if (action != QAccessibleActionInterface::showMenuAction())
            QAccessibleWidget::doAction(action);
        else if (popUp()->view()->isVisible())
            popUp()->hidePopup();
        else
            popUp()->showPopup();
    }

protected:
    QString words() const override { return popUp()->currentText(); }

private:
    PopUp* popUp() const { return static_cast<PopUp*>(widget()); }
};

QAccessibleInterface* makeInterface(const QString&, QObject* object)
{
    if (auto* text = qobject_cast<TextWidget*>(object))
        return new AccessibleText(text);
    if (auto* list = qobject_cast<RowList*>(object))
        return makeAccessible(list);
    if (auto* toggle = qobject_cast<Switch*>(object))
        return new AccessibleSwitch(toggle);
    if (auto* popUp = qobject_cast<PopUp*>(object))
        return new AccessiblePopUp(popUp);
    if (qobject_cast<Box*>(object) || qobject_cast<FocusHome*>(object))
        return new AccessibleContainer(static_cast<QWidget*>(object));
    return nullptr;
}

} // namespace

void installAccessibility()
{
    QAccessible::installFactory(makeInterface);
}

} // namespace reelkeep
