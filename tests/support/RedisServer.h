#pragma once

#include "ChildProcess.h"

#include <memory>
#include <string>

namespace orvo::test
{

/// A real redis-server of the test's own, without persistence.
///
/// Owns:    the process and its socket file; both are gone with the object. The directory of the
///          socket must exist and its path must be short: a socket path has at most 107 bytes.
/// Threads: one at a time.
/// Errors:  std::runtime_error when the server does not answer within 10 s of its start.
class RedisServer
{
public:
    /// Listens on the socket, and on 127.0.0.1:tcpPort when that is not 0; ready on return.
    explicit RedisServer(std::string socketPath, int tcpPort = 0);
    ~RedisServer();
    RedisServer(const RedisServer&) = delete;
    RedisServer& operator=(const RedisServer&) = delete;

    [[nodiscard]] const std::string& socketPath() const { return m_socketPath; }
    [[nodiscard]] pid_t pid() const { return m_process->pid(); }

    /// SIGKILL; the socket file stays behind, as after a crash on the device.
    void kill();
    /// Ends the server in order; the socket file goes.
    void stop();
    /// Ends a server that still runs and starts an empty one on the same socket.
    void restart();
    /// The server neither reads nor answers from suspend() to resume().
    void suspend() const;
    void resume() const;

private:
    void start();

    std::string m_socketPath;
    int m_tcpPort;
    std::unique_ptr<ChildProcess> m_process;
};

} // namespace orvo::test
