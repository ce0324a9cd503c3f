#include "ServiceAction.h"

#include "DevicePaths.h"
#include "ProcessRun.h"
#include "ServiceInfo.h"
#include "ShellCommand.h"
#include "SupervisionLimits.h"
#include "logger/RedisLogger.h"

#include <QProcess>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <string>

#include <syslog.h>
#include <unistd.h>

namespace orvo
{

namespace
{

constexpr const char kRestartSystemText[] = "SUPERVISOR RESTARTING SYSTEM via /dev/watchdog ...";
constexpr const char kRestartSystemSavedText[] =
    "SUPERVISOR WOULD RESTART SYSTEM via /dev/watchdog ... but saved via developer mode";
constexpr const char kRestartPackageText[] =
    "SUPERVISOR PING timeout retry exceeding threshold: restarting mf-optware";
constexpr const char kRestartPackageSavedText[] =
    "SUPERVISOR would restart mf-optware, but saved via developer mode";

} // namespace

ServiceAction::ServiceAction(ServiceInfo* serviceInfo, Logger::RedisLogger* logger)
    : m_logger(logger), m_serviceInfo(serviceInfo)
{
}

ServiceAction::~ServiceAction() = default;

bool ServiceAction::isMappable(const char* operation, const QString& name)
{
    if (!m_serviceInfo->processName(name).isEmpty())
    {
        return true;
    }
    if (m_logger->isEnabled(Logger::ERROR))
    {
        m_logger->log(Logger::ERROR, "%s: Internal Error: service %s known but not mappable ?!",
                      operation, qPrintable(name));
    }
    return false;
}

bool ServiceAction::doStartService(const QString& name)
{
    if (!m_serviceInfo->isKnown(name) || !isMappable("doStartService", name))
    {
        return false;
    }
    return m_serviceInfo->isProcessRunning(m_serviceInfo->processName(name)) ||
           runInitScript(name, true);
}

bool ServiceAction::doStopService(const QString& name)
{
    if (!m_serviceInfo->isKnown(name) || !isMappable("doStopService", name))
    {
        return false;
    }
    return m_serviceInfo->isProcessRunning(m_serviceInfo->processName(name)) &&
           runInitScript(name, false);
}

void ServiceAction::restartSystem(bool developerMode)
{
    if (developerMode)
    {
        m_logger->logOnce(Logger::EMERG, "%s: %s", program_invocation_short_name,
                          kRestartSystemSavedText);
        syslogOnce(LOG_CRIT, "%s", kRestartSystemSavedText);
        return;
    }
    m_logger->log(Logger::EMERG, "%s: %s", program_invocation_short_name, kRestartSystemText);
    syslog(LOG_CRIT, "%s", kRestartSystemText);
    runInShell(kRebootCommand);
    for (;;)
    {
        sleep(kRebootNapSeconds); // NOLINT(concurrency-mt-unsafe): SIGALRM is not used
    }
}

void ServiceAction::restartPackage(bool developerMode)
{
    if (developerMode)
    {
        m_logger->logOnce(Logger::FATAL, "%s", kRestartPackageSavedText);
        syslogOnce(LOG_CRIT, "%s", kRestartPackageSavedText);
        return;
    }
    m_logger->log(Logger::FATAL, "%s", kRestartPackageText);
    syslog(LOG_CRIT, "%s", kRestartPackageText);
    runInShell(kRemoveCoresCommand);
    runInShell(kRestartPackageCommand);
}

bool ServiceAction::runInitScript(const QString& name, bool restart)
{
    const QString script = m_serviceInfo->initScript(name);
    if (script.isEmpty())
    {
        return false;
    }
    QString out;
    QString err;
    return runCommand(script + QLatin1String(restart ? kInitScriptRestart : kInitScriptStop), out,
                      err);
}

bool ServiceAction::runCommand(const QString& command, QString& out, QString& err)
{
    QStringList words = QProcess::splitCommand(command);
    const QString program = words.isEmpty() ? QString() : words.takeFirst();
    const ProcessOutcome outcome = runProcess(program, words);
    out = outcome.out;
    err = outcome.err;
    return outcome.succeeded();
}

void ServiceAction::syslogOnce(int priority, const char* format, ...)
{
    static std::set<std::string> sentTexts;

    std::array<char, kSyslogTextBytes> text{};
    va_list arguments;
    va_start(arguments, format);
    (void)std::vsnprintf(text.data(), text.size(), format, arguments); // cut texts are sent, too
    va_end(arguments);

    if (sentTexts.insert(text.data()).second)
    {
        syslog(priority, "%s", text.data());
    }
}

} // namespace orvo
