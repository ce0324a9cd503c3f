#include "common/OrderFile.h"

#include <array>
#include <sstream>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvo::simulator
{

namespace
{
constexpr std::size_t kReadChunk = 4096;
constexpr long long kNanosecondsPerSecond = 1000000000;

long long modifiedNs(const struct stat& status)
{
    return status.st_mtim.tv_sec * kNanosecondsPerSecond + status.st_mtim.tv_nsec;
}

std::string contentOf(int file)
{
    std::string content;
    std::array<char, kReadChunk> chunk{};
    ssize_t count = 0;
    while ((count = read(file, chunk.data(), chunk.size())) > 0)
    {
        content.append(chunk.data(), static_cast<std::size_t>(count));
    }
    return content;
}
} // namespace

Order OrderFile::next()
{
    Order order = peek();
    if (m_position + 1 < m_orders.size())
    {
        ++m_position;
    }
    return order;
}

Order OrderFile::peek()
{
    refresh();
    return m_orders.empty() ? Order() : m_orders[m_position];
}

void OrderFile::refresh()
{
    struct stat named = {};
    if (stat(m_path.c_str(), &named) != 0)
    {
        m_file.reset();
        m_orders.clear();
        m_position = 0;
        return;
    }
    struct stat held = {};
    const bool same = m_file.isOpen() && fstat(m_file.get(), &held) == 0 &&
                      held.st_dev == named.st_dev && held.st_ino == named.st_ino &&
                      named.st_size == m_size && modifiedNs(named) == m_modifiedNs;
    if (!same)
    {
        load();
    }
}

void OrderFile::load()
{
    m_file.reset(open(m_path.c_str(), O_RDONLY | O_CLOEXEC));
    m_orders.clear();
    m_position = 0;
    struct stat status = {};
    if (!m_file.isOpen() || fstat(m_file.get(), &status) != 0)
    {
        m_file.reset();
        return;
    }
    m_size = status.st_size;
    m_modifiedNs = modifiedNs(status);
    std::istringstream lines(contentOf(m_file.get()));
    for (std::string line; std::getline(lines, line);)
    {
        if (line.find_first_not_of(" \t\r") != std::string::npos)
        {
            m_orders.push_back(Order::parse(line));
        }
    }
}

} // namespace orvo::simulator
