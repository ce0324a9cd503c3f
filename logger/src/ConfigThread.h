#pragma once

#include "Endpoint.h"
#include "RedisHandles.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace orvo::Logger
{

/// The thread that waits on the channel LOGGER:CFG for configurations of running programs.
///
/// Owns:    the thread, its event loop and its subscription. The subscription is not renewed when
///          Redis goes away; the thread then idles until it is ended.
/// Threads: made and ended by any; the consumer is called in the thread. Each instance has a flag
///          of its own, so that one which is still ending cannot be revived by its successor.
/// Errors:  when the connection cannot be made, "Error: ..." goes to standard error and the thread
///          ends at once: there is no live configuration then, everything else works.
class ConfigThread
{
public:
    /// Gets each published configuration text.
    using Consumer = std::function<void(ConfigThread& thread, const char* text)>;

    /// Starts the thread and waits until its loop is ready, or will never be.
    ConfigThread(Endpoint endpoint, Consumer consumer);
    /// Ends the thread, which takes up to kStopCheckSeconds. The caller must hold no lock that the
    /// consumer takes.
    ~ConfigThread();
    ConfigThread(const ConfigThread&) = delete;
    ConfigThread& operator=(const ConfigThread&) = delete;

    /// Tells the thread to end; does not wait.
    void requestStop();
    [[nodiscard]] bool isStopping();

private:
    enum class State
    {
        Starting,
        Running,
        Stopping
    };

    void configThread();
    bool connect();
    void run();
    void setState(State state);
    void forgetConnection();

    static void configThreadCb(redisAsyncContext* context, void* reply, void* self);
    static void connectCallback(const redisAsyncContext* context, int status);
    static void disconnectCallback(const redisAsyncContext* context, int status);
    static void timerFunc(int descriptor, short events, void* self);

    const Endpoint m_endpoint;
    const Consumer m_consumer;
    EventBase m_base;
    RedisAsyncConnection m_connection;

    std::mutex m_stateMutex;
    std::condition_variable m_stateChanged;
    State m_state{State::Starting};
    std::thread m_thread;
};

} // namespace orvo::Logger
