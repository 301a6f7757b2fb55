#pragma once

#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QDBusConnection;
class QDBusMessage;
class QDBusUnixFileDescriptor;

namespace reelkeep {

/// Prevents the computer from being suspended. It requests a lock from what desktops offer, one service after the other
/// (the portal, the screen saver's interface, the login manager) until one grants it, and requests it again when it is
/// lost. Never blocks, and is silent if no service answers. Interface thread.
class SleepInhibitor : public QObject {
    Q_OBJECT

public:
    SleepInhibitor();
    ~SleepInhibitor() override;

    /// Prevents suspending from now on, or allows it again.
    void setHeld(bool held);

private slots:
    void handleResponse(const QDBusMessage& response);
    void handleDisconnection();

private:
    using Step = void (SleepInhibitor::*)();
    struct Lock {
        QString owner;                 ///< Unique bus name of the service; empty if the lock outlives its connection.
        QString request;               ///< Object path of a portal's request.
        bool isConfirmed = false;      ///< The request has reported success.
        std::function<void()> release; ///< Gives the lock back to its service.
        Step next = nullptr;           ///< Tried if the service withdraws the lock.
    };
    /// Reads the lock out of a reply, if there is one in it.
    using ReadLock = std::function<std::optional<Lock>(const QDBusMessage& reply)>;

    void requestFromPortal();
    void requestFromScreenSaver();
    void requestFromLoginManager();
    void request(const QDBusConnection& bus, const QDBusMessage& call, const ReadLock& readLock, Step next);
    std::shared_ptr<void> keepOpen(const QDBusUnixFileDescriptor& descriptor);
    void watchSessionBus();
    void handleOwnerChange(const QString& service, const QString& oldOwner, const QString& newOwner);
    void handleEarlyEvents();
    void handleLoss();
    void retry();
    void retryLater();
    void release();

    bool isWanted = false;
    bool isRequesting = false;
    std::optional<Lock> lock;
    std::vector<std::function<void()>> earlyEvents; ///< Events during a request, whose result decides what they mean.
    QDBusServiceWatcher services;
    QTimer retryTimer;
    std::chrono::seconds retryDelay{};
};

} // namespace reelkeep
