#include "ProxyMaker.h"

#include <QThread>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

namespace orvo
{

namespace
{

/// Between two looks at whether the bus is still there.
constexpr std::chrono::milliseconds kLookInterval{10};
/// For an answer that came just before the bus ended.
constexpr std::chrono::milliseconds kGrace{100};

/// What the thread that may be left behind shares with the one that waits for it.
class Errand
{
public:
    void bring(QObject* made)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_isGivenUp)
        {
            made->deleteLater();
            return;
        }
        m_made = made;
        m_brought.notify_one();
    }

    /// What was made; null when the bus has ended before.
    QObject* waitWith(const QDBusConnection& bus)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        const auto isBrought = [this]
        {
            return m_made != nullptr;
        };
        while (!m_brought.wait_for(lock, kLookInterval, isBrought))
        {
            if (!bus.isConnected() && !m_brought.wait_for(lock, kGrace, isBrought))
            {
                m_isGivenUp = true;
                return nullptr;
            }
        }
        return m_made;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_brought;
    QObject* m_made{nullptr};
    bool m_isGivenUp{false};
};

} // namespace

QObject* makeUnlessTheBusEnds(const std::function<QObject*()>& make)
{
    const QDBusConnection bus = QDBusConnection::systemBus();
    if (bus.isConnected())
    {
        const auto errand = std::make_shared<Errand>();
        try
        {
            std::thread(
                [errand, make, home = QThread::currentThread()]
                {
                    QObject* const made = make();
                    made->moveToThread(home);
                    errand->bring(made);
                })
                .detach();
        }
        catch (const std::system_error&)
        {
            // No thread can be had: the small risk is better than no service.
            return make();
        }
        if (QObject* const made = errand->waitWith(bus))
        {
            return made;
        }
    }
    return make();
}

} // namespace orvo
