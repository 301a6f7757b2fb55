#include "SleepInhibitor.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusUnixFileDescriptor>
#include <QSocketNotifier>
#include <QVariantMap>

#include <algorithm>
#include <chrono>
#include <utility>

namespace reelkeep {

namespace {

constexpr QLatin1String applicationName("Reelkeep");
constexpr QLatin1String reason("Copiando videos");
constexpr QLatin1String portalService("org.freedesktop.portal.Desktop");
constexpr QLatin1String requestInterface("org.freedesktop.portal.Request");
constexpr QLatin1String screenSaverService("org.freedesktop.ScreenSaver");
constexpr QLatin1String loginService("org.freedesktop.login1");

/// A service that crashes at every request must not keep the processor busy: each retry waits twice as long.
constexpr std::chrono::seconds firstRetryDelay{1};
constexpr std::chrono::seconds longestRetryDelay{32};

QDBusMessage portalCall(const QString& path, const QString& interface, const QString& method)
{
    return QDBusMessage::createMethodCall(portalService, path, interface, method);
}

QDBusMessage screenSaverCall(const QString& method)
{
    return QDBusMessage::createMethodCall(screenSaverService, QStringLiteral("/org/freedesktop/ScreenSaver"),
                                          screenSaverService, method);
}

} // namespace

SleepInhibitor::SleepInhibitor()
{
    retryTimer.setSingleShot(true);
    connect(&retryTimer, &QTimer::timeout, this, &SleepInhibitor::retry);
    connect(&services, &QDBusServiceWatcher::serviceOwnerChanged, this, &SleepInhibitor::handleOwnerChange);
}

SleepInhibitor::~SleepInhibitor()
{
    release();
}

void SleepInhibitor::setHeld(bool held)
{
    if (isWanted == held)
        return;
    isWanted = held;
    if (!isWanted)
        return release();
    retryDelay = firstRetryDelay;
    watchSessionBus();
    retry();
}

void SleepInhibitor::retryLater()
{
    if (retryTimer.isActive())
        return;
    retryTimer.start(retryDelay);
    retryDelay = std::min(2 * retryDelay, longestRetryDelay);
}

void SleepInhibitor::retry()
{
    if (isWanted && !isRequesting && !lock)
        requestFromPortal();
}

void SleepInhibitor::release()
{
    retryTimer.stop();
    earlyEvents.clear();
    if (lock)
        std::exchange(lock, std::nullopt)->release();
}

/// Called when there is something to copy: connecting to the bus at the start would delay the first frame.
void SleepInhibitor::watchSessionBus()
{
    if (!services.watchedServices().isEmpty())
        return;
    QDBusConnection bus = QDBusConnection::sessionBus();
    services.setConnection(bus);
    services.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    services.setWatchedServices({portalService, screenSaverService});
    // Requests of any path: subscribing before the path is known misses no response, even of portals that ignore
    // `handle_token`. Of any sender: Qt would block to look up the owner of the portal's name.
    bus.connect(QString(), QString(), requestInterface, QStringLiteral("Response"), this,
                SLOT(handleResponse(QDBusMessage)));
    bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"), QStringLiteral("org.freedesktop.DBus.Local"),
                QStringLiteral("Disconnected"), this, SLOT(handleDisconnection()));
}

/// If the lock is granted too late, it is given back at once; if it is refused, the next service is queried.
void SleepInhibitor::request(const QDBusConnection& bus, const QDBusMessage& call, const ReadLock& readLock, Step next)
{
    isRequesting = bus.isConnected();
    if (!isRequesting)
        return (this->*next)(); // A call without a bus would never finish.
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, readLock, next] {
        watcher->deleteLater();
        isRequesting = false;
        const QDBusMessage reply = watcher->reply();
        if (reply.type() == QDBusMessage::ReplyMessage)
            lock = readLock(reply);
        if (!isWanted)
            return release();
        if (!lock)
            return (this->*next)();
        lock->next = next;
        handleEarlyEvents();
    });
}

void SleepInhibitor::handleEarlyEvents()
{
    for (const auto& event : std::exchange(earlyEvents, {}))
        event();
}

