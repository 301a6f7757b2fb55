#pragma once

#include "UI/Raised.h"
#include "UI/Readable.h"

#include <QComboBox>

namespace reelkeep {

/// A pop-up menu of choices. It is empty while nothing is chosen. Only a choice in the open list changes it: while it
/// is closed, keys open it or go to the window, as the wheel does. A choice that is too long for it is cut in the
/// middle, and shown whole in a tool tip.
class PopUp : public QComboBox, public Readable, public Raised {
    Q_OBJECT

public:
    PopUp();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    int readableWidth() const override;
    bool castsShadow() const override { return true; }

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    QRect textRect() const;
    QString shownText() const;
};

} // namespace reelkeep
