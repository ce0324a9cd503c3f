#include "RedisServer.h"

#include "Eventually.h"
#include "RedisClient.h"

#include <stdexcept>
#include <utility>

#include <csignal>
#include <unistd.h>

namespace orvo::test
{

namespace
{
constexpr int kBoundMs = 10000;
}

RedisServer::RedisServer(std::string socketPath, int tcpPort)
    : m_socketPath(std::move(socketPath)), m_tcpPort(tcpPort)
{
    start();
}

RedisServer::~RedisServer()
{
    m_process->kill();
    unlink(m_socketPath.c_str());
}

void RedisServer::start()
{
    unlink(m_socketPath.c_str());
    const std::string directory = m_socketPath.substr(0, m_socketPath.rfind('/'));
    m_process = std::make_unique<ChildProcess>(
        std::vector<std::string>{"redis-server", "--port", std::to_string(m_tcpPort), "--bind",
                                 "127.0.0.1", "--unixsocket", m_socketPath, "--save", "",
                                 "--appendonly", "no", "--dir", directory},
        "/dev/null");
    const auto answers = [this]
    {
        return RedisClient(m_socketPath).command({"PING"}).text == "PONG";
    };
    if (!eventually(answers, kBoundMs))
    {
        throw std::runtime_error("redis-server does not answer on " + m_socketPath);
    }
}

void RedisServer::kill()
{
    m_process->kill();
}

void RedisServer::stop()
{
    m_process->signal(SIGTERM);
    m_process->waitForEnd(kBoundMs);
}

void RedisServer::restart()
{
    m_process->kill();
    start();
}

void RedisServer::suspend() const
{
    m_process->signal(SIGSTOP);
}

void RedisServer::resume() const
{
    m_process->signal(SIGCONT);
}

} // namespace orvo::test
