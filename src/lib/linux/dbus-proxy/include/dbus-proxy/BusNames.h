#pragma once

namespace orvo
{

/// The device's names on the system bus. Every one of these services exports its object at
/// kBusObjectPath and calls its interface by the service's name. The bus policy, the init scripts
/// and every client on the device rely on the spelling.
inline constexpr char kBusObjectPath[] = "/";

/// The supervisor itself.
inline constexpr char kWardexBusName[] = "com.orvo.wardex";
/// corvane.
inline constexpr char kVistorBusName[] = "com.orvo.vistor";
/// The image processing, pictor.
inline constexpr char kPictorBusName[] = "com.orvo.pictor";
/// The IO and diagnostic controller, wirl.
inline constexpr char kWirlBusName[] = "com.orvo.wirl";
/// Only a key of the service table: quorl is reached over its Unix socket, never over the bus.
inline constexpr char kQuorlBusName[] = "com.orvo.quorl";

} // namespace orvo
