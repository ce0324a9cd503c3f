#pragma once

#include "common/Descriptor.h"

#include <cstdint>
#include <string>

namespace orvo::test
{

/// One connection to quorl's socket, byte by byte.
///
/// Threads: one at a time.
/// Errors:  a wait of more than 10 s ends with what has come so far.
class QuorlCaller
{
public:
    /// Connects at once.
    QuorlCaller();

    /// 0, or the errno of the failed connect.
    [[nodiscard]] int error() const { return m_error; }

    static std::string frame(std::uint16_t command, const std::string& payload);
    /// The payload of a configuration query.
    static std::string item(const std::string& name);

    void send(const std::string& bytes) const;
    /// All bytes until the server closes.
    [[nodiscard]] std::string readToEnd() const;
    /// Whether something (or the end) has come within so many milliseconds.
    [[nodiscard]] bool hasNewsWithin(int milliseconds) const;

    /// The 32-bit word at the end of a reply.
    static std::int32_t resultOf(const std::string& reply);

private:
    simulator::Descriptor m_socket;
    int m_error{0};
};

} // namespace orvo::test
