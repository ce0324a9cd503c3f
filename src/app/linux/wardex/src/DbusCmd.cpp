#include "DbusCmd.h"

#include "RunLevel.h"
#include "ServiceInfo.h"
#include "SupervisionLimits.h"
#include "SuprSM.h"
#include "dbus-proxy/BusNames.h"
#include "dbus-proxy/BusWait.h"
#include "dbus-proxy/WardexAdapter.h"
#include "logger/RedisLogger.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusServiceWatcher>

#include <chrono>
#include <utility>

namespace orvo
{

namespace
{

// Status codes of the device for the supervisor's own failures.
constexpr std::int32_t kTimerRestartFailed = 400004;
constexpr std::int32_t kStartFailed = 400006;
constexpr std::int32_t kStopFailed = 400007;

// What the bus knows about owning a name.
constexpr unsigned kDoNotQueue = 4;
constexpr unsigned kPrimaryOwner = 1;
constexpr unsigned kAlreadyOwner = 4;

/// The eyes on vistor's name. Without a bus they see nothing: the bus library aborts the process
/// that wants to watch a name over a connection that has ended.
QDBusServiceWatcher* watchVistor(QObject* parent)
{
    const QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.isConnected())
    {
        return new QDBusServiceWatcher(parent);
    }
    return new QDBusServiceWatcher(QLatin1String(kVistorBusName), bus,
                                   QDBusServiceWatcher::WatchForRegistration |
                                       QDBusServiceWatcher::WatchForUnregistration,
                                   parent);
}

/// Takes a name on the bus; false also when the bus does not answer in time, or ends meanwhile.
bool takeName(const QDBusConnection& bus, const char* name)
{
    QDBusMessage request = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("RequestName"));
    request << QString::fromLatin1(name) << kDoNotQueue;
    const QDBusMessage answer =
        waitForReply(bus.asyncCall(request), bus, std::chrono::milliseconds(kBusPatienceMs));
    const unsigned ownership = answer.arguments().value(0).toUInt();
    return answer.type() == QDBusMessage::ReplyMessage &&
           (ownership == kPrimaryOwner || ownership == kAlreadyOwner);
}

} // namespace

DbusCmd::DbusCmd(ServiceInfo* serviceInfo, Logger::RedisLogger* logger)
    : m_logger(logger), m_serviceInfo(serviceInfo), m_watcher(watchVistor(this)),
      m_serviceAction(serviceInfo, logger)
{
    new WardexAdapter(this); // a child: it goes with this object

    QDBusConnection bus = QDBusConnection::systemBus();
    if (!takeName(bus, kWardexBusName))
    {
        m_logger->log(Logger::ERROR, "Could not register DBus service %s", kWardexBusName);
    }
    if (!bus.registerObject(QLatin1String(kBusObjectPath), this, QDBusConnection::ExportAdaptors))
    {
        m_logger->log(Logger::ERROR, "Could not register DBus object");
    }
    connect(m_watcher, &QDBusServiceWatcher::serviceUnregistered, this,
            &DbusCmd::serviceUnregistered);
    connect(m_watcher, &QDBusServiceWatcher::serviceRegistered, this, &DbusCmd::serviceRegistered);
    m_watcher->addWatchedService(QLatin1String(kPictorBusName));
}

DbusCmd::~DbusCmd() = default;

bool DbusCmd::ping(const QString& name, QString& runLevel)
{
    // A service that answers without a run level is as good as down.
    runLevel = kRunLevelDown;
    return m_serviceInfo->isAlive(name, runLevel);
}

void DbusCmd::publishAvailability(const QVariantMap& serviceMap)
{
    for (auto entry = serviceMap.begin(); entry != serviceMap.end(); ++entry)
    {
        if (entry.value().toString() == kRunLevelUp)
        {
            m_serviceInfo->registerService(entry.key());
        }
        else
        {
            m_serviceInfo->unregisterService(entry.key());
        }
    }
    Q_EMIT signalServiceAvailability(serviceMap);
}

bool DbusCmd::isReplySuccess(std::int32_t code)
{
    if (code == 0)
    {
        return true;
    }
    m_logger->log(Logger::WARN, "reply code: 0x%x", static_cast<unsigned>(code));
    return false;
}

orvo::ErrorStatus DbusCmd::doPing(QString& runlevel)
{
    runlevel = kRunLevelUp;
    return {};
}

