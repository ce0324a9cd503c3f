#pragma once

#include <string>

namespace orvo::test
{

/// The bytes that tests/data/quorl/NAME.frame describes, line by line: "hex 80 00", "text words to
/// the end of the line", "zeros 116"; lines with # are remarks.
///
/// Errors: std::runtime_error for a missing file or another word.
std::string frame(const std::string& name);

/// A text, zero-filled to its width, as the service sends it.
std::string filled(const std::string& text, std::size_t width);

/// A 32-bit value as it goes over the socket.
std::string word(std::int32_t value);

} // namespace orvo::test
