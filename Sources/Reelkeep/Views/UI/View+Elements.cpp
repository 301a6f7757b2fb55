#include "UI/View.h"

#include "UI/Announcer.h"
#include "UI/Controls.h"
#include "UI/PopUp.h"
#include "UI/SymbolWidget.h"

#include <QAbstractItemView>
#include <QTextDocument>

#include <algorithm>
#include <memory>

namespace reelkeep {

namespace {

/// A view of a widget that shows a text.
template <class Widget>
View labelled(Widget* widget, TextSource text)
{
    View view{widget, {}};
    widget->setText(text.constant);
    if (text.read)
        view.updates.emplace_back([widget, read = std::move(text.read)] { widget->setText(read()); });
    return view;
}

View button(TextSource label, Action action, Button* widget)
{
    QObject::connect(widget, &QPushButton::clicked, widget, std::move(action));
    return labelled(widget, std::move(label));
}

} // namespace

TextView Text(TextSource text)
{
    return {labelled(new TextWidget, std::move(text))};
}

TextView TextView::style(const TypeStyle& style) &&
{
    text()->setStyle(style);
    return std::move(*this);
}

TextView TextView::heading() &&
{
    text()->setHeading(true);
    return std::move(*this);
}

TextView TextView::secondary() &&
{
    text()->setColor({TextColor::Level::secondary});
    return std::move(*this);
}

TextView TextView::tertiary() &&
{
    text()->setColor({TextColor::Level::tertiary});
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
                                     : TextColor{TextColor::Level::secondary});
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

SymbolView Symbol(const Glyph& glyph)
{
    return {{new SymbolWidget(glyph), {}}};
}

SymbolView SymbolView::secondary() &&
{
    static_cast<SymbolWidget*>(widget)->setColor({TextColor::Level::secondary});
    return std::move(*this);
}

SymbolView SymbolView::color(const QColor& accent) &&
{
    static_cast<SymbolWidget*>(widget)->setColor({TextColor::Level::accent, accent});
    return std::move(*this);
}

View Tile(const Glyph& glyph, const Plate& plate)
{
    return {new IconTile(glyph, plate.background), {}};
}

View PushButton(TextSource label, Action action)
{
    return button(std::move(label), std::move(action), new Button);
}

View ProminentButton(TextSource label, const QColor& tint, Action action)
{
    auto* widget = new Button;
    widget->setTint(tint);
    return button(std::move(label), std::move(action), widget);
}

View LargeButton(TextSource label, const Glyph& glyph, const QColor& tint, Action action)
{
    auto* widget = new Button;
    widget->setTint(tint);
    widget->setLarge(glyph);
    return button(std::move(label), std::move(action), widget);
}

View Toggle(const QString& label, Condition isOn, std::function<void(bool)> write)
{
    auto* toggle = new Switch(label);
    // Emitted for the user's choices only; `toggled` also comes from a refresh.
    QObject::connect(toggle, &QCheckBox::clicked, toggle, std::move(write));
    return {toggle, {[toggle, isOn = std::move(isOn)] { toggle->setChecked(isOn()); }}};
}

View Picker(const QString& label, std::function<std::vector<PickerEntry>()> entries,
            std::function<std::string()> selection, std::function<void(const std::string&)> write)
{
    auto* popUp = new PopUp;
    popUp->setAccessibleName(label);
    popUp->view()->setAccessibleName(label);
    auto shown = std::make_shared<std::vector<PickerEntry>>();
    // `activated` is emitted for the user's choices only; index changes also come from filling the menu.
    QObject::connect(popUp, &QComboBox::activated, popUp, [shown, write = std::move(write)](int index) {
        const std::string tag = shown->at(std::size_t(index)).tag;
        write(tag);
    });
    View view =
        HStack({.alignment = Qt::AlignCenter, .staysReadable = true}, Text(label).lineLimit(1), View{popUp, {}});
    view.updates.emplace_back([popUp, shown, entries = std::move(entries), selection = std::move(selection)] {
        if (std::vector<PickerEntry> now = entries(); now != *shown) {
            popUp->clear();
            for (const PickerEntry& entry : now) {
                popUp->addItem(entry.text);
                const int index = popUp->count() - 1;
                popUp->setItemData(index, entry.detail, Qt::AccessibleDescriptionRole);
                // A name may look like markup.
                popUp->setItemData(index, Qt::convertFromPlainText(entry.detail, Qt::WhiteSpaceNormal),
                                   Qt::ToolTipRole);
            }
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

} // namespace reelkeep
