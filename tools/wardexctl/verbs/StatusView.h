#pragma once

#include "bus/ServiceOverview.h"
#include "log-reading/ReadRecord.h"
#include "log/DeviceClock.h"
#include "model/DeviceFacts.h"
#include "model/Outlook.h"
#include "output/Output.h"

#include <QJsonObject>

#include <string>
#include <vector>

namespace orvo::ctl
{

/// All that status shows, gathered at one moment.
struct StatusView
{
    DeviceFacts facts;
    ServiceOverview overview;
    bool hasLog{true};
    bool isDeveloper{false};
    DeviceClock clock;
    std::vector<ReadRecord> records; ///< the last ones
    std::string only;                ///< bus name of the one service asked for; empty: all

    /// What the records tell, and the marker of developer mode.
    void takeFacts(const DeviceFacts& told);

    [[nodiscard]] BusView bus() const;
    [[nodiscard]] Verdict verdict() const;
    /// Its process runs, as far as anybody can say, and a judged one is available.
    [[nodiscard]] bool isUp(const ServiceView& service) const;
    /// What the records tell about a service; nothing is set when they do not name it.
    [[nodiscard]] const ServiceFacts& factsOf(const std::string& name) const;
    /// The services asked for: those on the bus, else those that the records name.
    [[nodiscard]] std::vector<ServiceView> services() const;
};

/// One screen of 24 lines by 80 characters.
std::vector<std::string> statusLines(const Output& output, const StatusView& view);

/// The same for programs; docs/wardexctl.md has the members.
QJsonObject statusJson(const StatusView& view);

} // namespace orvo::ctl
