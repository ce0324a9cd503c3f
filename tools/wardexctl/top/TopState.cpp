#include "top/TopState.h"

#include "model/ServiceNames.h"
#include "verbs/DeedText.h"

#include <algorithm>
#include <cctype>

namespace orvo::ctl
{

namespace
{
constexpr char kKeys[] =
    "q quit  ? help  j/k service  s start  x stop  r restart  / filter  l level";
constexpr char kEntryTitle[] = "Filter (Enter takes it): ";
/// Of a longer entry the end is shown.
constexpr std::size_t kEntryShown = 50;
} // namespace

TopRequest TopState::press(const KeyPress& press)
{
    if (press.key == TopKey::None)
    {
        return {};
    }
    if (isHidden)
    {
        const bool quits = press.key == TopKey::Character && press.character == 'q';
        return {quits ? TopRequest::Kind::Quit : TopRequest::Kind::None, {}, {}};
    }
    m_message = {};
    switch (m_mode)
    {
    case Mode::Confirm:
        return pressToConfirm(press);
    case Mode::Entry:
        pressInEntry(press);
        return {};
    case Mode::Help:
        m_mode = Mode::Look;
        return {};
    case Mode::Look:
        break;
    }
    return pressWhileLooking(press);
}

TopRequest TopState::pressWhileLooking(const KeyPress& press)
{
    switch (press.key)
    {
    case TopKey::Character:
        return pressCharacter(press.character);
    case TopKey::Up:
        select(-1);
        break;
    case TopKey::Down:
        select(1);
        break;
    default:
        scrollBy(press);
        break;
    }
    return {};
}

void TopState::scrollBy(const KeyPress& press)
{
    const int page = static_cast<int>(std::max<std::size_t>(logHeight, 2)) - 1;
    switch (press.key)
    {
    case TopKey::PageUp:
        log.scroll(-page, logHeight);
        break;
    case TopKey::PageDown:
        log.scroll(page, logHeight);
        break;
    case TopKey::Home:
        log.toOldest(logHeight);
        break;
    case TopKey::End:
        log.follow();
        break;
    default:
        break;
    }
}

TopRequest TopState::pressCharacter(char character)
{
    TopRequest request;
    std::string complaint;
    switch (character)
    {
    case 'q':
        request.kind = TopRequest::Kind::Quit;
        break;
    case '?':
    case 'h':
        m_mode = Mode::Help;
        break;
    case 's':
        askFor(Deed::Start);
        break;
    case 'x':
        askFor(Deed::Stop);
        break;
    case 'r':
        askFor(Deed::Restart);
        break;
    case 'k':
        select(-1);
        break;
    case 'j':
        select(1);
        break;
    case 'b':
        scrollBy({TopKey::PageUp});
        break;
    case ' ':
        scrollBy({TopKey::PageDown});
        break;
    case '-':
        log.scroll(-1, logHeight);
        break;
    case '+':
        log.scroll(1, logHeight);
        break;
    case 'g':
        scrollBy({TopKey::Home});
        break;
    case 'G':
    case 'f':
        log.follow();
        break;
    case 'l':
        log.nextLevel();
        break;
    case '/':
        m_entry = log.filter();
        m_mode = Mode::Entry;
        break;
    case 'c':
        (void)log.setFilter("", complaint);
        break;
    default:
        say(Tone::Warning, "This key does nothing; ? shows those that do.");
        break;
    }
    return request;
}

TopRequest TopState::pressToConfirm(const KeyPress& press)
{
    m_mode = Mode::Look;
    const bool isYes =
        press.key == TopKey::Character && (press.character == 'y' || press.character == 'Y');
    if (!isYes || !m_asked)
    {
        say(Tone::Plain, "Nothing was done.");
        return {};
    }
    return {TopRequest::Kind::Act, m_deed, *m_asked};
}

void TopState::pressInEntry(const KeyPress& press)
{
    std::string complaint;
    switch (press.key)
    {
    case TopKey::Character:
        m_entry += press.character;
        break;
    case TopKey::Backspace:
        if (!m_entry.empty())
        {
            m_entry.pop_back();
        }
        break;
    case TopKey::EraseLine:
        m_entry.clear();
        break;
    case TopKey::Escape:
        m_mode = Mode::Look;
        break;
    case TopKey::Enter:
        m_mode = Mode::Look;
        if (!log.setFilter(m_entry, complaint))
        {
            say(Tone::Bad, complaint);
        }
        break;
    default:
        break;
    }
}

void TopState::select(int step)
{
    const std::vector<ServiceView> services = view.services();
    if (services.empty())
    {
        return;
    }
    const std::string present = selected();
    const auto found = std::find_if(services.begin(), services.end(),
                                    [&](const ServiceView& each) { return each.name == present; });
    const auto last = static_cast<std::ptrdiff_t>(services.size()) - 1;
    const std::ptrdiff_t index =
        std::clamp<std::ptrdiff_t>(found - services.begin() + step, 0, last);
    m_selected = services[static_cast<std::size_t>(index)].name;
}

std::optional<ServiceView> TopState::selectedService() const
{
    const std::vector<ServiceView> services = view.services();
    const auto found =
        std::find_if(services.begin(), services.end(),
                     [this](const ServiceView& each) { return each.name == m_selected; });
    if (found != services.end())
    {
        return *found;
    }
    return services.empty() ? std::nullopt : std::optional(services.front());
}

std::string TopState::selected() const
{
    const auto service = selectedService();
    return service ? service->name : "";
}

void TopState::askFor(Deed deed)
{
    m_asked = selectedService();
    if (!busyText.empty())
    {
        say(Tone::Warning, "One thing after the other: " + busyText);
    }
    else if (!m_asked)
    {
        say(Tone::Warning, "There is no service: the supervisor told of none.");
    }
    else
    {
        m_deed = deed;
        m_mode = Mode::Confirm;
    }
}

void TopState::say(Tone tone, const std::string& text)
{
    m_message = {tone, text};
}

StyledLine TopState::statusLine() const
{
    switch (m_mode)
    {
    case Mode::Confirm:
    {
        std::string verb = verbOf(m_deed);
        verb.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(verb.front())));
        return {{Tone::Strong, verb + " " + shortNameOf(m_asked->name) + "? y/n"}};
    }
    case Mode::Entry:
        return {{Tone::Strong, kEntryTitle},
                {Tone::Plain, m_entry.substr(m_entry.size() - shownEntry())}};
    case Mode::Help:
        return {{Tone::Faint, "Any key goes back."}};
    case Mode::Look:
        break;
    }
    if (!m_message.text.empty())
    {
        return {m_message};
    }
    return {busyText.empty() ? Span{Tone::Faint, kKeys} : Span{Tone::Strong, busyText}};
}

std::size_t TopState::shownEntry() const
{
    return std::min(m_entry.size(), kEntryShown);
}

std::optional<std::size_t> TopState::cursor() const
{
    return m_mode == Mode::Entry ? std::optional(sizeof kEntryTitle - 1 + shownEntry())
                                 : std::nullopt;
}

} // namespace orvo::ctl
