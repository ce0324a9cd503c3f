#include "LogRecord.h"

#include "logger/RedisLogger.h"

#include "BoundedText.h"
#include "Decimal.h"
#include "EscapeTable.h"

namespace orvo::Logger
{

namespace
{

/// Nanoseconds of the last digit of a time stamp.
constexpr long kStampResolution = 100000;
constexpr std::size_t kStampDigits = 4;

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

std::size_t escapeMessage(std::string_view message, EscapedText& escaped)
{
    static EscapeTable table;
    table.followLocale();
    char* out = escaped.data();
    // Twice the bytes for the longest replacement, one for the terminator.
    std::size_t room = escaped.size() - 1;
    while (!message.empty() && room >= 2)
    {
        const std::string_view fitting = message.substr(0, room / 2);
        char* const end = table.escape(fitting, out);
        room -= static_cast<std::size_t>(end - out);
        out = end;
        message.remove_prefix(fitting.size());
    }
    *out = '\0';
    return static_cast<std::size_t>(out - escaped.data());
}

std::size_t formatRecord(const RecordOrigin& origin, std::string_view message, RecordText& record)
{
    EscapedText escaped;
    const std::size_t length = escapeMessage(message, escaped);
    BoundedText text(record.data(), record.size());
    text.append("{\"T\":\"");
    text.append(Decimal(static_cast<long>(origin.time.tv_sec)));
    text.append(".");
    text.append(Decimal(static_cast<long>(origin.time.tv_nsec) / kStampResolution, kStampDigits));
    text.append("\", \"P\":\"");
    text.append(Decimal(origin.pid));
    text.append("\", \"C\":\"");
    text.append(std::string_view(levelName(origin.level)));
    text.append("\", \"S\":\"");
    text.append(std::string_view(origin.source));
    text.append("\", \"M\":\"");
    text.append(std::string_view(escaped.data(), length));
    text.append("\"}");
    const std::size_t whole = text.finish();
    // The length of a cut record includes the terminator: its readers tell it by that.
    return text.isCut() ? record.size() : whole;
}

} // namespace orvo::Logger
