#pragma once

#include "RedisHandles.h"

#include <optional>
#include <string>

namespace orvo::Logger
{

/// Opens a connection to the Redis server of the stored configurations, for one call. Null when it
/// cannot be reached, which is told on standard error under the caller's name and a socket's name.
RedisConnection openConfigStore(const char* caller, const char* namedSocket);

/// The text stored under a field of LOG:PERM:CFG; nothing when there is none or Redis cannot be
/// asked or does not answer, which is told like an unreachable one.
std::optional<std::string> loadConfiguration(const std::string& field);

/// Stores a text under a field of LOG:PERM:CFG; what the server answered if that was a text. No
/// answer is told like an unreachable server.
std::optional<std::string> storeConfiguration(redisContext* store, const std::string& field,
                                              const std::string& text);

} // namespace orvo::Logger
