#include "quorl-server/QuorlServer.h"

#include "common/Diagnostics.h"
#include "common/PeerPaths.h"

#include <algorithm>
#include <cerrno>

namespace orvo::simulator
{

namespace
{
/// How long a person waits at most until the order `down` or its end is followed. A look that comes
/// more often costs more than all else on a quiet device.
constexpr int kOrderPeriodMs = 200;
constexpr std::size_t kShortReply = 1000;
constexpr std::size_t kTerminationSource = 0;
constexpr std::size_t kListenerSource = 1;
} // namespace

QuorlServer::QuorlServer()
    : m_orders(std::string(kOrdersFolder) + "/quorl"), m_journal(kPingJournal),
      m_socket(kQuorlSocket)
{
}

int QuorlServer::run(const Descriptor& terminations)
{
    for (;;)
    {
        if (!followListeningOrder())
        {
            return 1;
        }
        std::vector<pollfd> waiting = sources(terminations);
        if (poll(waiting.data(), waiting.size(), kOrderPeriodMs) == -1 && errno != EINTR)
        {
            complain("cannot wait for clients: " + errnoText());
            return 1;
        }
        if (waiting[kTerminationSource].revents != 0)
        {
            return 0;
        }
        for (QuorlConnection& connection : m_connections)
        {
            serve(connection);
        }
        m_connections.remove_if([](const QuorlConnection& each) { return !each.isOpen(); });
        if (waiting[kListenerSource].revents != 0)
        {
            Descriptor client = m_socket.accept();
            if (client.isOpen())
            {
                m_connections.emplace_back(std::move(client));
            }
        }
    }
}

bool QuorlServer::followListeningOrder()
{
    const bool shallListen = m_orders.peek().word != "down";
    const bool listens = m_socket.descriptor() != -1;
    if (listens && !shallListen)
    {
        m_socket.refuse();
    }
    return listens || !shallListen || m_socket.listen();
}

std::vector<pollfd> QuorlServer::sources(const Descriptor& terminations) const
{
    std::vector<pollfd> waiting = {{terminations.get(), POLLIN, 0},
                                   {m_socket.descriptor(), POLLIN, 0}};
    for (const QuorlConnection& connection : m_connections)
    {
        waiting.push_back({connection.descriptor(), POLLIN, 0});
    }
    return waiting;
}

void QuorlServer::serve(QuorlConnection& connection)
{
    const std::optional<QuorlRequest> request = connection.receive();
    if (!request)
    {
        return;
    }
    const std::string order = m_orders.next().word;
    m_journal.note("quorl " + order);
    std::string reply = request->reply(order == "empty");
    if (reply.empty())
    {
        complain("refused command " + std::to_string(request->command) + " with " +
                 std::to_string(request->payload.size()) + " bytes of payload");
    }
    if (order == "hang")
    {
        return;
    }
    if (order == "short" && !reply.empty())
    {
        reply.resize(std::min(kShortReply, reply.size() - 1));
    }
    else if (order != "up" && order != "empty")
    {
        complain("no reply at the order '" + order +
                 "'; the orders are up, hang, empty, short, down");
        reply.clear();
    }
    connection.finish(reply);
}

} // namespace orvo::simulator
