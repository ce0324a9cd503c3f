#include "log-reading/RecordTail.h"

#include <algorithm>

namespace orvo
{

std::optional<std::size_t> RecordTail::begin(const std::vector<std::string>& window) const
{
    for (std::size_t end = window.size(); end > 0 && !m_seen.empty(); --end)
    {
        const std::size_t common = std::min(end, m_seen.size());
        if (std::equal(m_seen.rbegin(), m_seen.rbegin() + static_cast<std::ptrdiff_t>(common),
                       window.rbegin() + static_cast<std::ptrdiff_t>(window.size() - end)))
        {
            return end;
        }
    }
    return std::nullopt;
}

void RecordTail::add(const std::vector<std::string>& window, std::size_t first)
{
    m_seen.insert(m_seen.end(), window.begin() + static_cast<std::ptrdiff_t>(first), window.end());
    if (m_seen.size() > kRemembered)
    {
        m_seen.erase(m_seen.begin(), m_seen.end() - static_cast<std::ptrdiff_t>(kRemembered));
    }
}

} // namespace orvo
