#pragma once

#include "UI/Appearance.h"
#include "UI/TextWidget.h"

#include <QPixmap>
#include <QWidget>

namespace reelkeep {

/// A symbol in one colour at a scale of the screen. `name` is an alias in Symbols.qrc, `size` in design points.
QPixmap symbolPixmap(const QString& name, QSizeF size, const QColor& color, double devicePixelRatio);

/// The size of a symbol of that width, in design points.
QSizeF symbolSize(const QString& name, double width);

/// A symbol drawn in a colour of the palette or an accent, which grows with the texts beside it. It is decoration:
/// screen readers pass over it.
class SymbolWidget : public QWidget {
    Q_OBJECT

public:
    SymbolWidget(QString symbolName, double width, const TextColor& tint, QWidget* parent = nullptr);

    void setSymbol(const QString& symbolName);
    void setColor(const TextColor& tint);
    /// The width kept for it, where that is more than its own.
    void setFrameWidth(int width);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QSizeF drawnSize() const;

    QString name;
    double symbolWidth;
    TextColor color;
    int frameWidth = 0;
};

/// A white symbol on a rounded tile that runs from one colour to another.
class IconTile : public QWidget {
    Q_OBJECT

public:
    IconTile(QString symbolName, double width, const Background& ground, QWidget* parent = nullptr);

    QSize sizeHint() const override { return {58, 58}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString name;
    double symbolWidth;
    Background background;
};

} // namespace reelkeep
