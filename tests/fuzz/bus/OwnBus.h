#pragma once

#include "bus/BusMessage.h"

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace orvo::fuzz
{

/// The system bus of this process, made of this process: it does what a bus daemon does for its one
/// client, the QtDBus connection, and sends it any message. A real daemon would stand in the way of
/// that, and take most of the time.
///
/// Owns:    the socket below the temporary folder, and a thread that serves the connection.
/// Threads: send() and the answers from any thread. A service that is called answers in the bus's
///          thread, so that a client that waits is answered.
/// Errors:  a client that ends the connection ends the program: it was sent what is invalid, or it
///          broke.
class OwnBus
{
public:
    /// Makes what a service answers to a call; nothing: it does not.
    using Service = std::function<std::optional<BusMessage>(const BusMessage& call)>;

    /// Listens, and becomes the system bus of this process, whose connection must not exist yet.
    explicit OwnBus(Service service);
    ~OwnBus();
    OwnBus(const OwnBus&) = delete;
    OwnBus& operator=(const OwnBus&) = delete;

    /// Sends a message to the client as if it came from another one; answers its serial.
    std::uint32_t send(BusMessage message);

    /// The client's answer to that call, once it is there; taken from then on.
    std::optional<BusMessage> takeAnswer(std::uint32_t serial);

    /// Called in the bus's thread whenever an answer has come.
    void onAnswer(std::function<void()> wake);

private:
    void serve();
    void logIn(int connection);
    void handle(const BusMessage& message);
    [[nodiscard]] static std::optional<BusMessage> answerOfBus(const BusMessage& call);

    Service m_service;
    std::function<void()> m_wake;
    int m_listener;
    int m_connection{-1};
    std::mutex m_mutex;
    std::condition_variable m_connected;
    std::uint32_t m_serial{0};
    std::map<std::uint32_t, BusMessage> m_answers;
    std::thread m_thread;
};

} // namespace orvo::fuzz
