#include "UI/Announcer.h"

#include <QAccessible>
#include <QWidget>

namespace reelkeep {

namespace {
constexpr int pauseMilliseconds = 3000;
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
    newest = text;
    if (!pause.isActive() && newest != spoken)
        speak();
}

void Announcer::speak()
{
    spoken = newest;
    pause.start(pauseMilliseconds);
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    QAccessibleAnnouncementEvent event(widget, spoken);
    QAccessible::updateAccessibility(&event);
#endif
    QAccessibleEvent nameChanged(widget, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&nameChanged);
    emit announced(spoken);
}

} // namespace reelkeep
