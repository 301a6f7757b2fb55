#pragma once

#include "Fixtures/Widgets.h"
#include "UI/TextWidget.h"
#include "UI/View.h"

#include <memory>

namespace reelkeep {

/// A view, shown as a window.
class ShownView {
public:
    explicit ShownView(View made) : view(std::move(made)), widget(view.widget)
    {
        view.refresh();
        widget->resize(600, 400);
        showActive(*widget);
    }
    void refresh() const { view.refresh(); }
    QStringList words() const
    {
        if (auto* text = qobject_cast<TextWidget*>(widget.get()))
            return {text->text()};
        return shownWords(*widget);
    }
    template <class Wanted>
    Wanted& find() const
    {
        return *widget->findChild<Wanted*>();
    }

private:
    View view;

public:
    std::unique_ptr<QWidget> widget;
};

} // namespace reelkeep
