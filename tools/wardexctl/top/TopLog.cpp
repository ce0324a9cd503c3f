#include "top/TopLog.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

namespace orvo::ctl
{

namespace
{
constexpr std::array<const char*, 6> kLevels = {"", "INFO", "WARN", "ERROR", "FATAL", "EMERG"};
} // namespace

TopLog::TopLog() = default;

void TopLog::add(std::vector<ReadRecord> records)
{
    for (ReadRecord& record : records)
    {
        if (m_query.passes(record))
        {
            m_shown.push_back(m_first + m_records.size());
        }
        m_records.push_back(std::move(record));
    }
    while (m_records.size() > kKept)
    {
        if (!m_shown.empty() && m_shown.front() == m_first)
        {
            m_shown.pop_front();
        }
        m_records.pop_front();
        ++m_first;
    }
}

bool TopLog::setFilter(const std::string& regex, std::string& complaint)
{
    LogWords words = m_words;
    words.regex = regex;
    return setWords(words, complaint);
}

void TopLog::nextLevel()
{
    LogWords words = m_words;
    const auto* const present = std::find(kLevels.begin(), kLevels.end(), words.level);
    words.level = kLevels[static_cast<std::size_t>(present - kLevels.begin() + 1) % kLevels.size()];
    std::string complaint;
    (void)setWords(words, complaint);
}

bool TopLog::setWords(const LogWords& words, std::string& complaint)
{
    auto query = LogQuery::of(words, 0, 0, complaint);
    if (!query)
    {
        return false;
    }
    m_words = words;
    m_query = std::move(*query);
    m_shown.clear();
    for (std::size_t index = 0; index < m_records.size(); ++index)
    {
        if (m_query.passes(m_records[index]))
        {
            m_shown.push_back(m_first + index);
        }
    }
    return true;
}

std::size_t TopLog::end() const
{
    if (!m_bottom)
    {
        return m_shown.size();
    }
    const auto behind = std::upper_bound(m_shown.begin(), m_shown.end(), *m_bottom);
    return static_cast<std::size_t>(std::distance(m_shown.begin(), behind));
}

void TopLog::scroll(int lines, std::size_t height)
{
    const auto count = static_cast<std::ptrdiff_t>(m_shown.size());
    const auto full =
        std::min(std::max<std::ptrdiff_t>(static_cast<std::ptrdiff_t>(height), 1), count);
    const auto wanted = std::max(static_cast<std::ptrdiff_t>(end()), full) + lines;
    if (wanted >= count || count == full)
    {
        follow();
        return;
    }
    m_bottom = m_shown[static_cast<std::size_t>(std::max(wanted, full) - 1)];
}

void TopLog::toOldest(std::size_t height)
{
    if (m_shown.size() > height && height > 0)
    {
        m_bottom = m_shown[height - 1];
    }
}

std::vector<const ReadRecord*> TopLog::window(std::size_t height) const
{
    // What the window showed may have gone with the oldest records.
    const std::size_t last = std::max(end(), std::min(height, m_shown.size()));
    std::vector<const ReadRecord*> records;
    for (std::size_t index = last - std::min(height, last); index < last; ++index)
    {
        records.push_back(&m_records[static_cast<std::size_t>(m_shown[index] - m_first)]);
    }
    return records;
}

std::vector<ReadRecord> TopLog::newest(std::size_t count) const
{
    const auto some = static_cast<std::ptrdiff_t>(std::min(count, m_records.size()));
    return {m_records.end() - some, m_records.end()};
}

} // namespace orvo::ctl
