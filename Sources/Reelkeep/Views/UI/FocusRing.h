#pragma once

#include <QFocusFrame>
#include <QPointer>

#include <optional>

class QPainter;

namespace reelkeep {

class Appearance;

/// Paints the ring inside the edges of `rect`, for a part of a widget, which can have no frame of its own.
void paintFocusRing(QPainter& painter, const QRectF& rect, double radius, const Appearance& appearance);

/// Scrolls everything around a widget as far as it takes to show it.
void scrollIntoView(QWidget& widget);

/// A ring around a widget while it has the focus that keyboard or assistive technology moved there: not after a click,
/// also not when another window or a menu gives the focus back after one. It is drawn outside of the widget's bounds,
/// over whatever surrounds it. The view follows the focus there.
class FocusRing : public QObject {
    Q_OBJECT

public:
    /// The widget owns its ring. `widgetRadius` is that of its corners.
    FocusRing(QWidget* widget, double widgetRadius);
    /// For a widget that paints the ring itself, around a part of it, while `belongsAround` is true.
    explicit FocusRing(QWidget* widget);
    ~FocusRing() override;

    /// Present while the ring is shown (for tests).
    const QFocusFrame* shownFrame() const { return frame.data(); }
    /// Whether the widget has a ring, or will have it again when its window is active.
    static bool belongsAround(const QWidget& widget);
    /// Moves the focus to a widget, where the ring is shown if it was shown where the focus comes from. The view stays.
    static void moveFocus(QWidget& to, bool withRing);
    /// Says whether the keyboard, or a click, moved on inside a widget that paints its ring itself.
    void setBelongs(bool nowBelongs) { belongs = nowBelongs; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    static FocusRing* of(const QWidget& widget);

    std::optional<double> radius; ///< Of the frame, if there is to be one.
    bool belongs = false;
    QPointer<QFocusFrame> frame; ///< A child of the window, which may be destroyed before the widget.
};

} // namespace reelkeep
