#pragma once

#include "SuprStateSystem.h"

namespace orvo
{

/// The device is being rebooted: entering runs the reboot command and never returns, so that the
/// watchdog resets the device should the command fail. On a developer's device nothing is rebooted;
/// the state waits there until every service has come up by itself.
///
/// | Event         | Condition                        | Action             | Next             |
/// |---------------|----------------------------------|--------------------|------------------|
/// | entry         |                                  | restart the system | same             |
/// | serviceIsUp   | developer mode, all known up     | add, publish       | SuprStableSystem |
/// | serviceIsUp   | developer mode, otherwise        | add, publish       | same             |
/// | serviceIsUp   | not in developer mode            | log                | same             |
/// | serviceIsDown |                                  | log                | same             |
/// | ping          |                                  | feed the watchdog  | same             |
class SuprRebootSystem : public SuprStateSystem
{
    Q_OBJECT

public:
    SuprRebootSystem(SuprSMSystem* machine, const SupervisionContext* context);

    [[nodiscard]] QString name() const override;
    void entry() override;
    void serviceIsUp(const QString& service) override;
};

} // namespace orvo
