#include "RecordFrame.h"

#include "Decimal.h"
#include "logger/LogDefaults.h"

#include <cstring>

namespace orvo::Logger
{

namespace
{

constexpr std::string_view kLineEnd = "\r\n";
/// Two signs and the digits of any number.
constexpr std::size_t kNumberCapacity = 16;

std::string argument(std::string_view text)
{
    return "$" + std::to_string(text.size()) + "\r\n" + std::string(text) + "\r\n";
}

char* put(char* at, std::string_view text)
{
    std::memcpy(at, text.data(), text.size());
    return at + text.size();
}

} // namespace

RecordFrame::RecordFrame(std::string_view listKey)
    : m_key(argument(listKey.substr(0, listKey.find('\0')))), m_maxEntries(kDefaultMaxEntries)
{
    m_text = "*3\r\n" + argument("RPUSH") + m_key + "$";
    m_recordStart = m_text.size();
    makeBetween(m_maxEntries);
    m_between.reserve(m_between.size() + kNumberCapacity);
    m_text.resize(m_recordStart + m_between.capacity() +
                  2 * (kNumberCapacity + 2 * kLineEnd.size() + kRecordCapacity));
}

void RecordFrame::makeBetween(int maxEntries)
{
    const Decimal number(maxEntries);
    // A maximum below zero is sent with both its signs; Redis refuses it, and the list is not cut.
    const Decimal size(static_cast<long>(1 + number.text().size()));

    m_between.assign("*4\r\n$5\r\nLTRIM\r\n").append(m_key);
    m_between.append("$").append(size.text()).append("\r\n-");
    m_between.append(number.text()).append("\r\n$2\r\n-1\r\n");
    m_trimLength = m_between.size();
    m_between.append("*3\r\n$7\r\nPUBLISH\r\n").append(m_key).append("$");
    m_maxEntries = maxEntries;
}

void RecordFrame::take(const RecordText& record, std::size_t length, int maxEntries)
{
    if (maxEntries != m_maxEntries)
    {
        makeBetween(maxEntries);
    }
    const Decimal size(static_cast<long>(length));
    const std::string_view body(record.data(), length);

    char* const start = m_text.data();
    char* at = put(put(start + m_recordStart, size.text()), kLineEnd);
    char* const pushEnd = put(put(at, body), kLineEnd);
    m_pushEnd = static_cast<std::size_t>(pushEnd - start);
    m_publicationStart = m_pushEnd + m_trimLength;
    at = put(put(put(pushEnd, m_between), size.text()), kLineEnd);
    char* const end = put(put(at, body), kLineEnd);
    m_end = static_cast<std::size_t>(end - start);
}

} // namespace orvo::Logger
