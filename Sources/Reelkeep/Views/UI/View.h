#pragma once

#include "UI/Appearance.h"
#include "UI/RowList.h"
#include "UI/TextWidget.h"

#include <QString>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

/// The vocabulary that the window's content is written in. Each function makes one element; containers take their
/// children in reading order. What is given as a constant is set once, what is given as a lambda is read again at every
/// refresh. Everything here runs on the interface thread.
namespace reelkeep {

using Update = std::function<void()>;
using Condition = std::function<bool()>;
using Action = std::function<void()>;

/// Bytes as the user reads them: what is not valid text becomes a replacement character.
QString displayText(std::string_view bytes);

/// A text that is either constant or read at every refresh.
class TextSource {
public:
    TextSource(const QString& constant) : read([constant] { return constant; }), isConstant(true) {}
    TextSource(const char* constant) : TextSource(QString::fromUtf8(constant)) {}
    template <class Read>
    requires std::is_invocable_v<Read> TextSource(Read reader)
        : read([reader = std::move(reader)]() -> QString {
              if constexpr (std::is_convertible_v<std::invoke_result_t<Read>, QString>)
                  return reader();
              else
                  return displayText(std::string_view(reader()));
          })
    {
    }

    std::function<QString()> read;
    bool isConstant = false;
};

/// The ground of a box, either constant or read at every refresh.
class BackgroundSource {
public:
    BackgroundSource(const Background& constant = {}) : initial(constant) {}
    template <class Read>
    requires std::is_invocable_r_v<Background, Read> BackgroundSource(Read reader) : read(std::move(reader)) {}

    Background initial;
    std::function<Background()> read; ///< Absent for a constant.
};

/// An element of the window: a widget, and what has to be done to it, and to all inside it, at a refresh.
struct View {
    QWidget* widget = nullptr;
    std::vector<Update> updates;

    View visible(Condition condition) &&;
    View enabled(Condition condition) &&;
    /// What a screen reader calls the element.
    View accessibleName(TextSource name) &&;
    /// What a screen reader adds to the name.
    View accessibleDescription(const QString& description) &&;
    View named(const char* objectName) &&;

    /// Brings the element, and all inside it, up to date.
    void refresh() const;
};

struct Padding {
    int leading = 0;
    int top = 0;
    int trailing = 0;
    int bottom = 0;

    static Padding all(int points) { return {points, points, points, points}; }
    static Padding symmetric(int horizontal, int vertical) { return {horizontal, vertical, horizontal, vertical}; }
};

struct Stack {
    int spacing = 8;
    Qt::AlignmentFlag alignment = Qt::AlignLeading; ///< Across the stack's axis.
    /// A row becomes a column rather than that a word in it is broken inside or the label of a control wraps.
    bool staysReadable = false;
    Padding padding = {};
    BackgroundSource background = {};
    bool fillsWidth = false;
    int minimumHeight = 0;
    int maximumContentWidth = QWIDGETSIZE_MAX;
};

View VStack(const Stack& stack, std::vector<View> children);
View HStack(const Stack& stack, std::vector<View> children);
/// The first of two arrangements of the same children whose ideal width fits: side by side, or one below the other.
View ViewThatFits(const Stack& sideBySide, const Stack& stacked, std::vector<View> children);
/// As many columns of at least `minimum` as fit.
View AdaptiveGrid(int minimum, int spacing, std::vector<View> children);
/// Room that pushes its neighbours apart.
View Spacer();

/// A text; its modifiers may be chained in any order.
struct TextView : View {
    TextView style(const TypeStyle& style) &&;
    TextView font(double size, double lineHeight, QFont::Weight weight) &&;
    TextView headline() && { return std::move(*this).style(type::headline); }
    TextView title3() && { return std::move(*this).style(type::title3); }
    TextView caption() && { return std::move(*this).style(type::caption); }
    /// For paths: fixed width.
    TextView monospacedCaption() &&;
    TextView secondary() &&;
    TextView tertiary() &&;
    TextView color(const QColor& accent) &&;
    /// An accent or secondary, as a condition says at each refresh.
    TextView colorWhen(Condition condition, const QColor& accent) &&;
    TextView centered() &&;
    TextView trailing() &&;
    TextView lineLimit(int lines) &&;
    TextView maximumWidth(int points) &&;
    TextView selectable(Condition condition = [] { return true; }) &&;
    /// Its changes are told to screen readers, not faster than a person can listen.
    TextView announced() &&;
    /// Selectable without being a stop of the Tab key: for the rows of a list, which is one stop.
    TextView selectableByMouse() &&;

private:
    TextWidget* text() const { return static_cast<TextWidget*>(widget); }
};
TextView Text(TextSource text);

/// A symbol in a colour; `frame` is the width kept for it where that is more than its own.
View Symbol(const char* name, double width, const TextColor& color, int frame = 0);
View Tile(const char* symbol, double symbolWidth, const Background& ground);
/// A filled circle of that diameter, around what it holds; it grows with the user's font. The ground's radius is its
/// own.
View Circle(int diameter, BackgroundSource ground, std::vector<View> content = {});

View PushButton(TextSource label, Action action);
View ProminentButton(TextSource label, const QColor& tint, Action action);
View LargeButton(TextSource label, const char* symbol, const QColor& tint, Action action);
/// A switch that shows `isOn` and writes what the user's hand chose.
View Toggle(const QString& label, Condition isOn, std::function<void(bool)> write);

struct PickerEntry {
    std::string tag; ///< What the choice is known by.
    QString text;

    bool operator==(const PickerEntry&) const = default;
};
/// A pop-up menu with its label before it. It shows the entry whose tag is `selection`, or nothing; `write` gets the
/// tag of what the user picked.
View Picker(const QString& label, std::function<std::vector<PickerEntry>()> entries,
            std::function<std::string()> selection, std::function<void(const std::string&)> write);

/// A determinate bar, 0.0 to 1.0.
View ProgressBar(const QString& name, std::function<double()> value);

/// Leads the Tab key through everything below `root` in reading order, also after elements came and went.
void restoreTabOrder(QWidget* root);

/// One element per item, made anew only when the items change.
template <class Item>
View ForEach(int spacing, std::function<std::vector<Item>()> items, std::function<View(const Item&)> build);

/// A scrolling list that builds only the rows in view. When it is given other items it stays at the same ones, known by
/// their ids, as long as they are still about there.
template <class Items>
struct ListContent {
    using Item = std::remove_cvref_t<decltype(std::declval<const Items&>()[0])>;
    std::function<Items()> items; ///< Immutable, and shared by its copies instead of copied.
    std::function<std::string_view(const Item&)> id;
    std::function<View(std::function<const Item&()>)> row;
    std::function<QString(const Item&)> description;
    std::function<QString(const Item&)> copiedText;
};
template <class Items>
View List(const QString& name, ListContent<Items> content);

} // namespace reelkeep

#include "UI/ViewCollections.h"
