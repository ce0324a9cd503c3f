#pragma once

#include <cstddef>
#include <cstdint>

/// The client of the quorl service: each call opens a connection to the service's Unix socket, asks
/// once and closes it again.
///
/// Shape:   what goes over the socket is told by quorl/QuorlWire.h.
/// Units:   lengths in bytes, terminator not included. What is too long is cut without a word.
/// Owns:    nothing between the calls. A text that is handed out belongs to the caller, who frees
///          it with free().
/// Threads: any; calls do not share anything but the process-wide log facade. A call blocks for as
///          long as the service takes: a service that accepts and never answers holds its caller
///          for ever.
/// Errors:  nothing is repeated and nothing thrown. The reason of a failed connection is told on
///          standard error, the failed operation through the log facade: at DEBUG, but at WARN for
///          quorl_emit_async_msg() and on standard error for quorl_queryText(). A service that has
///          gone raises no SIGPIPE.
/// On the device: quorl listens on kSocketPath. The first call of a process turns its log facade to
///          Redis, whatever its mode was (loggerSetMode() takes it back), and so starts the
///          logger's configuration thread; see logger/LoggerFacade.h.

/// Asks for a configuration item; of its name the first 127 characters count.
///
/// Returns the result word of the service, for a known item the length of its value. Only when that
/// word is not 0, also a negative one, *value becomes a new text. -1 without an item and on
/// failure.
std::int32_t quorl_getConfig(const char* item, char** value);

/// Tells that data of this name (its first 12 bytes count) are ready. The values belong to the
/// service. Returns its result, or -1: no name, a length of 0, or failure.
std::int32_t quorl_emit_data_ready(const char* name, std::size_t nameLength, std::uint16_t valueA,
                                   std::uint16_t valueB);

/// Passes a message on, of which the first 4095 characters count; nullptr is an empty one.
void quorl_emit_async_msg(std::int32_t valueA, std::int32_t valueB, const char* text);

/// Passes a new output format on: at most textLength and at most 1023 characters, up to a
/// terminating zero. Returns the service's result, or -1: no text, a length of 0, or failure.
std::int32_t quorl_emit_json_output_format_update(const char* text, std::size_t textLength,
                                                  std::int32_t value);

/// Asks for the service's text. Returns the result word, or 0 on failure; only when it is not 0,
/// *text becomes a new text.
std::int32_t quorl_queryText(char** text);
