#pragma once

#include "UI/Appearance.h"
#include "UI/TextWidget.h"

#include <QPixmap>
#include <QWidget>

namespace reelkeep {

/// A symbol in one colour. `name` is an alias in Symbols.qrc; `size` is in device-independent pixels.
QPixmap symbolPixmap(const char* name, QSizeF size, const QColor& color, double devicePixelRatio);

/// The size of a symbol of that width.
QSizeF symbolSize(const char* name, double width);

/// A symbol in a colour of the palette or an accent, scaled with the texts beside it. It is decoration: screen readers
/// skip it.
class SymbolWidget : public QWidget {
    Q_OBJECT

public:
    explicit SymbolWidget(const Glyph& shownGlyph);

    void setColor(const TextColor& newColor);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QSizeF drawnSize() const;

    Glyph glyph;
    TextColor color;
};

/// A white symbol on a rounded tile that runs from one colour to another.
class IconTile : public QWidget {
    Q_OBJECT

public:
    IconTile(const Glyph& shownGlyph, const Background& tileBackground);

    QSize sizeHint() const override { return {58, 58}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Glyph glyph;
    Background background;
};

} // namespace reelkeep
