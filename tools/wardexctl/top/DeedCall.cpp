#include "top/DeedCall.h"

#include "log/DeviceClock.h"
#include "model/ServiceNames.h"
#include "verbs/DeedText.h"

#include <utility>

namespace orvo::ctl
{

namespace
{

/// The last word of the bus's name for its refusal: "AccessDenied".
std::string refusalOf(const std::string& detail)
{
    const std::string name = detail.substr(0, detail.find(':'));
    return name.substr(name.rfind('.') + 1);
}

} // namespace

DeedCall::DeedCall(BusLink& link, std::function<void(const Span&)> whenDone)
    : m_link(link), m_whenDone(std::move(whenDone))
{
}

void DeedCall::begin(Deed deed, const ServiceView& service)
{
    m_deed = deed;
    m_service = service;
    m_methods = methodsOf(deed, service);
    m_begin = DeviceClock::now().monotonic;
    step();
}

std::string DeedCall::busyText() const
{
    if (m_methods.empty())
    {
        return "";
    }
    return "waiting for the script of " + shortNameOf(m_service.name) + " ... " +
           std::to_string(static_cast<int>(DeviceClock::now().age(m_begin))) + " s";
}

void DeedCall::step()
{
    m_link.call(m_methods.front(), {QString::fromStdString(m_service.name)},
                SupervisorClient::kScriptTimeoutMs,
                [this](const BusAnswer& answer) { take(answer); });
}

void DeedCall::take(const BusAnswer& answer)
{
    const std::string name = shortNameOf(m_service.name);
    if (answer.kind == BusAnswer::Kind::Refused)
    {
        end(Tone::Bad, "To " + std::string(verbOf(m_deed)) + " " + name + " was refused (" +
                           refusalOf(answer.detail) + "): be root, or in group wardex.");
        return;
    }
    if (!answer.isAnswered())
    {
        end(Tone::Bad, name + ": " + SupervisorClient::problemOf(answer).cause);
        return;
    }
    const bool isStart = std::string(m_methods.front()) == kStartMethod;
    const DeedOutcome outcome =
        outcomeOf(m_deed, m_service, isStart ? Deed::Start : Deed::Stop, answer);
    if (outcome.isDone && m_methods.size() > 1)
    {
        m_methods.erase(m_methods.begin());
        step();
        return;
    }
    const std::string what =
        outcome.isDone && m_deed == Deed::Restart ? "was restarted" : outcome.what;
    end(outcome.isDone ? Tone::Good : Tone::Bad, name + " " + what + outcome.how);
}

void DeedCall::end(Tone tone, const std::string& text)
{
    m_methods.clear();
    m_whenDone({tone, text});
}

} // namespace orvo::ctl
