#include "verbs/Monitor.h"

#include "bus/ServiceOverview.h"
#include "dbus-proxy/BusNames.h"
#include "log/DeviceClock.h"
#include "log/LogFacts.h"
#include "model/Duration.h"
#include "model/ServiceNames.h"
#include "output/ExitStatus.h"
#include "output/Json.h"
#include "verbs/ServiceVerbs.h"

#include <QEventLoop>
#include <QTimer>

#include <algorithm>

namespace orvo::ctl
{

Monitor::Monitor(const Output& output) : m_output(output) {}

int Monitor::run(const MonitorOptions& options)
{
    if (const int status = options.until.empty() ? kOk : setUntil(options.until); status != kOk)
    {
        return status;
    }
    if (!options.timeout.empty() && !durationOf(options.timeout))
    {
        m_output.problem({options.timeout, "is no duration", "Say 60s, 500ms or 10m."});
        return kUsage;
    }
    const int status = begin();
    return status != kOk || m_isReached ? status : wait(options.timeout);
}

int Monitor::setUntil(const std::string& until)
{
    const std::size_t sign = until.find('=');
    const std::string state = sign == std::string::npos ? "" : until.substr(sign + 1);
    const bool isState = state == "up" || state == "down";
    const std::string busName = isState ? resolved(m_output, until.substr(0, sign)) : "";
    if (isState && busName.empty())
    {
        return kUnknown;
    }
    const NamedService* const service = findService(busName);
    if (isState && service == nullptr)
    {
        return complainUnknown(m_output, busName);
    }
    if (!isState || !service->isJudged)
    {
        m_output.problem(
            {until, "is nothing to wait for", "Say NAME=up or NAME=down, of corvane or pictor."});
        return kUsage;
    }
    m_untilName = service->busName;
    m_untilUp = state == "up";
    return kOk;
}

int Monitor::begin()
{
    // Listened to first, so that nothing falls between the list and the signals.
    QDBusConnection bus = QDBusConnection::systemBus();
    bus.connect(QLatin1String(kWardexBusName), QLatin1String(kBusObjectPath),
                QLatin1String(kWardexBusName), QStringLiteral("signalServiceAvailability"), this,
                SLOT(availabilityChanged(QVariantMap)));
    bus.connect(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameOwnerChanged"), this,
                SLOT(ownerChanged(QString, QString, QString)));
    const ServiceOverview overview = askForServices();
    const LogFacts factsTold;
    if (!overview.answer.isAnswered())
    {
        return complainSilent(m_output, overview.answer);
    }
    const auto isUntil = [this](const ServiceView& each)
    {
        return each.name == m_untilName;
    };
    if (!m_untilName.empty() &&
        std::none_of(overview.services.begin(), overview.services.end(), isUntil))
    {
        return complainUnknown(m_output, m_untilName);
    }
    for (const ServiceView& view : overview.services)
    {
        if (view.isJudged)
        {
            take(view.name, factsTold.isAvailable(view));
        }
    }
    endBegin();
    return kOk;
}

void Monitor::endBegin()
{
    m_isBegun = true;
    for (const auto& change : m_meanwhile)
    {
        change();
    }
    m_meanwhile.clear();
}

int Monitor::wait(const std::string& timeout)
{
    QEventLoop loop;
    m_loop = &loop;
    const auto bound = durationOf(timeout);
    QTimer end;
    end.setSingleShot(true);
    connect(&end, &QTimer::timeout, &loop, [&loop] { loop.exit(kNotUp); });
    if (bound)
    {
        end.start(*bound);
    }
    QTimer look;
    connect(&look, &QTimer::timeout, &loop,
            [&loop]
            {
                if (!QDBusConnection::systemBus().isConnected())
                {
                    loop.exit(kSupervisorSilent);
                }
            });
    constexpr int kLookMs = 200;
    look.start(kLookMs);
    const int status = loop.exec();
    m_loop = nullptr;
    if (status == kSupervisorSilent)
    {
        BusAnswer answer;
        answer.detail = "it went away";
        return complainSilent(m_output, answer);
    }
    if (status == kNotUp && m_untilName.empty())
    {
        return kOk;
    }
    if (status == kNotUp)
    {
        m_output.problem({shortNameOf(m_untilName),
                          std::string("did not come to be ") + (m_untilUp ? "up" : "down") +
                              " within " + timeout,
                          "wardexctl why " + shortNameOf(m_untilName) + " tells what happened."});
    }
    return status;
}

void Monitor::availabilityChanged(const QVariantMap& services)
{
    if (!m_isBegun)
    {
        m_meanwhile.emplace_back([this, services] { availabilityChanged(services); });
        return;
    }
    for (auto service = services.begin(); service != services.end(); ++service)
    {
        take(service.key().toStdString(), service.value().toString() == QLatin1String("up"));
    }
}

void Monitor::ownerChanged(const QString& name, const QString& before, const QString& now)
{
    if (name != QLatin1String(kWardexBusName))
    {
        return;
    }
    const std::string change = now.isEmpty() ? "gone" : before.isEmpty() ? "back" : "replaced";
    if (!m_isBegun)
    {
        m_meanwhile.emplace_back([this, change] { tell("wardex", change); });
        return;
    }
    tell("wardex", change);
}
void Monitor::take(const std::string& busName, bool isUp)
{
    const auto known = m_up.find(busName);
    if (known == m_up.end() || known->second != isUp)
    {
        m_up[busName] = isUp;
        tell(busName, isUp ? "up" : "down");
    }
    if (busName == m_untilName && isUp == m_untilUp)
    {
        m_isReached = true;
        if (m_loop != nullptr)
        {
            m_loop->quit();
        }
    }
}

void Monitor::tell(const std::string& service, const std::string& state)
{
    const DeviceClock clock = DeviceClock::now();
    const Tone tone = state == "up" || state == "back" ? Tone::Good : Tone::Bad;
    constexpr std::size_t kWidth = 9;
    m_output.line(clock.timeText(clock.monotonic) + " " + padded(shortNameOf(service), kWidth) +
                  m_output.tone(tone, state));
    m_output.json({{"time", jsonText(clock.isoText(clock.monotonic))},
                   {"service", jsonText(service)},
                   {"state", jsonText(state)}});
}

} // namespace orvo::ctl
