#pragma once

#include <QDBusArgument>
#include <QMetaType>
#include <QString>

#include <cstdint>

namespace orvo
{

/// What every bus method of the device answers first: a code and the device's text for it.
///
/// Shape:   on the bus (is): INT32 code, STRING message; no text is looked up when one arrives.
/// Units:   code 0 is success, with an empty message; the bands are described in ErrorMessages.h.
/// Threads: an ordinary value; the table behind it is constant.
/// Errors:  a code without a row is kept, gets the fixed text "Unknown error for code %d" and
///          "Could not find any error message mapping for 0x%x!\n" on standard error.
struct ErrorStatus
{
    ErrorStatus() = default;
    explicit ErrorStatus(std::int32_t newCode);

    /// Replaces both the code and the message.
    void setCode(std::int32_t newCode);

    /// Writes `Error (101002): "value out of range"` as a line to standard output and flushes it;
    /// nothing for code 0.
    void print() const;

    std::int32_t code{0};
    QString message;
};

QDBusArgument& operator<<(QDBusArgument& argument, const ErrorStatus& status);
const QDBusArgument& operator>>(const QDBusArgument& argument, ErrorStatus& status);

} // namespace orvo

Q_DECLARE_METATYPE(orvo::ErrorStatus)
