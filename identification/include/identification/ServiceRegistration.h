#pragma once

namespace orvo
{

namespace Logger
{
class RedisLogger;
}

/// Finds out which family of cameras this device belongs to and enters the services that the family
/// runs into the registry.
///
/// Shape:   family  decided by                              services, in the order of registration
///          ZK4XX   'F' record 340, 341, 342, 343, 350, 351  corvane, pictor, wirl, quorl
///          ZM7xx   'F' record 200, 201                      wirl
///          ZQ9XX   'M' record 101, 161, 162                 corvane, pictor
///          A device that fits several rows belongs to the first of them.
/// Borrows: the logger, which must outlive it.
/// Threads: main thread, before the event loop; blocks while the EEPROMs are read. Uses the system
///          bus.
/// Errors:  a device of no family registers nothing. An EEPROM that cannot be read, or whose record
///          is damaged, counts as one without the module.
/// On the device: one WARN record says which family was found, or that none was.
class ServiceRegistration
{
public:
    explicit ServiceRegistration(Logger::RedisLogger* logger);

    /// To be called once, before anything supervises; false when no family was recognised.
    [[nodiscard]] bool registerServices();

private:
    Logger::RedisLogger* m_logger;
};

} // namespace orvo
