#include "top/Top.h"

#include "output/ExitStatus.h"
#include "output/Json.h"
#include "top/QuietErrors.h"
#include "top/SignalWatch.h"
#include "top/TopDevice.h"
#include "top/TopScreen.h"
#include "top/TopTerminal.h"

#include <QEventLoop>

#include <csignal>
#include <memory>

#include <poll.h>
#include <unistd.h>

namespace orvo::ctl
{

namespace
{

constexpr std::size_t kLastRecords = 10;
/// Records that come in a flood are shown together.
constexpr int kPaintMs = 100;

QJsonObject topJson(const TopState& state)
{
    QJsonObject json = statusJson(state.view);
    json["verb"] = "top";
    json["feed"] = state.feedGap.json();
    return json;
}

int runForPrograms(const Output& output)
{
    TopState state;
    QEventLoop loop;
    std::unique_ptr<TopDevice> device;
    device = std::make_unique<TopDevice>(state,
                                         [&](bool isPeriod)
                                         {
                                             if (!isPeriod || !state.isKnown())
                                             {
                                                 return;
                                             }
                                             device->takeTime();
                                             state.view.records = state.log.newest(kLastRecords);
                                             if (!output.json(topJson(state)))
                                             {
                                                 loop.quit();
                                             }
                                         });
    return loop.exec();
}

bool hasHungUp(int descriptor)
{
    pollfd question{descriptor, 0, 0};
    return poll(&question, 1, 0) > 0 && (question.revents & (POLLHUP | POLLERR)) != 0;
}

/// The live screen on the terminal.
class TopProgram
{
public:
    explicit TopProgram(bool isColoured);

    /// Until it is quit: 0, or the signal that ended it.
    int run() { return m_loop.exec(); }

private:
    void paint();
    void takeKeys();
    void takeSignals();

    SignalWatch m_signals;
    QuietErrors m_quiet;
    TopTerminal m_terminal;
    TopState m_state;
    QEventLoop m_loop;
    QTimer m_later;
    TopDevice m_device;
    QSocketNotifier m_keys{STDIN_FILENO, QSocketNotifier::Read};
    QSocketNotifier m_signalled;
};

TopProgram::TopProgram(bool isColoured)
    : m_terminal(isColoured), m_device(m_state,
                                       [this](bool isPeriod)
                                       {
                                           if (isPeriod)
                                           {
                                               paint();
                                           }
                                           else if (!m_later.isActive())
                                           {
                                               m_later.start(kPaintMs);
                                           }
                                       }),
      m_signalled(m_signals.descriptor(), QSocketNotifier::Read)
{
    m_later.setSingleShot(true);
    QObject::connect(&m_later, &QTimer::timeout, &m_loop, [this] { paint(); });
    QObject::connect(&m_keys, &QSocketNotifier::activated, &m_loop, [this] { takeKeys(); });
    QObject::connect(&m_signalled, &QSocketNotifier::activated, &m_loop, [this] { takeSignals(); });
    paint();
}

void TopProgram::paint()
{
    m_later.stop();
    m_device.takeTime();
    const TopScreen screen = TopScreen::of(m_state, m_terminal.size());
    m_state.logHeight = screen.logHeight;
    m_state.isHidden = screen.isTooSmall;
    m_terminal.paint(screen);
}

void TopProgram::takeKeys()
{
    for (KeyPress press = m_terminal.read(); press.key != TopKey::None; press = m_terminal.read())
    {
        const TopRequest request = m_state.press(press);
        if (request.kind == TopRequest::Kind::Quit)
        {
            m_loop.exit(kOk);
            return;
        }
        if (request.kind == TopRequest::Kind::Act)
        {
            m_device.act(request.deed, request.service);
        }
    }
    if (hasHungUp(STDIN_FILENO))
    {
        m_loop.exit(SIGHUP);
        return;
    }
    paint();
}

void TopProgram::takeSignals()
{
    for (int signal = m_signals.take(); signal != 0; signal = m_signals.take())
    {
        switch (signal)
        {
        case SIGWINCH:
            m_terminal.takeSize();
            break;
        case SIGTSTP:
            m_terminal.suspend();
            SignalWatch::obey(signal);
            m_terminal.resume();
            break;
        case SIGCONT:
            m_terminal.resume();
            break;
        default:
            m_loop.exit(signal);
            return;
        }
    }
    paint();
}

} // namespace

int runTop(const Output& output)
{
    if (output.isJson())
    {
        return runForPrograms(output);
    }
    if (const auto problem = TopTerminal::problem())
    {
        output.problem(*problem);
        return kFailed;
    }
    const int signal = TopProgram(wantsColour()).run();
    if (signal != 0)
    {
        SignalWatch::obey(signal);
    }
    return kOk;
}

} // namespace orvo::ctl