/// The portal first accepts a request and reports its result later.
void SleepInhibitor::handleResponse(const QDBusMessage& response)
{
    if (isRequesting)
        return earlyEvents.push_back([this, response] { handleResponse(response); });
    if (!lock || response.service() != lock->owner || response.path() != lock->request)
        return;
    if (response.arguments().value(0).toUInt() == 0)
        lock->isConfirmed = true;
    else if (lock->isConfirmed)
        handleLoss();
    else
        (this->*std::exchange(lock, std::nullopt)->next)();
}

void SleepInhibitor::handleOwnerChange(const QString& service, const QString& oldOwner, const QString& newOwner)
{
    if (isRequesting)
        return earlyEvents.push_back([=, this] { handleOwnerChange(service, oldOwner, newOwner); });
    if (lock && !oldOwner.isEmpty() && lock->owner == oldOwner)
        handleLoss();
    else if (isWanted && !lock && !newOwner.isEmpty())
        retryLater(); // The new service may grant what the others refused.
}

void SleepInhibitor::handleDisconnection()
{
    if (isRequesting)
        return earlyEvents.push_back([this] { handleDisconnection(); });
    if (lock && !lock->owner.isEmpty())
        handleLoss();
}

/// A lock that was in force is gone.
void SleepInhibitor::handleLoss()
{
    lock.reset();
    retryLater();
}

void SleepInhibitor::requestFromPortal()
{
    constexpr uint suspend = 4;
    QDBusMessage call = portalCall(QStringLiteral("/org/freedesktop/portal/desktop"),
                                   QStringLiteral("org.freedesktop.portal.Inhibit"), QStringLiteral("Inhibit"));
    call << QString() << suspend << QVariantMap{{QStringLiteral("reason"), QString(reason)}};
    request(
        QDBusConnection::sessionBus(), call,
        [](const QDBusMessage& reply) -> std::optional<Lock> {
            const QString path = reply.arguments().value(0).value<QDBusObjectPath>().path();
            if (path.isEmpty())
                return std::nullopt;
            Lock granted;
            granted.owner = reply.service();
            granted.request = path;
            granted.release = [path] {
                QDBusConnection::sessionBus().send(portalCall(path, requestInterface, QStringLiteral("Close")));
            };
            return granted;
        },
        &SleepInhibitor::requestFromScreenSaver);
}

void SleepInhibitor::requestFromScreenSaver()
{
    QDBusMessage call = screenSaverCall(QStringLiteral("Inhibit"));
    call << QString(applicationName) << QString(reason);
    request(
        QDBusConnection::sessionBus(), call,
        [](const QDBusMessage& reply) -> std::optional<Lock> {
            const uint cookie = reply.arguments().value(0).toUInt();
            Lock granted;
            granted.owner = reply.service();
            granted.release = [cookie] {
                QDBusMessage end = screenSaverCall(QStringLiteral("UnInhibit"));
                end << cookie;
                QDBusConnection::sessionBus().send(end);
            };
            return granted;
        },
        &SleepInhibitor::requestFromLoginManager);
}

void SleepInhibitor::requestFromLoginManager()
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(loginService, QStringLiteral("/org/freedesktop/login1"),
                                       QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"));
    call << QStringLiteral("sleep") << QString(applicationName) << QString(reason) << QStringLiteral("block");
    request(
        QDBusConnection::systemBus(), call,
        [this](const QDBusMessage& reply) -> std::optional<Lock> {
            const auto descriptor = reply.arguments().value(0).value<QDBusUnixFileDescriptor>();
            if (!descriptor.isValid())
                return std::nullopt;
            Lock granted;
            granted.release = [kept = keepOpen(descriptor)] {};
            return granted;
        },
        &SleepInhibitor::handleEarlyEvents);
}

/// The login manager's lock lasts as long as its descriptor is open at both ends: keeps ours open until the result is
/// destroyed, and watches the other.
std::shared_ptr<void> SleepInhibitor::keepOpen(const QDBusUnixFileDescriptor& descriptor)
{
    const auto end = [descriptor](QSocketNotifier* notifier) {
        notifier->setEnabled(false);
        notifier->deleteLater(); // It may be reporting just now.
    };
    const std::shared_ptr<QSocketNotifier> notifier(
        new QSocketNotifier(descriptor.fileDescriptor(), QSocketNotifier::Exception), end);
    connect(notifier.get(), &QSocketNotifier::activated, this, &SleepInhibitor::handleLoss);
    return notifier;
}

} // namespace reelkeep
