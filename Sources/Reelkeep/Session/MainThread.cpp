#include "MainThread.h"

#include <QCoreApplication>
#include <QObject>
#include <QSocketNotifier>
#include <QThread>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <deque>
#include <mutex>
#include <system_error>
#include <utility>

#include <sys/eventfd.h>
#include <unistd.h>

namespace reelkeep {

namespace {

/// A burst of jobs is served in slices of this length, so that input and painting are handled in between.
constexpr std::chrono::milliseconds slice{3};

} // namespace

/// A queue under a mutex and a descriptor that is readable while a job waits. Qt only watches the descriptor: workers
/// touch nothing of Qt.
class MainThread::Mailbox {
public:
    Mailbox() : readable(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    {
        if (readable < 0)
            throw std::system_error(errno, std::generic_category(), "eventfd");
    }
    Mailbox(const Mailbox&) = delete;
    Mailbox& operator=(const Mailbox&) = delete;
    ~Mailbox() { close(readable); }

    int descriptor() const { return readable; }

    void post(Job job)
    {
        const std::lock_guard lock(mutex);
        if (!isOpen)
            return; // `job` is a parameter: destroyed after the lock is released, it may post again.
        posted.push_back(std::move(job));
        if (posted.size() == 1)
            eventfd_write(readable, 1);
    }

    /// Runs waiting jobs for the length of a slice; the descriptor stays readable while any are left.
    /// On the interface thread, as `shut`.
    void serve()
    {
        const auto end = std::chrono::steady_clock::now() + slice;
        do {
            if (ready.empty() && !refill())
                return;
            const Job job = std::move(ready.front());
            ready.pop_front();
            job();
        } while (std::chrono::steady_clock::now() < end);
    }

    void shut()
    {
        const std::deque<Job> droppedFirst = std::exchange(ready, {}); // Both destroyed after the lock is released.
        std::deque<Job> dropped;
        const std::lock_guard lock(mutex);
        isOpen = false;
        dropped.swap(posted);
    }

private:
    /// False if there is nothing, or if a worker is posting at this moment: the interface thread never waits for a
    /// worker, but comes back, since the descriptor is still readable.
    bool refill()
    {
        const std::unique_lock lock(mutex, std::try_to_lock);
        if (!lock)
            return false;
        ready.swap(posted);
        if (!ready.empty())
            return true;
        eventfd_t ignored = 0;
        eventfd_read(readable, &ignored);
        return false;
    }

    std::deque<Job> ready; ///< First in line; belongs to the interface thread.
    std::mutex mutex;
    std::deque<Job> posted;
    bool isOpen = true;
    int readable;
};

MainThread::MainThread(QObject* owner) : mailbox(std::make_shared<Mailbox>())
{
    checkIsCurrent();
    /// Watches for jobs. It is a child of the owner, and so is destroyed with it.
    class Watcher : public QObject {
    public:
        Watcher(std::shared_ptr<Mailbox> watched, QObject* parent)
            : QObject(parent), mailbox(std::move(watched)), notifier(mailbox->descriptor(), QSocketNotifier::Read)
        {
            connect(&notifier, &QSocketNotifier::activated, this, [this] {
                const std::shared_ptr<Mailbox> kept = mailbox; // A job may destroy the owner, and this with it.
                kept->serve();
            });
        }
        ~Watcher() override { mailbox->shut(); }

    private:
        std::shared_ptr<Mailbox> mailbox;
        QSocketNotifier notifier;
    };
    new Watcher(mailbox, owner);
}

void MainThread::post(Job job) const
{
    mailbox->post(std::move(job));
}

void MainThread::checkIsCurrent()
{
    const QCoreApplication* application = QCoreApplication::instance();
    if (!application || QThread::currentThread() != application->thread())
        qFatal("called outside the interface thread");
}

} // namespace reelkeep
