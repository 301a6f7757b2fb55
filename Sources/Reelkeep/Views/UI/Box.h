#pragma once

#include "UI/Appearance.h"

#include <QWidget>

namespace reelkeep {

/// A container with a drawn ground.
class Box : public QWidget {
    Q_OBJECT

public:
    explicit Box(QWidget* parent = nullptr) : QWidget(parent) {}

    void setBackground(const Background& ground);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Background background;
};

} // namespace reelkeep
