#pragma once

#include "bus/SupervisorClient.h"
#include "output/Output.h"

#include <string>

namespace orvo::ctl
{

// Verbs about the services. Each answers the exit status of the program; a name is one of those
// that busNameOf() takes.

/// The services that this device runs.
int listServices(const Output& output);

/// Whether a service is up.
int isServiceUp(const Output& output, const std::string& name);

/// What is done to a service.
enum class Deed
{
    Start,
    Stop,
    Restart
};

/// Runs the service's script through the supervisor and tells how it went.
/// waits: else the call is only handed over.
int actOnService(const Output& output, Deed deed, const std::string& name, bool waits);

/// Gives a service more time: one-shot ping time-out. duration as durationOf() takes it.
int graceService(const Output& output, const std::string& name, const std::string& duration);

// For other verbs.

/// The bus name of what a person said; empty after the complaint that it is none.
std::string resolved(const Output& output, const std::string& name);

/// Complains that this device does not run the service.
int complainUnknown(const Output& output, const std::string& busName);

/// Complains that the supervisor did not answer; the exit status that belongs to it.
int complainSilent(const Output& output, const BusAnswer& answer);

} // namespace orvo::ctl
