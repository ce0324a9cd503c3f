#pragma once

#include <cstddef>
#include <string>

namespace orvo::simulator
{

/// Bytes (1 to 4) of the valid UTF-8 character that begins at offset, 0 when none does: overlong
/// forms, surrogates and numbers past U+10FFFF are not valid.
std::size_t utf8Length(const std::string& bytes, std::size_t offset);

} // namespace orvo::simulator
