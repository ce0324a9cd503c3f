#include "LogRecord.h"

#include "logger/RedisLogger.h"

#include "Decimal.h"
#include "EscapeTable.h"

#include <algorithm>

#include <cstring>

namespace orvo::Logger
{

namespace
{

/// Nanoseconds of the last digit of a time stamp.
constexpr long kStampResolution = 100000;
constexpr std::size_t kStampDigits = 4;
/// Appends texts to a record as long as it has room.
class RecordWriter
{
public:
    explicit RecordWriter(RecordText& record) : m_record(record), m_at(record.data()) {}

    void append(std::string_view text)
    {
        const std::size_t length = std::min(text.size(), room());
        std::memcpy(m_at, text.data(), length);
        m_at += length;
        m_isCut = m_isCut || length < text.size();
    }
    template <std::size_t size>
    void append(const char (&text)[size])
    {
        if (room() < size - 1)
        {
            append(std::string_view(text, size - 1));
            return;
        }
        // Of a known length, which makes it a few moves.
        std::memcpy(m_at, text, size - 1);
        m_at += size - 1;
    }
    void append(const Decimal& number) { append(number.text()); }
    /// Terminates the record; answers its length. That of a cut one includes the terminator: its
    /// readers tell it by that.
    std::size_t finish()
    {
        *m_at = '\0';
        return m_isCut ? m_record.size() : static_cast<std::size_t>(m_at - m_record.data());
    }

private:
    [[nodiscard]] std::size_t room() const
    {
        return static_cast<std::size_t>(m_record.data() + m_record.size() - 1 - m_at);
    }

    RecordText& m_record;
    char* m_at;
    bool m_isCut{false};
};

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
    RecordWriter writer(record);
    writer.append("{\"T\":\"");
    writer.append(Decimal(static_cast<long>(origin.time.tv_sec)));
    writer.append(".");
    writer.append(Decimal(static_cast<long>(origin.time.tv_nsec) / kStampResolution, kStampDigits));
    writer.append("\", \"P\":\"");
    writer.append(Decimal(origin.pid));
    writer.append("\", \"C\":\"");
    writer.append(std::string_view(levelName(origin.level)));
    writer.append("\", \"S\":\"");
    writer.append(std::string_view(origin.source));
    writer.append("\", \"M\":\"");
    writer.append(std::string_view(escaped.data(), length));
    writer.append("\"}");
    return writer.finish();
}

} // namespace orvo::Logger
