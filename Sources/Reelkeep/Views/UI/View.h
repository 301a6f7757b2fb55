#pragma once

#include "UI/Design.h"
#include "UI/RowList.h"
#include "UI/TextWidget.h"

#include <QString>

#include <concepts>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

/// The vocabulary that the window's content is written in. Each function makes one element; containers take their
/// children in reading order. A constant is set once, a lambda is read at every refresh. Everything here runs on the
/// interface thread.
namespace reelkeep {

using Update = std::function<void()>;
using Condition = std::function<bool()>;
using Action = std::function<void()>;

/// Bytes as the user reads them: invalid UTF-8 becomes a replacement character.
QString displayText(std::string_view bytes);

/// A text that is either constant or read at every refresh.
class TextSource {
public:
    TextSource(const QString& text) : constant(text) {}
    TextSource(const char* text) : constant(QString::fromUtf8(text)) {}
    template <std::invocable Read>
    TextSource(Read reader)
        : read([reader = std::move(reader)]() -> QString {
              if constexpr (std::is_convertible_v<std::invoke_result_t<Read>, QString>)
                  return reader();
              else
                  return displayText(std::string_view(reader()));
          })
    {
    }

    QString constant;
    std::function<QString()> read; ///< Absent for a constant.
};

/// A plate that is either constant or read at every refresh.
class PlateSource {
public:
    PlateSource(const Plate& plate = {}) : constant(plate) {}
    template <std::invocable Read>
    PlateSource(Read reader) : read(std::move(reader))
    {
    }

    Plate constant;
    std::function<Plate()> read; ///< Absent for a constant.
};

/// An element of the window: a widget, and the updates of it and of everything inside it.
struct View {
    QWidget* widget = nullptr;
    std::vector<Update> updates;

    View visible(Condition condition) &&;
    View enabled(Condition condition) &&;
    /// What a screen reader adds to the name.
    View accessibleDescription(const QString& description) &&;
    View named(const char* objectName) &&;

    /// Updates the element and everything inside it.
    void refresh() const;
};

struct Stack {
    int spacing = 8;
    Qt::AlignmentFlag alignment = Qt::AlignLeading; ///< Across the stack's axis.
    /// A row becomes a column before a word is broken inside it or the label of a control wraps.
    bool staysReadable = false;
    Padding padding = {}; ///< For a stack without a plate: a plate has its own.
    PlateSource plate = {};
    bool fillsWidth = false;
    int minimumHeight = 0;
    int maximumContentWidth = QWIDGETSIZE_MAX;
    std::optional<TextSource> name = {}; ///< What a screen reader calls the group.
};

View VStack(const Stack& stack, std::vector<View> children);
View HStack(const Stack& stack, std::vector<View> children);
/// The first of two arrangements of the same children whose ideal width fits: side by side, or one below the other.
View ViewThatFits(const Stack& sideBySide, const Stack& stacked, std::vector<View> children);
/// As many columns of at least `minimum` as fit.
View AdaptiveGrid(int minimum, int spacing, std::vector<View> children);
/// A disc of that diameter around its children, on a plate that is a capsule. It is scaled with the user's font.
View Circle(int diameter, PlateSource plate, std::vector<View> children = {});
/// Pushes its neighbours apart.
View Spacer();

/// A text; its modifiers may be chained in any order.
struct TextView : View {
    TextView style(const TypeStyle& style) &&;
    TextView headline() && { return std::move(*this).style(type::headline); }
    /// A title: a heading in its style.
    TextView title3() && { return std::move(*this).style(type::title3).heading(); }
    TextView caption() && { return std::move(*this).style(type::caption); }
    TextView monospacedCaption() && { return std::move(*this).style(type::monospacedCaption); }
    /// Screen readers jump from heading to heading.
    TextView heading() &&;
    TextView secondary() &&;
    TextView tertiary() &&;
    TextView color(const QColor& accent) &&;
    /// The accent while the condition holds, secondary otherwise.
    TextView colorWhen(Condition condition, const QColor& accent) &&;
    TextView centered() &&;
    TextView trailing() &&;
    TextView lineLimit(int lines) &&;
    TextView maximumWidth(int points) &&;
    TextView selectable(Condition condition = [] { return true; }) &&;
    /// Screen readers announce its changes, no faster than a person can listen.
    TextView announced() &&;
    /// Selectable, but no stop of the Tab key: for the rows of a list, which is one stop as a whole.
    TextView selectableByMouse() &&;

private:
    TextWidget* text() const { return static_cast<TextWidget*>(widget); }
};
TextView Text(TextSource text);

struct SymbolView : View {
    SymbolView secondary() &&;
    SymbolView color(const QColor& accent) &&;
};
SymbolView Symbol(const Glyph& glyph);
/// A white symbol on a square plate.
View Tile(const Glyph& glyph, const Plate& plate);

View PushButton(TextSource label, Action action);
View ProminentButton(TextSource label, const QColor& tint, Action action);
View LargeButton(TextSource label, const Glyph& glyph, const QColor& tint, Action action);
/// A switch that shows `isOn`; `write` is called only when the user turns it.
View Toggle(const QString& label, Condition isOn, std::function<void(bool)> write);

struct PickerEntry {
    std::string tag; ///< Identifies the choice.
    QString text;
    QString detail = {}; ///< The tool tip in the open list: two entries may have the same text.

    bool operator==(const PickerEntry&) const = default;
};
/// A pop-up menu after its label. It shows the entry whose tag is `selection`, or nothing; `write` gets the tag that
/// the user picked.
View Picker(const QString& label, std::function<std::vector<PickerEntry>()> entries,
            std::function<std::string()> selection, std::function<void(const std::string&)> write);

/// A determinate bar, 0.0 to 1.0.
View ProgressBar(const QString& name, std::function<double()> value);

/// Makes the Tab key go through everything below `root` in reading order. To be called again when elements change.
void restoreTabOrder(QWidget* root);

/// One element per item, as long as the item is there: an element keeps its widgets, and the focus inside it, wherever
/// its item is in the list now. The focus of one that goes passes to the next control of its kind, and the buttons
/// of the others ignore the mouse and the keyboard for the duration of a double click: its second press was not meant
/// for them.
template <class Item>
View ForEach(int spacing, std::function<std::vector<Item>()> items, std::function<View(const Item&)> build);

/// For ForEach: puts elements into a column in this order, and takes out those that are gone.
void arrangeElements(QWidget& column, const std::vector<View>& elements, const std::vector<View>& gone);

/// A scrolling list that builds only the rows in view. When it is given other items it stays at the same ones, known by
/// their ids, as long as they are still nearby.
template <class Items>
struct ListContent {
    using Item = std::remove_cvref_t<decltype(std::declval<const Items&>()[0])>;
    std::function<Items()> items; ///< Immutable, and shared by its copies instead of copied.
    std::function<std::string_view(const Item&)> id;
    std::function<View(std::function<const Item&()>)> row;
    std::function<QStringList(const Item&)> description; ///< The parts that a screen reader reads.
    std::function<QString(const Item&)> copiedText;
};
template <class Items>
View List(const QString& name, ListContent<Items> content);

} // namespace reelkeep

#include "UI/ViewCollections.h"
