#pragma once

#include <cstddef>
#include <cstdint>

namespace orvo
{

/// Rows of the device's table of error texts. 101064 to 101068 are not in use; the supervisor's own
/// 400004, 400006 and 400007 have no row on this device either.
///
/// Units: 0 success | 100000.. XML-RPC transport | 101000.. configuration and applications |
///        200000.. IO and diagnostic controller | 300000.. logic layer
inline constexpr std::size_t kErrorMessageCount = 83;

/// The text for a code, or nullptr when the device knows none.
[[nodiscard]] const char* findErrorMessage(std::int32_t code);

} // namespace orvo
