#include "BusCallQueue.h"

#include "SupervisionLimits.h"

#include <utility>

namespace orvo
{

BusCallQueue::BusCallQueue(QObject* parent) : QObject(parent)
{
    m_turn.setSingleShot(true);
    m_turn.setInterval(0);
    connect(&m_turn, &QTimer::timeout, this, &BusCallQueue::doNext);
}

bool BusCallQueue::add(const QDBusConnection& connection, const QDBusMessage& call, Deed deed)
{
    if (m_waiting.size() >= kWaitingCallLimit)
    {
        return false;
    }
    m_waiting.push_back({connection, call, std::move(deed)});
    m_turn.start();
    return true;
}

void BusCallQueue::doNext()
{
    const Waiting next = std::move(m_waiting.front());
    m_waiting.pop_front();
    if (!m_waiting.empty())
    {
        m_turn.start();
    }
    const QVariantList values = next.deed();
    if (next.call.isReplyRequired())
    {
        (void)next.connection.send(next.call.createReply(values)); // the caller may have gone
    }
}

} // namespace orvo
