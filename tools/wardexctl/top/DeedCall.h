#pragma once

#include "bus/ServiceOverview.h"
#include "output/StyledLine.h"
#include "top/BusLink.h"
#include "verbs/ServiceVerbs.h"

#include <functional>
#include <string>
#include <vector>

namespace orvo::ctl
{

/// Carries one deed out at a time, step by step, while the screen goes on.
///
/// Borrows: the link.
/// Threads: the one of the application object.
class DeedCall
{
public:
    /// whenDone: with the words for the status line.
    DeedCall(BusLink& link, std::function<void(const Span&)> whenDone);

    /// Only while none is under way.
    void begin(Deed deed, const ServiceView& service);

    /// "waiting for the script of pictor ... 3 s"; empty while none is under way.
    [[nodiscard]] std::string busyText() const;

private:
    void step();
    void take(const BusAnswer& answer);
    void end(Tone tone, const std::string& text);

    BusLink& m_link;
    std::function<void(const Span&)> m_whenDone;
    Deed m_deed{Deed::Start};
    ServiceView m_service;
    std::vector<const char*> m_methods; ///< still to be called, the next one first
    double m_begin{0};
};

} // namespace orvo::ctl
