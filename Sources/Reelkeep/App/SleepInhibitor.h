#pragma once

#include <QObject>

#include <functional>

class QDBusPendingCall;
class QDBusMessage;

namespace reelkeep {

/// Asks the desktop not to suspend the computer. It tries what desktops offer one after the other (the portal, the
/// screen saver's interface, the login manager), never waits for an answer, and is silent where nobody listens.
/// Interface thread.
class SleepInhibitor : public QObject {
    Q_OBJECT

public:
    explicit SleepInhibitor(QObject* parent = nullptr);
    ~SleepInhibitor() override;

    /// Holds suspending off, or lets it happen again.
    void setHeld(bool held);

private:
    using Release = std::function<void()>;
    /// Makes of an answer what ends the hold again; nothing where the answer grants none.
    using Answer = std::function<Release(const QDBusMessage&)>;

    void askPortal();
    void askScreenSaver();
    void askLoginManager();
    void ask(const QDBusPendingCall& call, const Answer& releaseOf, void (SleepInhibitor::*otherwise)());
    void giveUp() {}
    void release();

    bool wanted = false;
    bool asking = false;
    Release letGo; ///< Set while suspending is held off.
};

} // namespace reelkeep
