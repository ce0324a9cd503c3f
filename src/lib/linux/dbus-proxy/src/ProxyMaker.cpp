#include "ProxyMaker.h"

#include <QThread>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

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

/// The memory of a thread's stack, above a page that must not be touched. The C library would keep
/// a stack of its own for the next thread, locked in memory as long as the supervisor lives.
class Stack
{
public:
    Stack()
    {
        pthread_attr_t usual;
        if (pthread_getattr_default_np(&usual) == 0)
        {
            (void)pthread_attr_getstacksize(&usual, &m_size);
            (void)pthread_attr_destroy(&usual);
        }
        m_memory = mmap(nullptr, m_size + m_guard, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
        if (m_memory != MAP_FAILED)
        {
            (void)mprotect(m_memory, m_guard, PROT_NONE);
        }
    }
    Stack(const Stack&) = delete;
    Stack& operator=(const Stack&) = delete;

    /// Gives the memory back, when no thread stands on it any more.
    ~Stack()
    {
        if (m_memory != MAP_FAILED && !m_isLeftBehind)
        {
            (void)munmap(m_memory, m_size + m_guard);
        }
    }

    /// A thread will stand on it for ever.
    void leaveBehind() { m_isLeftBehind = true; }

    /// False when there is no memory for it.
    [[nodiscard]] bool isGivenTo(pthread_attr_t& attributes) const
    {
        return m_memory != MAP_FAILED &&
               pthread_attr_setstack(&attributes, static_cast<char*>(m_memory) + m_guard, m_size) ==
                   0;
    }

private:
    std::size_t m_size{0};
    std::size_t m_guard{static_cast<std::size_t>(sysconf(_SC_PAGESIZE))};
    void* m_memory{nullptr};
    bool m_isLeftBehind{false};
};

/// What the thread is started with; its own.
struct Order
{
    std::shared_ptr<Errand> errand;
    std::function<QObject*()> make;
    QThread* home;
};

void* carryOut(void* argument)
{
    const std::unique_ptr<Order> order(static_cast<Order*>(argument));
    QObject* const made = order->make();
    made->moveToThread(order->home);
    order->errand->bring(made);
    return nullptr;
}

/// Whether a thread has begun with the order, on that stack.
bool isBegun(pthread_t& thread, const Stack& stack, std::unique_ptr<Order> order)
{
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0)
    {
        return false;
    }
    const bool isRunning = stack.isGivenTo(attributes) &&
                           pthread_create(&thread, &attributes, carryOut, order.get()) == 0;
    (void)pthread_attr_destroy(&attributes);
    if (isRunning)
    {
        (void)order.release(); // the thread's
    }
    return isRunning;
}

} // namespace

QObject* makeUnlessTheBusEnds(const std::function<QObject*()>& make)
{
    const QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.isConnected())
    {
        return make();
    }
    const auto errand = std::make_shared<Errand>();
    Stack stack;
    pthread_t thread{};
    if (!isBegun(thread, stack,
                 std::make_unique<Order>(Order{errand, make, QThread::currentThread()})))
    {
        // No thread can be had: the small risk is better than no service.
        return make();
    }
    if (QObject* const made = errand->waitWith(bus))
    {
        (void)pthread_join(thread, nullptr);
        return made;
    }
    (void)pthread_detach(thread);
    stack.leaveBehind();
    return make();
}

} // namespace orvo
