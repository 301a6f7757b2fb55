#pragma once

#include <QFocusFrame>
#include <QPointer>

namespace reelkeep {

/// Draws a ring around a widget while that has the focus. The ring stands outside of its bounds, over its neighbours'
/// margins: for what has no room for it inside.
class FocusRing : public QObject {
    Q_OBJECT

public:
    /// The widget owns its ring.
    explicit FocusRing(QWidget* widget);
    ~FocusRing() override;

    /// Present while the widget has the focus (tests ask this).
    const QFocusFrame* shownFrame() const { return frame.data(); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QPointer<QFocusFrame> frame; ///< A child of the window, which may go before the widget does.
};

} // namespace reelkeep
