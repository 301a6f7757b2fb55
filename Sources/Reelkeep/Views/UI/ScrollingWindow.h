#pragma once

#include <QMainWindow>
#include <QScrollArea>

namespace reelkeep {

/// A window that shows one tall content. It scrolls vertically when, and only when, the screen is too short, and never
/// horizontally; what is wider than the content's own limit stays free.
class ScrollingWindow : public QMainWindow {
    Q_OBJECT

public:
    ScrollingWindow(const QString& title, QWidget* content);

    /// As wide as designed, as tall as content and screen allow.
    void openAtFirstSize();
    QScrollArea* scrollArea() const { return area; }

private:
    QScrollArea* area;
};

} // namespace reelkeep
