#pragma once

#include "common/Journal.h"
#include "common/OrderFile.h"
#include "quorl-server/QuorlConnection.h"
#include "quorl-server/QuorlSocket.h"

#include <list>
#include <vector>

#include <poll.h>

namespace orvo::simulator
{

/// The simulated quorl: one request and one reply per connection on its socket, as ordered.
///
/// Shape:   orders, one per request: `up` a full reply; `empty` the configuration item is there but
///          empty; `short` 1000 bytes of the reply (or all but one of a shorter reply), then
///          closes; `hang` no reply, the connection stays open; `down` no listener, connections are
///          refused until the order file is replaced.
/// Threads: one; run() blocks until a signal asks it to end.
/// Errors:  an unknown command, a payload of the wrong size or an unknown order is complained about
///          on standard error and the connection closed without a reply.
/// On the device: notes every request in the ping journal before it answers.
class QuorlServer
{
public:
    QuorlServer();

    /// Serves until one of the signals waits on terminations; the process' exit status.
    int run(const Descriptor& terminations);

private:
    bool followListeningOrder();
    [[nodiscard]] std::vector<pollfd> sources(const Descriptor& terminations) const;
    void serve(QuorlConnection& connection);

    OrderFile m_orders;
    Journal m_journal;
    QuorlSocket m_socket;
    std::list<QuorlConnection> m_connections;
};

} // namespace orvo::simulator