bool DbusCmd::isPostponed(BusCallQueue::Deed deed)
{
    if (!calledFromDBus())
    {
        return false;
    }
    if (m_calls.add(connection(), message(), std::move(deed)))
    {
        setDelayedReply(true);
        return true;
    }
    m_logger->logOnce(Logger::WARN, "%s: %d calls are waiting, refusing more", "DbusCmd",
                      static_cast<int>(kWaitingCallLimit));
    if (message().isReplyRequired())
    {
        sendErrorReply(QDBusError::LimitsExceeded, QStringLiteral("too many calls are waiting"));
    }
    return true;
}

ErrorStatus DbusCmd::startService(const QString& name)
{
    return m_serviceAction.doStartService(name) ? ErrorStatus() : ErrorStatus(kStartFailed);
}

ErrorStatus DbusCmd::stopService(const QString& name)
{
    return m_serviceAction.doStopService(name) ? ErrorStatus() : ErrorStatus(kStopFailed);
}

QString DbusCmd::serviceStatus(const QString& name)
{
    if (!m_serviceInfo->isKnown(name))
    {
        return QStringLiteral("unknown");
    }
    const QString processName = m_serviceInfo->processName(name);
    if (processName.isEmpty())
    {
        return {};
    }
    return m_serviceInfo->isProcessRunning(processName) ? kRunLevelUp : kRunLevelDown;
}

orvo::ErrorStatus DbusCmd::doStartService(QString serviceName)
{
    const auto deed = [this, serviceName]
    {
        return QVariantList{QVariant::fromValue(startService(serviceName))};
    };
    return isPostponed(deed) ? ErrorStatus() : startService(serviceName);
}

orvo::ErrorStatus DbusCmd::doStopService(QString serviceName)
{
    const auto deed = [this, serviceName]
    {
        return QVariantList{QVariant::fromValue(stopService(serviceName))};
    };
    return isPostponed(deed) ? ErrorStatus() : stopService(serviceName);
}

orvo::ErrorStatus DbusCmd::getServiceList(QStringList& services)
{
    services = m_serviceInfo->registeredServices();
    return {};
}

orvo::ErrorStatus DbusCmd::getServiceStatus(QString serviceName, QString& serviceStatus)
{
    const auto deed = [this, serviceName]
    {
        return QVariantList{QVariant::fromValue(ErrorStatus()), this->serviceStatus(serviceName)};
    };
    if (!isPostponed(deed))
    {
        serviceStatus = this->serviceStatus(serviceName);
    }
    return {};
}

orvo::ErrorStatus DbusCmd::setServicePingTimeoutOneShot(QString serviceName, int timeout)
{
    if (!SuprSM::restartTimer(serviceName, timeout))
    {
        if (m_logger->isEnabled(Logger::WARN))
        {
            m_logger->log(Logger::WARN, "%s: restartTimer(%s, %d) failed !",
                          "setServicePingTimeoutOneShot", qPrintable(serviceName), timeout);
        }
        return ErrorStatus(kTimerRestartFailed);
    }
    if (m_logger->isEnabled(Logger::TRACE))
    {
        m_logger->log(Logger::TRACE, "%s: restartTimer(%s, %d)", "setServicePingTimeoutOneShot",
                      qPrintable(serviceName), timeout);
    }
    return {};
}

void DbusCmd::serviceRegistered(const QString& name)
{
    if (m_logger->isEnabled(Logger::TRACE))
    {
        m_logger->log(Logger::TRACE, "DBus service %s available", qPrintable(name));
    }
    if (!m_serviceInfo->registerService(name))
    {
        if (m_logger->isEnabled(Logger::WARN))
        {
            m_logger->log(Logger::WARN, "DBus service %s could not be registered internally?!",
                          qPrintable(name));
        }
    }
    SuprSM::registered(name);
}

void DbusCmd::serviceUnregistered(const QString& name)
{
    if (m_logger->isEnabled(Logger::TRACE))
    {
        m_logger->log(Logger::TRACE, "DBus Service %s unavailable", qPrintable(name));
    }
    if (!m_serviceInfo->unregisterService(name))
    {
        if (m_logger->isEnabled(Logger::WARN))
        {
            m_logger->log(Logger::WARN, "DBus service %s could not be unregistered internally?!",
                          qPrintable(name));
        }
    }
}

} // namespace orvo
