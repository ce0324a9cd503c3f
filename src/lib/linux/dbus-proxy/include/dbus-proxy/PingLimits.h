#pragma once

namespace orvo
{

/// How long a service may take to answer a ping, in ms; the registry pings in the same interval.
/// On the device: corvane is given more time than the others on purpose.
inline constexpr int kCorvanePingTimeoutMs = 2200;
inline constexpr int kPictorPingTimeoutMs = 1000;
inline constexpr int kWirlPingTimeoutMs = 1000;

/// Only the interval: the question over the socket has no time-out.
inline constexpr int kQuorlPingIntervalMs = 1000;

} // namespace orvo
