#include "UI/View.h"

#include "UI/AdaptiveGridLayout.h"
#include "UI/Box.h"
#include "UI/FocusHome.h"
#include "UI/RecentMove.h"
#include "UI/StackLayout.h"

#include <algorithm>
#include <iterator>

namespace reelkeep {

namespace {

/// A box as wide as it is high, scaled with the text in it.
class Disc : public Box {
public:
    explicit Disc(int designDiameter) : diameter(designDiameter)
    {
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    }
    QSize sizeHint() const override { return {scaledWithFont(diameter), scaledWithFont(diameter)}; }
    QSize minimumSizeHint() const override { return sizeHint(); }
    bool hasHeightForWidth() const override { return false; }

private:
    int diameter;
};

/// Stands for a spacer until it is put into a stack.
class SpacerMark : public QWidget {};

Arrangement arrangementOf(const Stack& stack, Qt::Orientation axis)
{
    return {.axis = axis, .spacing = stack.spacing, .alignment = stack.alignment};
}

std::vector<Update> takeUpdates(std::vector<View>& children)
{
    std::vector<Update> updates;
    for (View& child : children)
        std::move(child.updates.begin(), child.updates.end(), std::back_inserter(updates));
    return updates;
}

void addChildren(StackLayout& layout, const std::vector<View>& children)
{
    for (const View& child : children) {
        if (dynamic_cast<SpacerMark*>(child.widget)) {
            layout.addSpacer();
            delete child.widget;
        } else {
            layout.addWidget(child.widget);
        }
    }
}

void setPlate(View& view, Box* box, const PlateSource& plate)
{
    box->setPlate(plate.constant);
    if (plate.read)
        view.updates.emplace_back([box, read = plate.read] { box->setPlate(read()); });
}

void setName(View& view, const TextSource& name)
{
    view.widget->setAccessibleName(name.constant);
    if (name.read) {
        view.updates.emplace_back([named = view.widget, read = name.read] {
            if (const QString text = read(); text != named->accessibleName())
                named->setAccessibleName(text);
        });
    }
}

View makeStack(std::vector<Arrangement> arrangements, const Stack& stack, std::vector<View> children,
               Box* box = new Box)
{
    auto* layout = new StackLayout(std::move(arrangements));
    layout->setContentsMargins(stack.padding.leading, stack.padding.top, stack.padding.trailing, stack.padding.bottom);
    layout->setFillsWidth(stack.fillsWidth);
    layout->setMaximumContentWidth(stack.maximumContentWidth);
    layout->setMinimumContentHeight(stack.minimumHeight);
    box->setLayout(layout);
    addChildren(*layout, children);
    View view{box, takeUpdates(children)};
    setPlate(view, box, stack.plate);
    if (stack.name)
        setName(view, *stack.name);
    return view;
}

} // namespace

QString displayText(std::string_view bytes)
{
    return QString::fromUtf8(bytes.data(), qsizetype(bytes.size()));
}

View View::visible(Condition condition) &&
{
    // Before the updates of its contents: what is hidden need not be laid out.
    updates.insert(updates.begin(), [shown = widget, condition = std::move(condition)] {
        if (const bool now = condition(); now != !shown->isHidden())
            setVisibleKeepingFocus(*shown, now);
    });
    return std::move(*this);
}

View View::enabled(Condition condition) &&
{
    updates.emplace_back([target = widget, condition = std::move(condition)] {
        if (const bool now = condition(); now != target->isEnabled())
            setEnabledKeepingFocus(*target, now);
    });
    return std::move(*this);
}

View View::accessibleDescription(const QString& description) &&
{
    widget->setAccessibleDescription(description);
    return std::move(*this);
}

View View::named(const char* objectName) &&
{
    widget->setObjectName(QString::fromLatin1(objectName));
    return std::move(*this);
}

void View::refresh() const
{
    for (const Update& update : updates)
        update();
}

View VStack(const Stack& stack, std::vector<View> children)
{
    return makeStack({arrangementOf(stack, Qt::Vertical)}, stack, std::move(children));
}

View HStack(const Stack& stack, std::vector<View> children)
{
    std::vector<Arrangement> arrangements = {arrangementOf(stack, Qt::Horizontal)};
    if (stack.staysReadable) {
        arrangements.front().room = Arrangement::Room::readable;
        arrangements.push_back({.axis = Qt::Vertical});
    }
    return makeStack(std::move(arrangements), stack, std::move(children));
}

View ViewThatFits(const Stack& sideBySide, const Stack& stacked, std::vector<View> children)
{
    return makeStack({arrangementOf(sideBySide, Qt::Horizontal), arrangementOf(stacked, Qt::Vertical)}, sideBySide,
                     std::move(children));
}

View AdaptiveGrid(int minimum, int spacing, std::vector<View> children)
{
    auto* box = new Box;
    auto* layout = new AdaptiveGridLayout(minimum, spacing);
    box->setLayout(layout);
    for (const View& child : children)
        layout->addWidget(child.widget);
    return {box, takeUpdates(children)};
}

View Circle(int diameter, PlateSource plate, std::vector<View> children)
{
    const Stack stack{
        .alignment = Qt::AlignCenter, .plate = std::move(plate), .fillsWidth = true, .minimumHeight = diameter};
    return makeStack({arrangementOf(stack, Qt::Vertical)}, stack, std::move(children), new Disc(diameter));
}

View Spacer()
{
    return {new SpacerMark, {}};
}

void arrangeElements(QWidget& column, const std::vector<View>& elements, const std::vector<View>& gone)
{
    for (const View& element : gone) {
        setVisibleKeepingFocus(*element.widget, false);
        column.layout()->removeWidget(element.widget);
    }
    if (FocusHome* home = FocusHome::around(column)) {
        for (const View& element : gone)
            home->passFocusOn(*element.widget, column);
    }
    // Deleted later: the refresh may come from a button inside the element that goes.
    for (const View& element : gone)
        element.widget->deleteLater();
    for (const View& element : elements) {
        column.layout()->removeWidget(element.widget);
        column.layout()->addWidget(element.widget);
        element.widget->raise(); // The order of siblings is that of the Tab key and of screen readers.
        if (!gone.empty())
            markMoved(*element.widget);
    }
}

void restoreTabOrder(QWidget* root)
{
    QWidget* before = nullptr;
    for (QWidget* widget : root->findChildren<QWidget*>()) {
        if (!(widget->focusPolicy() & Qt::TabFocus) || widget->window() != root->window())
            continue;
        if (before)
            QWidget::setTabOrder(before, widget);
        before = widget;
    }
}

} // namespace reelkeep
