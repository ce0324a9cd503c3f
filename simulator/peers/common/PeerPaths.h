#pragma once

/// Fixed places on the simulated device, as the peers in the box see them.
namespace orvo::simulator
{

/// Folder with one order file per service; written by the person or story outside the box.
inline constexpr char kOrdersFolder[] = "/run/orders";

/// "<monotonic s.6> SERVICE ORDER-WORD" for each ping that reached a service.
inline constexpr char kPingJournal[] = "/log/pings";

/// Where the supervisor's RPC client looks for quorl.
inline constexpr char kQuorlSocket[] = "/tmp/quorld.sock";

} // namespace orvo::simulator
