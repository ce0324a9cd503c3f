#include "LogRecord.h"

#include "logger/RedisLogger.h"

#include <algorithm>

#include <cctype>
#include <cstdio>

namespace orvo::Logger
{

namespace
{

/// Nanoseconds of the last digit of a time stamp.
constexpr long kStampResolution = 100000;

bool isEscaped(char byte)
{
    return byte == '"' || byte == '/' || byte == '\\';
}

} // namespace

const char* levelName(std::uint32_t level)
{
    switch (level)
    {
    case DEBUG:
        return "DEBUG";
    case DIAG:
        return "DIAG";
    case TRACE:
        return "TRACE";
    case INFO:
        return "INFO";
    case WARN:
        return "WARN";
    case ERROR:
        return "ERROR";
    case FATAL:
        return "FATAL";
    case EMERG:
        return "EMERG";
    default:
        return "UNKNOWN";
    }
}

void escapeMessage(std::string_view message, EscapedText& escaped)
{
    // Two bytes for the longest replacement, one for the terminator.
    constexpr std::size_t kLast = kEscapedCapacity - 2;
    std::size_t used = 0;
    for (const char byte : message)
    {
        if (used >= kLast)
        {
            break;
        }
        // Also for line ends and tabs: a record never spans lines.
        if (std::isprint(static_cast<unsigned char>(byte)) == 0)
        {
            escaped[used++] = '#';
            continue;
        }
        if (isEscaped(byte))
        {
            escaped[used++] = '\\';
        }
        escaped[used++] = byte;
    }
    escaped[used] = '\0';
}

std::size_t formatRecord(const RecordOrigin& origin, std::string_view message, RecordText& record)
{
    EscapedText escaped;
    escapeMessage(message, escaped);
    const int length = std::snprintf(
        record.data(), record.size(),
        "{\"T\":\"%ld.%4.4ld\", \"P\":\"%d\", \"C\":\"%s\", \"S\":\"%s\", \"M\":\"%s\"}",
        static_cast<long>(origin.time.tv_sec),
        static_cast<long>(origin.time.tv_nsec) / kStampResolution, origin.pid,
        levelName(origin.level), origin.source, escaped.data());
    // A cut record includes the terminator: its readers tell it by that.
    return std::min(static_cast<std::size_t>(std::max(length, 0)), record.size());
}

} // namespace orvo::Logger
