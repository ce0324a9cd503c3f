#pragma once

#include "bus/ServiceOverview.h"
#include "verbs/ServiceVerbs.h"

#include <string>
#include <vector>

namespace orvo::ctl
{

// What a deed is made of, and how it is told.

inline constexpr char kStartMethod[] = "doStartService";
inline constexpr char kStopMethod[] = "doStopService";

/// "start", "stop", "restart".
const char* verbOf(Deed deed);

/// The supervisor's methods that make up a deed, in their order.
std::vector<const char*> methodsOf(Deed deed, const ServiceView& before);

/// "status 400006 (Unknown error for code %d)".
std::string statusText(const ErrorStatus& status);

/// How one of its steps went.
struct DeedOutcome
{
    bool isDone{false};
    std::string what;   ///< "was started", to be said behind the service's name
    std::string how;    ///< ", 1.5 s, status 0"
    std::string remedy; ///< of what was not done
};

/// step: Start or Stop; answer: one that the supervisor gave.
DeedOutcome outcomeOf(Deed deed, const ServiceView& before, Deed step, const BusAnswer& answer);

} // namespace orvo::ctl
