#pragma once

#include "SupervisorModel.h"

#include <string>
#include <vector>

namespace orvo::model
{

/// Watches that every unstable period ends within its bound: in stability, a package restart or a
/// reboot, after at most eleven ticks of the system machine less those of earlier periods.
///
/// Borrows: the model.
class UnstablePeriods
{
public:
    explicit UnstablePeriods(const SupervisorModel& model) : m_model(model) {}

    /// The device was powered on.
    void begin();
    /// A timer of the model has fired.
    void afterTick(unsigned timer);

    [[nodiscard]] const std::vector<std::string>& breaches() const { return m_breaches; }

private:
    const SupervisorModel& m_model;
    unsigned m_ticks{0}; ///< in unstable periods, since the last restart
    bool m_wasUnstable{false};
    std::vector<std::string> m_breaches;
};

} // namespace orvo::model
