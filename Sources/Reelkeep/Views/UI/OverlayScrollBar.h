#pragma once

#include <QScrollBar>

class QAbstractScrollArea;

namespace reelkeep {

/// A slim vertical scroll bar over the edge of a scroll area instead of beside its content, so that the content keeps
/// its width whether or not it scrolls. It is shown instead of the area's own bar, which still holds range and value.
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

    QAbstractScrollArea* area;
};

} // namespace reelkeep
