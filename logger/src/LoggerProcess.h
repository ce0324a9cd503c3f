#pragma once

#include "logger/RedisLogger.h"

#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

namespace orvo::Logger
{

class ConfigThread;
struct Endpoint;

/// What all loggers of a process share.
///
/// Owns:    the configuration thread, from the first logger on until the last one goes; borrows the
///          loggers' implementations while they are attached. The object is never destroyed, so
///          that a logger with static storage may outlive everything else.
/// Threads: g_mutex serialises every operation of every logger; it guards all members and the
///          implementations themselves. It is never held while the configuration thread is joined.
class LoggerProcess
{
public:
    using Implementation = RedisLogger::RedisLoggerPimpl;

    static LoggerProcess& instance();
    LoggerProcess(const LoggerProcess&) = delete;
    LoggerProcess& operator=(const LoggerProcess&) = delete;

    /// Needs no object, so that a call at a masked level has nothing to do but to lock it.
    static std::mutex& mutex() { return g_mutex; }

    /// Adds a logger; the first one starts the configuration thread at its endpoint. Caller locks.
    void attach(Implementation* logger, const Endpoint& endpoint);

    /// Removes a logger. With the last one goes the configuration thread, told to end and handed
    /// to the caller, who locks for this call and destroys the thread when the lock is released.
    std::unique_ptr<ConfigThread> detach(Implementation* logger);

    /// Remembers a text of a once-only call; false when it was there already. Caller locks.
    static bool rememberText(std::string_view text);

    /// True for the first of several calls with the same text in a row, so that loggers which share
    /// an unusable crash pattern complain about it once. Caller locks.
    bool isNewComplaint(const std::string& text);

private:
    LoggerProcess() = default;
    void applyToAll(ConfigThread& thread, const char* text);

    inline static std::mutex g_mutex;
    std::set<Implementation*> m_registry;
    std::unique_ptr<ConfigThread> m_configThread;
    std::string m_lastComplaint;
};

} // namespace orvo::Logger
