#pragma once

/// The services that a camera may run: name of the process and its start and stop script, as the
/// device's image installs them.
///
/// On the device: the numbers order the scripts at power-on. The supervisor runs the scripts to
/// stop and start a service and looks for the process by its name.
namespace orvo
{

inline constexpr char kCorvaneName[] = "corvane";
inline constexpr char kCorvaneScript[] = "/opt/orvo/etc/init.d/40_corvane";

inline constexpr char kPictorName[] = "pictor";
inline constexpr char kPictorScript[] = "/opt/orvo/etc/init.d/30_pictor";

inline constexpr char kWirlName[] = "wirl";
inline constexpr char kWirlScript[] = "/opt/orvo/etc/init.d/10_wirl";

inline constexpr char kQuorlName[] = "quorl";
inline constexpr char kQuorlScript[] = "/opt/orvo/etc/init.d/20_quorl";

} // namespace orvo
