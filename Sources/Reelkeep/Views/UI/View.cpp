#include "UI/View.h"

#include "UI/AdaptiveGridLayout.h"
#include "UI/Announcer.h"
#include "UI/Box.h"
#include "UI/Controls.h"
#include "UI/StackLayout.h"
#include "UI/SymbolWidget.h"

#include <QSignalBlocker>

#include <algorithm>
#include <iterator>

namespace reelkeep {

namespace {

/// A box as wide as it is high, which grows with the text in it.
class Disc : public Box {
public:
    explicit Disc(int designDiameter) : diameter(designDiameter)
    {
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    }
    QSize sizeHint() const override { return {besideText(diameter), besideText(diameter)}; }
    QSize minimumSizeHint() const override { return sizeHint(); }
    bool hasHeightForWidth() const override { return false; }

private:
    int diameter;
};

/// Room between elements: a mark that a stack turns into a spacer.
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

View makeStack(std::vector<Arrangement> arrangements, const Stack& stack, std::vector<View> children,
               Box* box = new Box)
{
    auto* layout = new StackLayout(std::move(arrangements));
    layout->setContentsMargins(stack.padding.leading, stack.padding.top, stack.padding.trailing, stack.padding.bottom);
    layout->setFillsWidth(stack.fillsWidth);
    layout->setMaximumContentWidth(stack.maximumContentWidth);
    layout->setMinimumContentHeight(stack.minimumHeight);
    box->setLayout(layout);
    box->setBackground(stack.background.initial);
    for (const View& child : children) {
        if (dynamic_cast<SpacerMark*>(child.widget)) {
            layout->addSpacer();
            delete child.widget;
        } else {
            layout->addWidget(child.widget);
        }
    }
    View view{box, takeUpdates(children)};
    if (stack.background.read)
        view.updates.emplace_back([box, read = stack.background.read] { box->setBackground(read()); });
    return view;
}

template <class Widget>
View control(Widget* widget, TextSource label)
{
    View view{widget, {}};
    if (label.isConstant) {
        widget->setText(label.read());
    } else {
        view.updates.emplace_back([widget, read = std::move(label.read)] {
            if (const QString text = read(); text != widget->text())
                widget->setText(text);
        });
    }
    return view;
}

View button(TextSource label, Action action, Button* widget)
{
    QObject::connect(widget, &QPushButton::clicked, widget, std::move(action));
    return control(widget, std::move(label));
}

} // namespace

QString displayText(std::string_view bytes)
{
    return QString::fromUtf8(bytes.data(), qsizetype(bytes.size()));
}

View View::visible(Condition condition) &&
{
    // Before its contents: what is not shown need not be laid out.
    updates.insert(updates.begin(), [shown = widget, condition = std::move(condition)] {
        if (const bool now = condition(); now != !shown->isHidden())
            shown->setVisible(now);
    });
    return std::move(*this);
}

View View::enabled(Condition condition) &&
{
    updates.emplace_back(
        [enabledWidget = widget, condition = std::move(condition)] { enabledWidget->setEnabled(condition()); });
    return std::move(*this);
}

View View::accessibleName(TextSource name) &&
{
    if (name.isConstant) {
        widget->setAccessibleName(name.read());
    } else {
        updates.emplace_back([target = widget, read = std::move(name.read)] {
            if (const QString text = read(); text != target->accessibleName())
                target->setAccessibleName(text);
        });
    }
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

View Spacer()
{
    return {new SpacerMark, {}};
}

TextView TextView::style(const TypeStyle& style) &&
{
    text()->setStyle(style);
    return std::move(*this);
}

TextView TextView::font(double size, double lineHeight, QFont::Weight weight) &&
{
    return std::move(*this).style({.size = size, .lineHeight = lineHeight, .weight = weight});
}

TextView TextView::monospacedCaption() &&
{
    return std::move(*this).style(type::monospacedCaption);
}

TextView TextView::secondary() &&
{
    text()->setColor({TextColor::Level::secondary, {}});
    return std::move(*this);
}

TextView TextView::tertiary() &&
{
    text()->setColor({TextColor::Level::tertiary, {}});
    return std::move(*this);
}

TextView TextView::color(const QColor& accent) &&
{
    text()->setColor({TextColor::Level::accent, accent});
    return std::move(*this);
}

TextView TextView::colorWhen(Condition condition, const QColor& accent) &&
{
    updates.emplace_back([target = text(), condition = std::move(condition), accent] {
        target->setColor(condition() ? TextColor{TextColor::Level::accent, accent}
                                     : TextColor{TextColor::Level::secondary, {}});
    });
    return std::move(*this);
}

TextView TextView::centered() &&
{
    text()->setAlignment(Qt::AlignHCenter);
    return std::move(*this);
}

TextView TextView::trailing() &&
{
    text()->setAlignment(Qt::AlignRight);
    return std::move(*this);
}

TextView TextView::lineLimit(int lines) &&
{
    text()->setLineLimit(lines);
    return std::move(*this);
}

TextView TextView::maximumWidth(int points) &&
{
    text()->setMaximumTextWidth(points);
    return std::move(*this);
}

TextView TextView::selectable(Condition condition) &&
{
    updates.emplace_back([target = text(), condition = std::move(condition)] { target->setSelectable(condition()); });
    return std::move(*this);
}

TextView TextView::announced() &&
{
    auto* announcer = new Announcer(text());
    updates.emplace_back([announcer, target = text()] { announcer->announce(target->text()); });
    return std::move(*this);
}

TextView TextView::selectableByMouse() &&
{
    text()->setSelectable(true);
    text()->setFocusPolicy(Qt::ClickFocus);
    return std::move(*this);
}

TextView Text(TextSource text)
{
    return {control(new TextWidget, std::move(text))};
}

View Symbol(const char* name, double width, const TextColor& color, int frame)
{
    auto* symbol = new SymbolWidget(QString::fromLatin1(name), width, color);
    symbol->setFrameWidth(frame);
    return {symbol, {}};
}

View Tile(const char* symbol, double symbolWidth, const Background& ground)
{
    return {new IconTile(QString::fromLatin1(symbol), symbolWidth, ground), {}};
}

View Circle(int diameter, BackgroundSource ground, std::vector<View> content)
{
    constexpr double wholly = 99;
    ground.initial.radius = wholly;
    if (ground.read) {
        ground.read = [read = std::move(ground.read)] {
            Background round = read();
            round.radius = wholly;
            return round;
        };
    }
    const Stack stack{
        .alignment = Qt::AlignCenter, .background = std::move(ground), .fillsWidth = true, .minimumHeight = diameter};
    return makeStack({arrangementOf(stack, Qt::Vertical)}, stack, std::move(content), new Disc(diameter));
}

View PushButton(TextSource label, Action action)
{
    return button(std::move(label), std::move(action), new Button(QString()));
}

View ProminentButton(TextSource label, const QColor& tint, Action action)
{
    auto* widget = new Button(QString());
    widget->setTint(tint);
    return button(std::move(label), std::move(action), widget);
}

View LargeButton(TextSource label, const char* symbol, const QColor& tint, Action action)
{
    auto* widget = new Button(QString());
    widget->setTint(tint);
    widget->setLarge(QString::fromLatin1(symbol));
    return button(std::move(label), std::move(action), widget);
}

View Toggle(const QString& label, Condition isOn, std::function<void(bool)> write)
{
    auto* toggle = new Switch(label);
    // Not `clicked`: assistive technology changes the switch without a click. What a refresh sets is kept silent.
    QObject::connect(toggle, &QCheckBox::toggled, toggle, std::move(write));
    return {toggle, {[toggle, isOn = std::move(isOn)] {
                if (const bool now = isOn(); now != toggle->isChecked()) {
                    const QSignalBlocker silence(toggle);
                    toggle->setChecked(now);
                    toggle->update();
                }
            }}};
}

View Picker(const QString& label, std::function<std::vector<PickerEntry>()> entries,
            std::function<std::string()> selection, std::function<void(const std::string&)> write)
{
    auto* popUp = new PopUp;
    popUp->setAccessibleName(label);
    auto shown = std::make_shared<std::vector<PickerEntry>>();
    // `activated` is the user's hand alone; index changes also come from filling the menu.
    QObject::connect(popUp, &QComboBox::activated, popUp, [shown, write = std::move(write)](int index) {
        const std::string tag = shown->at(std::size_t(index)).tag;
        write(tag);
    });
    View view = HStack({.alignment = Qt::AlignCenter, .staysReadable = true}, {Text(label).lineLimit(1), {popUp, {}}});
    view.updates.emplace_back([popUp, shown, entries = std::move(entries), selection = std::move(selection)] {
        if (std::vector<PickerEntry> now = entries(); now != *shown) {
            popUp->clear();
            for (const PickerEntry& entry : now)
                popUp->addItem(entry.text);
            *shown = std::move(now);
            popUp->updateGeometry();
        }
        const std::string tag = selection();
        const auto selected =
            std::find_if(shown->begin(), shown->end(), [&tag](const PickerEntry& entry) { return entry.tag == tag; });
        const int index = selected == shown->end() ? -1 : int(selected - shown->begin());
        if (popUp->currentIndex() != index)
            popUp->setCurrentIndex(index);
    });
    return view;
}

View ProgressBar(const QString& name, std::function<double()> value)
{
    auto* bar = new Bar;
    bar->setAccessibleName(name);
    return {bar, {[bar, value = std::move(value)] { bar->setFraction(value()); }}};
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
