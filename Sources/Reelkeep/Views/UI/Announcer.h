#pragma once

#include <QObject>
#include <QTimer>

class QWidget;

namespace reelkeep {

/// Tells screen readers of a text that changes by itself: at once when it was quiet, and while the text keeps changing
/// every few seconds, with the newest words. Nobody can listen to a progress report for every file.
class Announcer : public QObject {
    Q_OBJECT

public:
    /// Announces for `spokenWidget`, which becomes its parent.
    explicit Announcer(QWidget* spokenWidget);

    void announce(const QString& text);

signals:
    /// `text` was handed to the screen readers.
    void announced(const QString& text);

private:
    void speak();

    QWidget* widget;
    QString newest;
    QString spoken;
    QTimer pause;
};

} // namespace reelkeep
