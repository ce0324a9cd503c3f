#pragma once

#include "bus/ServiceOverview.h"
#include "model/DeviceFacts.h"

namespace orvo::ctl
{

/// What the log tells at the moment; nothing when it does not answer.
struct LogFacts
{
    LogFacts();

    /// Whether a judged service is available, by the log or else by the supervisor's list.
    [[nodiscard]] bool isAvailable(const ServiceView& view) const;

    DeviceFacts facts;
};

} // namespace orvo::ctl
