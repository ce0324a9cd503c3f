#pragma once

#include <string>

namespace orvo::Logger
{

/// Where a Redis server listens.
struct Endpoint
{
    std::string host;     ///< empty for a Unix socket
    int port;             ///< 0 selects the Unix socket
    std::string unixPath; ///< empty for TCP
};

} // namespace orvo::Logger
