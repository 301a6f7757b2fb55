#pragma once

#include <QMainWindow>
#include <QScrollArea>

namespace reelkeep {

/// A window around one tall content. It scrolls vertically if, and only if, the screen is too short, and never
/// horizontally. Up, Down, the page keys, Home and End scroll it unless the control with the focus uses them. Ctrl+Q
/// and Ctrl+W close it.
class ScrollingWindow : public QMainWindow {
    Q_OBJECT

public:
    ScrollingWindow(const QString& title, QWidget* content);

    /// Shows the window as wide as designed and as tall as content and screen allow.
    void openAtFirstSize();
    QScrollArea* scrollArea() const { return area; }

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QScrollArea* area;
};

} // namespace reelkeep
