#pragma once

#include "SupervisionLimits.h"
#include "SuprStateSystem.h"

#include <cstdint>

namespace orvo
{

/// The device does not work as a whole. The services' own machines try to revive theirs; when that
/// takes too long the whole software package is restarted, and when that does not help, the device.
///
/// | Event         | Condition                               | Action               | Next |
/// |---------------|-----------------------------------------|----------------------|--------------|
/// | serviceIsUp   | all known up                            | add, publish         | SuprStable- |
/// |               |                                         |                      | System | |
/// serviceIsUp   | otherwise                               | add, publish         | same         |
/// | serviceIsDown |                                         | remove, publish      | same | | ping
/// | up to 10th unstable tick                | feed the watchdog    | same         | | ping | later
/// tick, fewer than 3 package        | remember and restart | SuprStarting-| |               |
/// restarts in the last 5 minutes          | the package, count 0 | System       | | ping | later
/// tick, 3 or more                   | EMERG                | SuprReboot-  | |               | | |
/// System       |
///
/// A restart that is exactly 5 minutes old no longer counts. The window is measured by the local
/// wall clock: a clock that is set forward forgets restarts, one set back remembers them longer.
class SuprUnstableSystem : public SuprStateSystem
{
    Q_OBJECT

public:
    SuprUnstableSystem(SuprSMSystem* machine, const SupervisionContext* context,
                       std::uint32_t tickLimit = kUnstableTickLimit,
                       std::uint32_t restartLimit = kRestartLimit,
                       std::uint32_t windowMinutes = kRestartWindowMinutes);

    [[nodiscard]] QString name() const override;
    void serviceIsUp(const QString& service) override;
    void serviceIsDown(const QString& service) override;

public Q_SLOTS:
    void ping() override;

private:
    void restartPackageOrReboot();

    std::uint32_t m_tickLimit;
    std::uint32_t m_restartLimit;
    std::uint32_t m_windowMinutes;
};

} // namespace orvo
