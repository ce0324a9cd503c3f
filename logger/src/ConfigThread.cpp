#include "ConfigThread.h"

#include "SubscriptionMessage.h"
#include "logger/LogDefaults.h"

#include <hiredis/adapters/libevent.h>

#include <event2/thread.h>

#include <system_error>
#include <utility>

#include <csignal>
#include <cstdio>

namespace orvo::Logger
{

ConfigThread::ConfigThread(Endpoint endpoint, Consumer consumer)
    : m_endpoint(std::move(endpoint)), m_consumer(std::move(consumer))
{
    try
    {
        m_thread = std::thread(&ConfigThread::configThread, this);
    }
    catch (const std::system_error& error)
    {
        std::fprintf(stderr, "Error: %s\n", error.what());
        return;
    }
    std::unique_lock<std::mutex> lock(m_stateMutex);
    m_stateChanged.wait(lock, [this] { return m_state != State::Starting; });
}

ConfigThread::~ConfigThread()
{
    requestStop();
    if (m_thread.joinable())
    {
        m_thread.join();
    }
}

void ConfigThread::requestStop()
{
    setState(State::Stopping);
}

bool ConfigThread::isStopping()
{
    const std::lock_guard<std::mutex> lock(m_stateMutex);
    return m_state == State::Stopping;
}

void ConfigThread::setState(State state)
{
    {
        const std::lock_guard<std::mutex> lock(m_stateMutex);
        m_state = state;
    }
    m_stateChanged.notify_all();
}

void ConfigThread::configThread()
{
    // A Redis that goes away between two records must not end the supervisor.
    std::signal(SIGPIPE, SIG_IGN);
    if (connect())
    {
        run();
    }
    else
    {
        // Whoever waits for the loop would wait for ever.
        setState(State::Stopping);
    }
}

bool ConfigThread::connect()
{
    m_connection.reset(m_endpoint.port == 0
                           ? redisAsyncConnectUnix(m_endpoint.unixPath.c_str())
                           : redisAsyncConnect(m_endpoint.host.c_str(), m_endpoint.port));
    if (m_connection == nullptr || m_connection->err != 0)
    {
        std::fprintf(stderr, "Error: %s\n",
                     m_connection == nullptr ? "Out of memory" : m_connection->errstr);
        m_connection.reset();
        return false;
    }
    evthread_use_pthreads();
    m_base.reset(event_base_new());
    if (m_base == nullptr)
    {
        std::fputs("Error: no event loop\n", stderr);
        m_connection.reset();
        return false;
    }
    m_connection->data = this;
    redisLibeventAttach(m_connection.get(), m_base.get());
    redisAsyncSetConnectCallback(m_connection.get(), connectCallback);
    redisAsyncSetDisconnectCallback(m_connection.get(), disconnectCallback);
    if (redisAsyncCommand(m_connection.get(), configThreadCb, this, "SUBSCRIBE %s",
                          kConfigChannel) != REDIS_OK)
    {
        std::fputs("Error: no subscription\n", stderr);
        m_connection.reset();
        return false;
    }
    return true;
}

void ConfigThread::run()
{
    const timeval period{kStopCheckSeconds, 0};
    Event timer(event_new(m_base.get(), -1, EV_PERSIST, timerFunc, this));
    event_add(timer.get(), &period);
    setState(State::Running);
    event_base_dispatch(m_base.get());
    m_connection.reset();
    timer.reset();
    m_base.reset();
}

void ConfigThread::forgetConnection()
{
    // hiredis frees the context itself when the connection ends by itself; freeing it when the loop
    // ends is then one time too many.
    (void)m_connection.release();
}

void ConfigThread::configThreadCb(redisAsyncContext* /*context*/, void* reply, void* self)
{
    auto* thread = static_cast<ConfigThread*>(self);
    if (reply == nullptr)
    {
        thread->forgetConnection();
        return;
    }
    const char* text = publishedText(static_cast<const redisReply*>(reply));
    if (text != nullptr)
    {
        thread->m_consumer(*thread, text);
    }
}

void ConfigThread::connectCallback(const redisAsyncContext* context, int status)
{
    if (status != REDIS_OK)
    {
        std::fprintf(stderr, "Error: %s\n", context->errstr);
    }
}

void ConfigThread::disconnectCallback(const redisAsyncContext* context, int status)
{
    if (status != REDIS_OK)
    {
        std::fprintf(stderr, "Error: %s\n", context->errstr);
    }
}

void ConfigThread::timerFunc(int /*descriptor*/, short /*events*/, void* self)
{
    auto* thread = static_cast<ConfigThread*>(self);
    if (thread->isStopping())
    {
        event_base_loopbreak(thread->m_base.get());
    }
}

} // namespace orvo::Logger
