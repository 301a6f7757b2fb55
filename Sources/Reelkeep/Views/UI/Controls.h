#pragma once

#include "UI/Appearance.h"
#include "UI/Readable.h"

#include <QCheckBox>
#include <QComboBox>
#include <QProgressBar>
#include <QPushButton>

#include <optional>

namespace reelkeep {

/// A push button; with a tint a prominent one. Its text wraps where the window is too narrow for it.
class Button : public QPushButton, public Readable {
    Q_OBJECT

public:
    explicit Button(const QString& label, QWidget* parent = nullptr);

    void setTint(const QColor& color);
    /// Tall, as wide as it may be, with a symbol before its bold text.
    void setLarge(const QString& symbol);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    int readableWidth() const override { return sizeHint().width(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QFont labelFont() const;
    QMargins margins() const;
    int leadingWidth() const;
    QRect textRect(int width) const;

    std::optional<QColor> tint;
    QString largeSymbol;
};

/// A check box drawn as its label and a switch after it.
class Switch : public QCheckBox {
    Q_OBJECT

public:
    explicit Switch(const QString& label, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

protected:
    bool hitButton(const QPoint& place) const override { return rect().contains(place); }
    void paintEvent(QPaintEvent* event) override;

private:
    QRect textRect(int width) const;
};

/// A pop-up menu of choices. With nothing chosen it shows nothing. The wheel scrolls the window, not the choice.
class PopUp : public QComboBox, public Readable {
    Q_OBJECT

public:
    explicit PopUp(QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    int readableWidth() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
};

/// A thin determinate bar.
class Bar : public QProgressBar {
    Q_OBJECT

public:
    explicit Bar(QWidget* parent = nullptr);

    /// 0.0 to 1.0.
    void setFraction(double fraction);
    QSize sizeHint() const override { return {120, 6}; }
    QSize minimumSizeHint() const override { return {40, 6}; }

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace reelkeep
