#pragma once

// The templates of the vocabulary; included by View.h alone.

#include "UI/View.h"

#include <algorithm>
#include <memory>

namespace reelkeep {

template <std::convertible_to<View>... Children>
std::vector<View> inOrder(Children&&... children)
{
    std::vector<View> views;
    views.reserve(sizeof...(children));
    (views.push_back(std::forward<Children>(children)), ...);
    return views;
}

template <std::convertible_to<View>... Children>
View VStack(const Stack& stack, Children&&... children)
{
    return VStack(stack, inOrder(std::forward<Children>(children)...));
}

template <std::convertible_to<View>... Children>
View HStack(const Stack& stack, Children&&... children)
{
    return HStack(stack, inOrder(std::forward<Children>(children)...));
}

template <std::convertible_to<View>... Children>
View ViewThatFits(const Stack& sideBySide, const Stack& stacked, Children&&... children)
{
    return ViewThatFits(sideBySide, stacked, inOrder(std::forward<Children>(children)...));
}

template <std::convertible_to<View>... Children>
View AdaptiveGrid(int minimum, int spacing, Children&&... children)
{
    return AdaptiveGrid(minimum, spacing, inOrder(std::forward<Children>(children)...));
}

template <class Item>
View ForEach(int spacing, std::function<std::vector<Item>()> items, std::function<View(const Item&)> build)
{
    struct Shown {
        std::vector<Item> items;
        std::vector<View> views;
    };
    View column = VStack({.spacing = spacing}, {});
    auto shown = std::make_shared<Shown>();
    column.updates.emplace_back([widget = column.widget, shown, items = std::move(items), build = std::move(build)] {
        std::vector<Item> now = items();
        const bool isChanged = now != shown->items;
        std::vector<View> gone;
        if (isChanged) {
            Shown before = std::exchange(*shown, {});
            for (const Item& item : now) {
                const auto known = std::find(before.items.begin(), before.items.end(), item);
                if (known == before.items.end()) {
                    shown->views.push_back(build(item));
                } else {
                    const auto view = before.views.begin() + (known - before.items.begin());
                    shown->views.push_back(std::move(*view));
                    before.views.erase(view);
                    before.items.erase(known);
                }
            }
            shown->items = std::move(now);
            gone = std::move(before.views);
        }
        for (const View& view : shown->views)
            view.refresh();
        if (isChanged)
            arrangeElements(*widget, shown->views, gone);
    });
    return column;
}

/// The index nearest to `index` for which `isIt`, or -1. Looks no further than takes a fraction of a frame.
template <class Predicate>
int nearestIndex(int index, int count, const Predicate& isIt)
{
    constexpr int reach = 1000;
    for (int distance = 0; distance <= reach; ++distance) {
        for (const int candidate : {index - distance, index + distance}) {
            if (candidate >= 0 && candidate < count && isIt(std::size_t(candidate)))
                return candidate;
        }
    }
    return -1;
}

template <class Items>
View List(const QString& name, ListContent<Items> content)
{
    using Item = typename ListContent<Items>::Item;
    auto shown = std::make_shared<Items>();
    const auto makeRow = [shown, build = content.row] {
        auto index = std::make_shared<std::size_t>(0);
        View view = build([shown, index]() -> const Item& { return (*shown)[*index]; });
        return RowList::Row{view.widget, [view, index](std::size_t row) {
                                *index = row;
                                view.refresh();
                            }};
    };
    auto* list = new RowList(
        {.makeRow = makeRow,
         .description = [shown,
                         describe = content.description](std::size_t index) { return describe((*shown)[index]); },
         .copiedText = [shown, copied = content.copiedText](std::size_t index) { return copied((*shown)[index]); }});
    list->setAccessibleName(name);
    return {list, {[list, shown, content = std::move(content)] {
                Items now = content.items();
                const bool isSameStorage = now.size() == shown->size() && (now.size() == 0 || &now[0] == &(*shown)[0]);
                if (isSameStorage)
                    return;
                const Items before = std::exchange(*shown, std::move(now));
                list->reload(shown->size(), [&](int row) {
                    const auto id = content.id(before[std::size_t(row)]);
                    return nearestIndex(row, int(shown->size()),
                                        [&](std::size_t index) { return content.id((*shown)[index]) == id; });
                });
            }}};
}

} // namespace reelkeep
