#pragma once

#include "Fixtures/Widgets.h"
#include "UI/TextWidget.h"

#include <gtest/gtest.h>

namespace reelkeep {

/// A text widget as large as its text needs.
class TextWidgetTest : public testing::Test {
protected:
    TextWidget& make(const QString& content)
    {
        text.setText(content);
        text.resize(text.sizeHint());
        return text;
    }
    TextWidget& make(const QString& content, int width)
    {
        text.setText(content);
        text.resize(width, text.heightForWidth(width));
        return text;
    }
    TextWidget& makeSelectable(const QString& content)
    {
        text.setSelectable(true);
        make(content);
        showActive(text);
        text.setFocus();
        return text;
    }
    TextWidget& makePath(int width)
    {
        text.setStyle(type::monospacedCaption);
        text.setLineLimit(3);
        text.setSelectable(true);
        make(longPath, width);
        showActive(text);
        text.setFocus();
        return text;
    }

    const QString longPath = QStringLiteral("/media/ana/") + QStringLiteral("Proyectos terminados/").repeated(40) +
                             QStringLiteral("el ultimo.MOV");
    TextWidget text;
};

} // namespace reelkeep
