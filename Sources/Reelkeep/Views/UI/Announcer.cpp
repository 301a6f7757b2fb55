#include "UI/Announcer.h"

#include <QAccessible>
#include <QWidget>

namespace reelkeep {

namespace {

constexpr int pauseMilliseconds = 3000;

/// Newer toolkits can have a text spoken. With older ones all that a screen reader hears is that the name has changed.
constexpr bool speaksApart = QT_VERSION >= QT_VERSION_CHECK(6, 8, 0);

} // namespace

Announcer::Announcer(QWidget* spokenWidget) : QObject(spokenWidget), widget(spokenWidget)
{
    pause.setSingleShot(true);
    connect(&pause, &QTimer::timeout, this, [this] {
        if (newest != spoken)
            speak();
    });
}

void Announcer::announce(const QString& text)
{
    if (speaksApart && newest != text)
        tellNewName();
    newest = text;
    if (!pause.isActive() && newest != spoken)
        speak();
}

/// Screen readers remember names until they hear this.
void Announcer::tellNewName()
{
    QAccessibleEvent nameChanged(widget, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&nameChanged);
}

void Announcer::speak()
{
    spoken = newest;
    pause.start(pauseMilliseconds);
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    QAccessibleAnnouncementEvent event(widget, spoken);
    QAccessible::updateAccessibility(&event);
#else
    tellNewName();
#endif
    emit announced(spoken);
}

} // namespace reelkeep
