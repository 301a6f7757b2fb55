#pragma once

#include "UI/Appearance.h"

#include <QWidget>

namespace reelkeep {

/// A container on a plate.
class Box : public QWidget {
    Q_OBJECT

public:
    void setPlate(const Plate& newPlate);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Plate plate;
};

} // namespace reelkeep
