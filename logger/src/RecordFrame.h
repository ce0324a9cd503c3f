#pragma once

#include "LogRecord.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace orvo::Logger
{

/// The three commands that write a record, as they go over the wire, back to back. What does not
/// change from one record to the next is made once: the device writes many records and has little
/// time for each.
///
/// Shape:   RPUSH key record, LTRIM key -maxEntries -1, PUBLISH key record, each in the protocol's
///          form "*arguments", then "$length" and the bytes of every argument. The key ends at its
///          first zero byte.
/// Owns:    room for the longest record and the longest number; taking a record never allocates.
class RecordFrame
{
public:
    explicit RecordFrame(std::string_view listKey);

    /// Puts in another record. The views below hold until the next call.
    void take(const RecordText& record, std::size_t length, int maxEntries);

    [[nodiscard]] std::string_view whole() const { return {m_text.data(), m_end}; }
    [[nodiscard]] std::string_view push() const { return whole().substr(0, m_pushEnd); }
    [[nodiscard]] std::string_view trim() const
    {
        return whole().substr(m_pushEnd, m_publicationStart - m_pushEnd);
    }
    [[nodiscard]] std::string_view publication() const
    {
        return whole().substr(m_publicationStart);
    }

private:
    void makeBetween(int maxEntries);

    const std::string m_key; // as an argument, with its length
    int m_maxEntries;
    std::string m_between; // LTRIM, and PUBLISH up to the record's length
    std::size_t m_trimLength{};
    std::size_t m_recordStart{}; // of RPUSH: where the record's length stands
    std::string m_text;
    std::size_t m_pushEnd{};
    std::size_t m_publicationStart{};
    std::size_t m_end{};
};

} // namespace orvo::Logger
