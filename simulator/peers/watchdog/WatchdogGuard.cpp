#include "watchdog/WatchdogGuard.h"

#include "common/Diagnostics.h"
#include "common/SignalDescriptor.h"

#include <array>
#include <cerrno>
#include <csignal>

#include <poll.h>

namespace orvo::simulator
{

WatchdogGuard::WatchdogGuard(const GuardOptions& options)
    : m_options(options), m_journal(options.journal), m_node(options.device),
      m_countdown(options.timeoutMs), m_program(options.command)
{
}

int WatchdogGuard::run()
{
    if (!m_journal.isOpen() || !m_countdown.isValid())
    {
        return kFailureStatus;
    }
    Descriptor listener = m_program.start();
    if (!listener.isOpen())
    {
        return kFailureStatus;
    }
    // Only now, or the program would inherit the mask.
    m_removal = openSignalDescriptor({SIGUSR1});
    m_requests =
        std::make_unique<WatchdogRequests>(std::move(listener), &m_node, m_options.timeoutMs);
    for (;;)
    {
        if (!waitForEvents())
        {
            return kFailureStatus;
        }
        if (m_countdown.hasExpired())
        {
            m_journal.note("reset");
            m_program.killAll();
            return kResetStatus;
        }
        if (m_endNoted && !m_countdown.isRunning())
        {
            return m_program.exitStatus().value_or(kFailureStatus);
        }
    }
}

bool WatchdogGuard::waitForEvents()
{
    // poll() skips an entry of -1.
    std::array<pollfd, 5> sources = {{
        {m_node.descriptor(), POLLIN, 0},
        {m_filterInUse ? m_requests->descriptor() : -1, POLLIN, 0},
        {m_program.childEvents().get(), POLLIN, 0},
        {m_countdown.descriptor(), POLLIN, 0},
        {m_removal.get(), POLLIN, 0},
    }};
    if (poll(sources.data(), sources.size(), -1) == -1)
    {
        if (errno == EINTR)
        {
            return true;
        }
        complain("cannot wait for the program: " + errnoText());
        return false;
    }
    if (sources[4].revents != 0)
    {
        noteRemoval();
    }
    // An open always comes before the requests on it, a request before the end of who made it.
    noteDeviceEvents();
    if ((sources[1].revents & POLLIN) != 0)
    {
        answerRequest();
    }
    else if (sources[1].revents != 0)
    {
        m_filterInUse = false;
    }
    if (sources[2].revents != 0)
    {
        m_program.reap();
        noteEnd();
    }
    return true;
}

void WatchdogGuard::noteDeviceEvents()
{
    for (const DeviceNode::Event event : m_node.takeEvents())
    {
        switch (event)
        {
        case DeviceNode::Event::Opened:
            m_journal.note("open");
            m_countdown.restart();
            break;
        case DeviceNode::Event::Written:
            m_journal.note("write");
            if (!m_isRemoved)
            {
                m_countdown.restart();
            }
            break;
        case DeviceNode::Event::Closed:
            m_journal.note("close");
            break;
        }
    }
}

void WatchdogGuard::answerRequest()
{
    const WatchdogRequests::Request request = m_requests->receive();
    if (m_isRemoved)
    {
        m_requests->answer(request, true);
        return;
    }
    if (request == WatchdogRequests::Request::GetTimeout)
    {
        m_journal.note("gettimeout");
    }
    else if (request == WatchdogRequests::Request::KeepAlive)
    {
        m_journal.note("feed " + std::to_string(++m_feeds));
        m_countdown.restart();
    }
    m_requests->answer(request, false);
}

void WatchdogGuard::noteRemoval()
{
    takeSignals(m_removal);
    m_journal.note("removed");
    m_isRemoved = true;
}

void WatchdogGuard::noteEnd()
{
    if (m_endNoted || !m_program.exitStatus())
    {
        return;
    }
    // The node is closed before a process ends.
    noteDeviceEvents();
    m_journal.note("exit " + std::to_string(*m_program.exitStatus()));
    m_endNoted = true;
}

} // namespace orvo::simulator
