#pragma once

#include <QObject>
#include <QTimer>

class QWidget;

namespace reelkeep {

/// Announces the changes of a text to screen readers: the first one at once, then the newest text every few seconds. A
/// progress report for every file would be too much to listen to. Only what is spoken is held back: who reads the text
/// gets the current one.
class Announcer : public QObject {
    Q_OBJECT

public:
    /// Announces for `spokenWidget`, which becomes its parent.
    explicit Announcer(QWidget* spokenWidget);

    void announce(const QString& text);

signals:
    /// Emitted when `text` was passed to the screen readers.
    void announced(const QString& text);

private:
    void speak();
    void tellNewName();

    QWidget* widget;
    QString newest;
    QString spoken;
    QTimer pause;
};

} // namespace reelkeep
