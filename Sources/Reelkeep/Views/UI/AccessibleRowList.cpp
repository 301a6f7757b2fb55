#include "UI/AccessibleRowList.h"

#include "UI/RowList.h"

#include <QAccessibleWidget>
#include <QPointer>

#include <map>
#include <vector>

namespace reelkeep {

namespace {

/// A part of a row, such as its size, which a screen reader reads alone.
class AccessiblePart : public QAccessibleInterface {
public:
    AccessiblePart(QAccessibleInterface* row, RowList* rows, int rowIndex, int partIndex)
        : owner(QAccessible::uniqueId(row)), list(rows), index(rowIndex), part(partIndex)
    {
    }

    bool isValid() const override { return row() && row()->isValid() && part < row()->childCount(); }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return list ? list->window()->windowHandle() : nullptr; }
    QAccessibleInterface* parent() const override { return row(); }
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessible::Role role() const override { return QAccessible::StaticText; }
    void setText(QAccessible::Text, const QString&) override {}
    QString text(QAccessible::Text kind) const override
    {
        return isValid() && kind == QAccessible::Name ? list->description(index).value(part) : QString();
    }
    QRect rect() const override { return isValid() ? row()->rect() : QRect(); }
    QAccessible::State state() const override
    {
        QAccessible::State state;
        state.readOnly = true;
        state.invalid = !isValid();
        state.offscreen = isValid() && row()->state().offscreen;
        return state;
    }

private:
    QAccessibleInterface* row() const { return QAccessible::accessibleInterface(owner); }

    QAccessible::Id owner;
    QPointer<RowList> list;
    int index;
    int part;
};

/// One row, in view or not, with its parts. It holds an index instead of a record, so it can outlive any change of the
/// list.
class AccessibleRow : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    AccessibleRow(RowList* rows, int row) : list(rows), index(row) {}
    ~AccessibleRow() override
    {
        for (const QAccessible::Id part : parts)
            QAccessible::deleteAccessibleInterface(part);
    }

    bool isValid() const override { return list && index < list->rowCount(); }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return list ? list->window()->windowHandle() : nullptr; }
    QAccessibleInterface* parent() const override { return QAccessible::queryAccessibleInterface(list); }
    QAccessibleInterface* child(int part) const override
    {
        if (part < 0 || part >= childCount())
            return nullptr;
        while (int(parts.size()) <= part) {
            auto* self = const_cast<AccessibleRow*>(this);
            auto* made = new AccessiblePart(self, list, index, int(parts.size()));
            // The toolkit owns it now. NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks)
            parts.push_back(QAccessible::registerAccessibleInterface(made));
        }
        return QAccessible::accessibleInterface(parts[std::size_t(part)]);
    }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return isValid() ? int(list->description(index).size()) : 0; }
    int indexOfChild(const QAccessibleInterface* child) const override
    {
        for (std::size_t part = 0; part < parts.size(); ++part) {
            if (QAccessible::accessibleInterface(parts[part]) == child)
                return int(part);
        }
        return -1;
    }
    QAccessible::Role role() const override { return QAccessible::ListItem; }
    void setText(QAccessible::Text, const QString&) override {}
    QString text(QAccessible::Text kind) const override
    {
        return isValid() && kind == QAccessible::Name ? list->description(index).join(QStringLiteral(", ")) : QString();
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
    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this) : nullptr;
    }
    QStringList actionNames() const override { return {setFocusAction()}; }
    void doAction(const QString& action) override
    {
        if (!isValid() || action != setFocusAction())
            return;
        list->setFocus();
        list->setCurrentRow(index);
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

private:
    QPointer<RowList> list;
    int index;
    mutable std::vector<QAccessible::Id> parts; ///< Made when they are first requested.
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

} // namespace

QAccessibleInterface* makeAccessible(RowList* list)
{
    return new AccessibleRowList(list);
}

} // namespace reelkeep
