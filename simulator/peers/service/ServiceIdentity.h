#pragma once

#include <QString>

#include <string>

namespace orvo::simulator
{

/// Which service of the device this process plays.
struct ServiceIdentity
{
    /// The name in the process list, of the order file and in the ping journal: "pictor".
    std::string shortName;
    /// The name on the system bus, also the name of the interface: "com.orvo.pictor".
    QString busName;

    /// From the path the program was started by: one binary plays each service that it is linked
    /// as. The service corvane is "com.orvo.vistor" on the bus.
    static ServiceIdentity ofExecutable(const std::string& path);
};

} // namespace orvo::simulator
