#pragma once

#include "UI/Design.h"
#include "UI/Raised.h"
#include "UI/Readable.h"

#include <QCheckBox>
#include <QProgressBar>
#include <QPushButton>

#include <optional>

namespace reelkeep {

/// A push button; with a tint, a prominent one. Its label wraps if the window is too narrow for it. Right after it has
/// moved (see hasJustMoved), it ignores the mouse and the keyboard, but not assistive technology, which addresses a
/// button and not a place.
class Button : public QPushButton, public Readable, public Raised {
    Q_OBJECT

public:
    explicit Button(const QString& label = {});

    void setTint(const QColor& color);
    /// Makes it tall and as wide as possible, with a symbol before its bold label.
    void setLarge(const Glyph& symbol);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    int readableWidth() const override { return sizeHint().width(); }
    bool castsShadow() const override { return isEnabled() && !tint; }

protected:
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    struct Face {
        Background background;
        QColor label;
    };
    Face face(const Appearance& appearance) const;
    QFont labelFont() const;
    QMargins margins() const;
    int leadingWidth() const;
    QRect textRect(int width) const;

    std::optional<QColor> tint;
    std::optional<Glyph> glyph; ///< Present in a large button.
};

/// A check box drawn as a label with a switch after it.
class Switch : public QCheckBox {
    Q_OBJECT

public:
    explicit Switch(const QString& label);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

protected:
    bool hitButton(const QPoint& point) const override { return rect().contains(point); }
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QRect textRect(int width) const;
};

/// A thin determinate bar.
class Bar : public QProgressBar {
    Q_OBJECT

public:
    Bar();

    /// 0.0 to 1.0.
    void setFraction(double fraction);
    QSize sizeHint() const override { return {120, 6}; }
    QSize minimumSizeHint() const override { return {40, 6}; }

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace reelkeep
