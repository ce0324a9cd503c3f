#include "HandWorld.h"

#include "ModelState.h"

namespace orvo::model
{

namespace
{

/// What a command is done to: a service by its script, the package, or the device.
std::string subjectOf(const std::string& commandLine)
{
    if (commandLine == "reboot")
    {
        return "the device";
    }
    const std::string script = commandLine.substr(0, commandLine.find(' '));
    const bool isPackage = script == "rm" || script == "/etc/init.d/mf-optware";
    return isPackage ? "the package" : script;
}

} // namespace

void HandWorld::begin(const StepScript& script)
{
    m_script = script;
    m_looks = 0;
    m_isRebooting = false;
    m_actsOn.clear();
    m_deeds.clear();
}

void HandWorld::act(const std::string& commandLine)
{
    if (m_isDeveloper && !m_script.isCommanded)
    {
        m_breaches.push_back("an action on a developer's device: " + commandLine);
    }
    if (m_isRebooting)
    {
        m_breaches.push_back("an action after the reboot command: " + commandLine);
    }
    const std::string subject = subjectOf(commandLine);
    if (!m_actsOn.empty() && m_actsOn != subject)
    {
        m_breaches.push_back("two actions at once: on " + m_actsOn + " and " + subject);
    }
    m_actsOn = subject;
}

PingAnswer HandWorld::ping(const std::string& service)
{
    m_deeds.push_back("ping " + service);
    return m_script.answer;
}

ProcessEnd HandWorld::run(const std::string& commandLine)
{
    m_deeds.push_back("run " + commandLine);
    if (commandLine != "/bin/ps")
    {
        act(commandLine);
        return {!m_script.doScriptsFail, "", ""};
    }
    const char look = m_looks < m_script.looks.size() ? m_script.looks[m_looks] : 'g';
    ++m_looks;
    std::string out = "PID CMD\n 1 /sbin/init\n";
    for (const ServiceFacts& facts : kServiceFacts)
    {
        out += look == 'r' ? std::string(" 9 ") + facts.process + "\n" : "";
    }
    return {look != 'f', look == 'f' ? "" : out, look == 'f' ? "no \"/proc\"\n" : ""};
}

void HandWorld::shell(const std::string& commandLine)
{
    m_deeds.push_back("shell " + commandLine);
    act(commandLine);
    m_isRebooting = m_isRebooting || commandLine == "reboot";
}

bool HandWorld::openWatchdog()
{
    m_deeds.emplace_back("open watchdog");
    return true;
}

void HandWorld::feed()
{
    m_deeds.emplace_back("feed");
    if (m_isRebooting)
    {
        m_breaches.emplace_back("a feed after the reboot command");
    }
}

void HandWorld::record(const std::string& level, const std::string& text)
{
    m_deeds.push_back("record " + level + " " + text);
}

void HandWorld::syslog(int priority, const std::string& text)
{
    m_deeds.push_back("syslog " + std::to_string(priority) + " " + text);
}

void HandWorld::signal(const std::string& availability)
{
    m_deeds.push_back("signal " + availability);
}

} // namespace orvo::model
