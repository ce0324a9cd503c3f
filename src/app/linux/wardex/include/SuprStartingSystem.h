#pragma once

#include "SupervisionLimits.h"
#include "SuprStateSystem.h"

#include <cstdint>

namespace orvo
{

/// The device has been switched on, or its package was restarted, and its services are coming up.
///
/// | Event         | Condition        | Action                | Next               |
/// |---------------|------------------|-----------------------|--------------------|
/// | serviceIsUp   | all known up     | add, publish          | SuprStableSystem   |
/// | serviceIsUp   | otherwise        | add, publish          | same               |
/// | serviceIsDown |                  | remove, publish       | same               |
/// | ping          | up to 5th tick   | feed the watchdog     | same               |
/// | ping          | 6th tick         | feed the watchdog     | SuprUnstableSystem |
class SuprStartingSystem : public SuprStateSystem
{
    Q_OBJECT

public:
    /// tickLimit: ticks that the device may take; tickCount: those it has used already.
    SuprStartingSystem(SuprSMSystem* machine, const SupervisionContext* context,
                       std::uint32_t tickLimit = kStartingTickLimit, std::uint32_t tickCount = 0);

    [[nodiscard]] QString name() const override;
    void serviceIsUp(const QString& service) override;
    void serviceIsDown(const QString& service) override;

public Q_SLOTS:
    void ping() override;

private:
    std::uint32_t m_tickLimit;
    std::uint32_t m_tickCount;
};

} // namespace orvo
