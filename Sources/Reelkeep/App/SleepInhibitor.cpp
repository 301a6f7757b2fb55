#include "SleepInhibitor.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusUnixFileDescriptor>
#include <QVariantMap>

#include <memory>
#include <utility>

namespace reelkeep {

namespace {

constexpr QLatin1String applicationName("Reelkeep");
constexpr QLatin1String reason("Copiando videos");

QDBusMessage portalCall(const QString& path, const QString& interface, const QString& method)
{
    return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.portal.Desktop"), path,
                                          QStringLiteral("org.freedesktop.portal.") + interface, method);
}

QDBusMessage screenSaverCall(const QString& method)
{
    return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.ScreenSaver"),
                                          QStringLiteral("/org/freedesktop/ScreenSaver"),
                                          QStringLiteral("org.freedesktop.ScreenSaver"), method);
}

} // namespace

SleepInhibitor::SleepInhibitor(QObject* parent) : QObject(parent) {}

SleepInhibitor::~SleepInhibitor()
{
    wanted = false;
    release();
}

void SleepInhibitor::setHeld(bool held)
{
    if (wanted == held)
        return;
    wanted = held;
    if (!wanted)
        release();
    else if (!asking && !letGo)
        askPortal();
}

void SleepInhibitor::release()
{
    if (letGo)
        std::exchange(letGo, nullptr)();
}

/// Waits for an answer without waiting: accepted, it holds (or is let go at once when it came too late); refused, the
/// next way is tried.
void SleepInhibitor::ask(const QDBusPendingCall& call, const Answer& releaseOf, void (SleepInhibitor::*otherwise)())
{
    asking = true;
    auto* watcher = new QDBusPendingCallWatcher(call, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, releaseOf, otherwise] {
        watcher->deleteLater();
        asking = false;
        const QDBusMessage answer = watcher->reply();
        if (answer.type() == QDBusMessage::ReplyMessage)
            letGo = releaseOf(answer);
        if (!wanted)
            release();
        else if (!letGo)
            (this->*otherwise)();
    });
}

void SleepInhibitor::askPortal()
{
    constexpr uint suspend = 4;
    QDBusMessage call = portalCall(QStringLiteral("/org/freedesktop/portal/desktop"), QStringLiteral("Inhibit"),
                                   QStringLiteral("Inhibit"));
    call << QString() << suspend << QVariantMap{{QStringLiteral("reason"), QString(reason)}};
    ask(
        QDBusConnection::sessionBus().asyncCall(call),
        [](const QDBusMessage& answer) -> Release {
            const auto request = answer.arguments().value(0).value<QDBusObjectPath>().path();
            if (request.isEmpty())
                return nullptr;
            return [request] {
                QDBusConnection::sessionBus().send(
                    portalCall(request, QStringLiteral("Request"), QStringLiteral("Close")));
            };
        },
        &SleepInhibitor::askScreenSaver);
}

void SleepInhibitor::askScreenSaver()
{
    QDBusMessage call = screenSaverCall(QStringLiteral("Inhibit"));
    call << QString(applicationName) << QString(reason);
    ask(
        QDBusConnection::sessionBus().asyncCall(call),
        [](const QDBusMessage& answer) -> Release {
            const uint cookie = answer.arguments().value(0).toUInt();
            return [cookie] {
                QDBusMessage end = screenSaverCall(QStringLiteral("UnInhibit"));
                end << cookie;
                QDBusConnection::sessionBus().send(end);
            };
        },
        &SleepInhibitor::askLoginManager);
}

void SleepInhibitor::askLoginManager()
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
        QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"));
    call << QStringLiteral("sleep") << QString(applicationName) << QString(reason) << QStringLiteral("block");
    ask(
        QDBusConnection::systemBus().asyncCall(call),
        [](const QDBusMessage& answer) -> Release {
            // The hold lasts as long as this descriptor is open.
            auto lock =
                std::make_shared<QDBusUnixFileDescriptor>(answer.arguments().value(0).value<QDBusUnixFileDescriptor>());
            if (!lock->isValid())
                return nullptr;
            return [lock]() mutable { lock.reset(); };
        },
        &SleepInhibitor::giveUp);
}

} // namespace reelkeep
