#pragma once

#include <QScrollBar>

class QAbstractScrollArea;

namespace reelkeep {

/// A slim vertical scroll bar that lies over the edge of a scroll area instead of beside its content, so that the
/// content keeps its width whether or not there is something to scroll. It stands in for the area's own, which stays
/// the keeper of range and value.
class OverlayScrollBar : public QScrollBar {
    Q_OBJECT

public:
    explicit OverlayScrollBar(QAbstractScrollArea* scrolledArea);

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void followRange();
    void followGeometry();

    QAbstractScrollArea* area;
};

} // namespace reelkeep
