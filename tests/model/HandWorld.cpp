#include "HandWorld.h"

#include "ModelState.h"

namespace orvo::model
{

void HandWorld::begin(const StepScript& script)
{
    m_script = script;
    m_looks = 0;
    m_isRebooting = false;
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
