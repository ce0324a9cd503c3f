#pragma once

#include "logger/LogDefaults.h"

#include <cstdarg>
#include <cstddef>

namespace orvo::Logger
{

/// Formats a message as vsnprintf does; answers the stored length, 0 when vsnprintf fails.
///
/// What most messages are made of, "%s" and "%d", is put together here in a fraction of the time;
/// a format with anything else is left to the C library.
[[gnu::format(printf, 2, 0)]] std::size_t formatMessage(char (&message)[kMessageCapacity],
                                                        const char* format, va_list arguments);

} // namespace orvo::Logger
