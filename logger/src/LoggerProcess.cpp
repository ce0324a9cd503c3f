#include "LoggerProcess.h"

#include "ConfigThread.h"
#include "RedisLoggerPimpl.h"

#include <functional>

namespace orvo::Logger
{

namespace
{

std::set<std::string, std::less<>>& onceTexts()
{
    static std::set<std::string, std::less<>> texts;
    return texts;
}

} // namespace

LoggerProcess& LoggerProcess::instance()
{
    // Made by the first logger's constructor, the set of texts is destroyed after every logger.
    static auto* process = ((void)onceTexts(), new LoggerProcess);
    return *process;
}

void LoggerProcess::attach(Implementation* logger, const Endpoint& endpoint)
{
    m_registry.insert(logger);
    if (m_registry.size() == 1 && m_configThread == nullptr)
    {
        m_configThread = std::make_unique<ConfigThread>(
            endpoint, [this](ConfigThread& thread, const char* text) { applyToAll(thread, text); });
    }
}

std::unique_ptr<ConfigThread> LoggerProcess::detach(Implementation* logger)
{
    m_registry.erase(logger);
    if (!m_registry.empty() || m_configThread == nullptr)
    {
        return nullptr;
    }
    m_configThread->requestStop();
    return std::move(m_configThread);
}

void LoggerProcess::applyToAll(ConfigThread& thread, const char* text)
{
    const std::lock_guard<std::mutex> lock(g_mutex);
    // A thread that is ending has a successor when a new first logger came meanwhile; loggers hear
    // from that one.
    if (thread.isStopping())
    {
        return;
    }
    for (Implementation* logger : m_registry)
    {
        logger->applyConfiguration(text, true);
    }
}

bool LoggerProcess::rememberText(std::string_view text)
{
    auto& texts = onceTexts();
    if (texts.find(text) != texts.end())
    {
        return false;
    }
    texts.emplace(text);
    return true;
}

bool LoggerProcess::isNewComplaint(const std::string& text)
{
    if (text == m_lastComplaint)
    {
        return false;
    }
    m_lastComplaint = text;
    return true;
}

} // namespace orvo::Logger
