#pragma once

#include "UnixListener.h"

#include "quorl/QuorlWire.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace orvo::test
{

/// The quorl service at its real socket, in a thread of its own: reads one request per connection,
/// answers it as told and closes.
///
/// From the start it answers every request with the value "0.0.0.0" of 7 characters. Only for
/// programs that run in a box, for the socket's path is fixed.
///
/// Threads: the operations may be called from any thread; an answer holds from the next request on.
/// Errors:  see UnixListener.
class QuorlServer
{
public:
    QuorlServer();
    ~QuorlServer();
    QuorlServer(const QuorlServer&) = delete;
    QuorlServer& operator=(const QuorlServer&) = delete;

    /// The bytes of the reply, as many or few as given.
    void answers(const std::string& bytes);

    /// A reply to quorl_getConfig.
    void answersConfig(const std::string& value, std::int32_t result);

    /// Closes each connection when the request has come, without reading it: the client's read
    /// fails.
    void hangsUp();

    /// Closes each connection at once: the client's write fails, when it writes after hungUp() has
    /// counted the connection.
    void hangsUpAtOnce();
    [[nodiscard]] int hungUp() const;

    /// Holds every answer back until release() is called.
    void holds();
    void release();

    /// The requests so far, headers included, in the order of their arrival.
    [[nodiscard]] std::vector<std::string> requests() const;

private:
    enum class Manner
    {
        kAnswers,
        kHolds,
        kHangsUp,
        kHangsUpAtOnce
    };
    void behave(Manner manner);
    [[nodiscard]] Manner currentManner() const;
    void serve();
    void handle(int connection);

    static constexpr int kBacklog = 64;

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::string m_answer;
    std::vector<std::string> m_requests;
    Manner m_manner{Manner::kAnswers};
    int m_hungUp{0};
    UnixListener m_listener{QuorlWire::kSocketPath, kBacklog};
    std::thread m_thread;
};

} // namespace orvo::test
