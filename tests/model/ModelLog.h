#pragma once

#include <cstdint>

namespace orvo::model
{

// Levels of the log, by their values in its mask.
inline constexpr std::uint32_t kTrace = 0x04;
inline constexpr std::uint32_t kInfo = 0x08;
inline constexpr std::uint32_t kWarn = 0x10;
inline constexpr std::uint32_t kError = 0x20;
inline constexpr std::uint32_t kFatal = 0x40;
inline constexpr std::uint32_t kEmerg = 0x80;

} // namespace orvo::model
