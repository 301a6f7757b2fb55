#pragma once

#include <QPointer>
#include <QTimer>
#include <QWidget>

namespace reelkeep {

/// The content of a window, which has the focus while no control has it. A control that is disabled or hidden while it
/// has the focus leaves it here, and gets it back when it can be used again, unless the person went elsewhere. The
/// toolkit alone would hand it to the next control, where the next key has an effect that was not meant.
class FocusHome : public QWidget {
    Q_OBJECT

public:
    explicit FocusHome(QWidget* parent = nullptr);

    /// The home around a widget, or null.
    static FocusHome* around(const QWidget& widget);

    /// The control inside `element` that has the focus or has left it here; null if there is none.
    QWidget* ownerIn(const QWidget& element) const;
    /// Takes the focus from a control inside `element`, which is about to be disabled or hidden.
    void takeFocusFrom(const QWidget& element);
    /// Gives it back if it was taken from a control inside `element` that can be used again.
    void returnFocusTo(const QWidget& element);
    /// Moves it from a control inside `element`, which is going from `list`, to the next one of its kind in the list,
    /// or else to the closest one before it. The view follows if the keyboard had moved it there.
    void passFocusOn(const QWidget& element, const QWidget& list);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    QPointer<QWidget> absent; ///< The control that left the focus here.
    bool absentHadRing = false;
    QTimer following; ///< Fires when the layouts know the new places: the view then follows the focus.
};

/// As QWidget::setEnabled and setVisible, with the focus left to the home around the element.
void setEnabledKeepingFocus(QWidget& element, bool enabled);
void setVisibleKeepingFocus(QWidget& element, bool visible);

} // namespace reelkeep
