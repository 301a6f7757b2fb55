#include "UI/Accessible.h"

#include "UI/Announcer.h"
#include "UI/Box.h"
#include "UI/Controls.h"
#include "UI/RowList.h"
#include "UI/SymbolWidget.h"
#include "UI/TextWidget.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QAccessibleWidget>
#include <QPointer>

#include <map>

namespace reelkeep {

namespace {

/// A text, which is its own name. A selectable one can be read and selected character by character.
class AccessibleText : public QAccessibleWidget, public QAccessibleTextInterface {
public:
    explicit AccessibleText(TextWidget* text)
        : QAccessibleWidget(text, text->findChild<Announcer*>() ? QAccessible::StatusBar : QAccessible::StaticText)
    {
    }

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::TextInterface && widget()->isSelectable())
            return static_cast<QAccessibleTextInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
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

    void selection(int, int* start, int* end) const override
    {
        *start = widget()->selectionBegin();
        *end = widget()->selectionFinish();
    }
    int selectionCount() const override { return widget()->hasSelection() ? 1 : 0; }
    void addSelection(int start, int end) override { widget()->select(start, end); }
    void removeSelection(int) override { widget()->clearSelection(); }
    void setSelection(int, int start, int end) override { widget()->select(start, end); }
    int cursorPosition() const override { return widget()->cursorPosition(); }
    void setCursorPosition(int position) override { widget()->select(position, position); }
    QString text(int start, int end) const override { return widget()->text().mid(start, end - start); }
    int characterCount() const override { return int(widget()->text().size()); }
    QRect characterRect(int offset) const override
    {
        const QRect inside = widget()->characterRect(offset).toAlignedRect();
        return {widget()->mapToGlobal(inside.topLeft()), inside.size()};
    }
    int offsetAtPoint(const QPoint& point) const override
    {
        return widget()->positionAt(widget()->mapFromGlobal(point));
    }
    void scrollToSubstring(int, int) override {}
    QString attributes(int, int* start, int* end) const override
    {
        *start = 0;
        *end = characterCount();
        return {};
    }

private:
    TextWidget* widget() const { return static_cast<TextWidget*>(QAccessibleWidget::widget()); }
};

/// One row, in view or not. It holds an index instead of a record, so it can outlive any change of the list.
class AccessibleRow : public QAccessibleInterface {
public:
    AccessibleRow(RowList* rows, int row) : list(rows), index(row) {}

    bool isValid() const override { return list && index < list->rowCount(); }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return list ? list->window()->windowHandle() : nullptr; }
    QAccessibleInterface* parent() const override { return QAccessible::queryAccessibleInterface(list); }
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessible::Role role() const override { return QAccessible::ListItem; }
    void setText(QAccessible::Text, const QString&) override {}
    QString text(QAccessible::Text kind) const override
    {
        return isValid() && kind == QAccessible::Name ? list->description(index) : QString();
    }
    QRect rect() const override
    {
        if (!isValid())
            return {};
        const QRect inside = list->rowRect(index);
        return {list->viewport()->mapToGlobal(inside.topLeft()), inside.size()};
    }
    QAccessible::State state() const override
    {
        QAccessible::State state;
        if (!isValid()) {
            state.invalid = true;
            return state;
        }
        state.focusable = true;
        state.readOnly = true;
        state.focused = list->hasFocus() && list->currentRow() == index;
        state.offscreen = !list->viewport()->rect().intersects(list->rowRect(index));
        return state;
    }

private:
    QPointer<RowList> list;
    int index;
};

/// The list with all its rows as children. The object of a row is made when it is first requested.
class AccessibleRowList : public QAccessibleWidget {
public:
    explicit AccessibleRowList(RowList* list) : QAccessibleWidget(list, QAccessible::List) {}
    ~AccessibleRowList() override
    {
        for (const auto& [row, id] : rows)
            QAccessible::deleteAccessibleInterface(id);
    }

    int childCount() const override { return list()->rowCount(); }
    QAccessibleInterface* child(int index) const override
    {
        if (index < 0 || index >= childCount())
            return nullptr;
        auto known = rows.find(index);
        if (known == rows.end()) {
            auto* row = new AccessibleRow(list(), index);
            // The toolkit owns it now.
            const QAccessible::Id id = QAccessible::registerAccessibleInterface(row);
            known = rows.emplace(index, id).first;
        }
        return QAccessible::accessibleInterface(known->second);
    }
    int indexOfChild(const QAccessibleInterface* child) const override
    {
        for (const auto& [row, id] : rows) {
            if (QAccessible::accessibleInterface(id) == child)
                return row;
        }
        return -1;
    }
    QAccessibleInterface* childAt(int x, int y) const override
    {
        return child(list()->rowAt(list()->viewport()->mapFromGlobal(QPoint(x, y))));
    }
    QAccessibleInterface* focusChild() const override
    {
        return list()->hasFocus() ? child(list()->currentRow()) : nullptr;
    }

private:
    RowList* list() const { return static_cast<RowList*>(widget()); }

    mutable std::map<int, QAccessible::Id> rows;
};

/// A pop-up menu whose name is its label and its choice. The toolkit's own takes the name from a QLabel, which this
/// vocabulary does not use.
class AccessiblePopUp : public QAccessibleWidget {
public:
    explicit AccessiblePopUp(PopUp* popUp) : QAccessibleWidget(popUp, QAccessible::ComboBox) {}

    QString text(QAccessible::Text kind) const override
    {
        if (kind == QAccessible::Name && !popUp()->currentText().isEmpty())
            return popUp()->accessibleName() + QStringLiteral(": ") + popUp()->currentText();
        return kind == QAccessible::Value ? popUp()->currentText() : QAccessibleWidget::text(kind);
    }
    int childCount() const override { return 1; }
    QAccessibleInterface* child(int index) const override
    {
        return index == 0 ? QAccessible::queryAccessibleInterface(popUp()->view()) : nullptr;
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

private:
    PopUp* popUp() const { return static_cast<PopUp*>(widget()); }
};

QAccessibleInterface* makeInterface(const QString&, QObject* object)
{
    if (auto* text = qobject_cast<TextWidget*>(object))
        return new AccessibleText(text);
    if (auto* list = qobject_cast<RowList*>(object))
        return new AccessibleRowList(list);
    if (auto* popUp = qobject_cast<PopUp*>(object))
        return new AccessiblePopUp(popUp);
    if (auto* box = qobject_cast<Box*>(object); box && !box->accessibleName().isEmpty())
        return new QAccessibleWidget(box, QAccessible::Grouping);
    if (qobject_cast<SymbolWidget*>(object) || qobject_cast<IconTile*>(object))
        return new QAccessibleWidget(static_cast<QWidget*>(object), QAccessible::Graphic);
    return nullptr;
}

} // namespace

void installAccessibility()
{
    QAccessible::installFactory(makeInterface);
}

} // namespace reelkeep
