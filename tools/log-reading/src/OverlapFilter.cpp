#include "log-reading/OverlapFilter.h"

#include "log-reading/ReadRecord.h"

#include <algorithm>

namespace orvo
{

OverlapFilter::OverlapFilter(const std::vector<std::string>& stored)
{
    for (const std::string& raw : stored)
    {
        ++m_stored[raw];
        m_newest = std::max(m_newest, readRecord(raw).time);
    }
}

bool OverlapFilter::isNew(const std::string& published)
{
    if (m_stored.empty())
    {
        return true;
    }
    const std::int64_t time = readRecord(published).time;
    if (time > m_newest + kOverlapSeconds * ReadRecord::kUnitsPerSecond)
    {
        m_stored.clear();
        return true;
    }
    const auto found = m_stored.find(published);
    if (found == m_stored.end())
    {
        return true;
    }
    if (--found->second == 0)
    {
        m_stored.erase(found);
    }
    return false;
}

} // namespace orvo
