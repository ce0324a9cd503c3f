#include "ScriptedRedis.h"

#include "UnixListener.h"

#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace orvo::test
{

namespace
{

/// Takes one whole command ("*2\r\n$3\r\nGET\r\n...") off the front of what came.
std::optional<std::vector<std::string>> takeCommand(std::string& received)
{
    std::size_t at = 0;
    const auto number = [&](char kind) -> std::optional<std::size_t>
    {
        const std::size_t end = received.find("\r\n", at);
        if (end == std::string::npos || received[at] != kind)
        {
            return std::nullopt;
        }
        const auto value = std::stoul(received.substr(at + 1, end - at - 1));
        at = end + 2;
        return value;
    };
    const std::optional<std::size_t> words = number('*');
    std::vector<std::string> command;
    for (std::size_t word = 0; words && word < *words; ++word)
    {
        const std::optional<std::size_t> length = number('$');
        if (!length || received.size() < at + *length + 2)
        {
            return std::nullopt;
        }
        command.push_back(received.substr(at, *length));
        at += *length + 2;
    }
    if (!words)
    {
        return std::nullopt;
    }
    received.erase(0, at);
    return command;
}

std::string joined(const std::vector<std::string>& words)
{
    std::string line;
    for (const std::string& word : words)
    {
        line += (line.empty() ? "" : " ") + word;
    }
    return line;
}

} // namespace

class ScriptedRedis::Loop
{
public:
    Loop(const std::string& socketPath, Script script)
        : m_listener(socketPath, SOMAXCONN), m_script(std::move(script)), m_stop(eventfd(0, 0)),
          m_thread(&Loop::run, this)
    {
    }
    ~Loop()
    {
        eventfd_write(m_stop, 1);
        m_thread.join();
        for (const auto& connection : m_received)
        {
            close(connection.first);
        }
        close(m_stop);
    }
    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;

    std::vector<std::string> commands()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_commands;
    }

private:
    void run()
    {
        for (;;)
        {
            std::vector<pollfd> waiting{{m_stop, POLLIN, 0}, {m_listener.descriptor(), POLLIN, 0}};
            for (const auto& connection : m_received)
            {
                waiting.push_back({connection.first, POLLIN, 0});
            }
            poll(waiting.data(), waiting.size(), -1);
            if (waiting[0].revents != 0)
            {
                return;
            }
            if (waiting[1].revents != 0)
            {
                m_received[accept(m_listener.descriptor(), nullptr, nullptr)];
            }
            for (std::size_t index = 2; index < waiting.size(); ++index)
            {
                if (waiting[index].revents != 0 && !serve(waiting[index].fd))
                {
                    close(waiting[index].fd);
                    m_received.erase(waiting[index].fd);
                }
            }
        }
    }

    /// False when the connection is over.
    bool serve(int connection)
    {
        char block[4096];
        const ssize_t length = read(connection, block, sizeof block);
        if (length <= 0)
        {
            return false;
        }
        std::string& received = m_received[connection];
        received.append(block, static_cast<std::size_t>(length));
        while (const auto command = takeCommand(received))
        {
            {
                const std::lock_guard<std::mutex> lock(m_mutex);
                m_commands.push_back(joined(*command));
            }
            const ScriptedAnswer answer = m_script(*command);
            send(connection, answer.bytes.data(), answer.bytes.size(), MSG_NOSIGNAL);
            if (answer.hangsUp)
            {
                return false;
            }
        }
        return true;
    }

    UnixListener m_listener;
    Script m_script;
    int m_stop;
    std::map<int, std::string> m_received;
    std::mutex m_mutex;
    std::vector<std::string> m_commands;
    std::thread m_thread;
};

ScriptedRedis::ScriptedRedis(const std::string& socketPath, Script script)
    : m_loop(std::make_unique<Loop>(socketPath, std::move(script)))
{
}

ScriptedRedis::~ScriptedRedis() = default;

std::vector<std::string> ScriptedRedis::commands() const
{
    return m_loop->commands();
}

} // namespace orvo::test
