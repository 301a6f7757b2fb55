#pragma once

#include "UI/Appearance.h"

#include <QWidget>

namespace reelkeep {

/// A container on a plate. It draws the shadows of the controls on it.
class Box : public QWidget {
    Q_OBJECT

public:
    void setPlate(const Plate& newPlate);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    static const Box* plateBelow(const QWidget& widget);

    Plate plate;
};

} // namespace reelkeep
