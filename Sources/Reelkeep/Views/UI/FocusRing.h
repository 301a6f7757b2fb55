#pragma once

#include <QFocusFrame>
#include <QPointer>

class QPainter;

namespace reelkeep {

class Appearance;

/// Paints the ring inside the edges of `rect`, for a part of a widget, which can have no frame of its own.
void paintFocusRing(QPainter& painter, const QRectF& rect, double radius, const Appearance& appearance);

/// A ring around a widget while it has the focus. It is drawn outside of the widget's bounds, over whatever surrounds
/// it.
class FocusRing : public QObject {
    Q_OBJECT

public:
    /// The widget owns its ring. `widgetRadius` is that of its corners.
    FocusRing(QWidget* widget, double widgetRadius);
    ~FocusRing() override;

    /// Present while the ring is shown (for tests).
    const QFocusFrame* shownFrame() const { return frame.data(); }
    static bool isShownAround(const QWidget& widget);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    double radius;
    QPointer<QFocusFrame> frame; ///< A child of the window, which may be destroyed before the widget.
};

} // namespace reelkeep
