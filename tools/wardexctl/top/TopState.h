#pragma once

#include "output/Output.h"
#include "top/FeedGap.h"
#include "top/TopKey.h"
#include "top/TopLog.h"
#include "verbs/ServiceVerbs.h"
#include "verbs/StatusView.h"

#include <optional>
#include <string>

namespace orvo::ctl
{

/// What a key asks of the program; the rest the state does by itself.
struct TopRequest
{
    enum class Kind
    {
        None,
        Quit,
        Act
    };

    Kind kind{Kind::None};
    Deed deed{Deed::Start};
    ServiceView service; ///< as it was when the deed was confirmed
};

/// What the live screen shows and what its keys mean, without a terminal.
///
/// Threads: one.
class TopState
{
public:
    /// What the keys mean at the moment.
    enum class Mode
    {
        Look,
        Confirm, ///< of a deed
        Entry,   ///< of a filter
        Help
    };

    StatusView view;
    TopLog log;
    FeedGap feedGap;
    bool isBusKnown{false}; ///< the supervisor was asked, however that went
    bool isLogKnown{false};
    double silentSeconds{0};  ///< the supervisor has not answered for so long; 0: it has
    std::string busyText;     ///< of a deed under way; empty: none
    std::size_t logHeight{1}; ///< lines, as drawn last
    bool isHidden{false};     ///< the terminal is too small: no key but quit is meant for sure

    [[nodiscard]] bool isKnown() const { return isBusKnown && isLogKnown; }

    TopRequest press(const KeyPress& press);

    /// For the status line, until the next key.
    void say(Tone tone, const std::string& text);

    [[nodiscard]] Mode mode() const { return m_mode; }
    /// The last line of the screen.
    [[nodiscard]] StyledLine statusLine() const;
    /// Column of the cursor in it, while something is entered.
    [[nodiscard]] std::optional<std::size_t> cursor() const;
    /// Bus name of the service that deeds are for; empty: there is none.
    [[nodiscard]] std::string selected() const;

private:
    TopRequest pressWhileLooking(const KeyPress& press);
    TopRequest pressCharacter(char character);
    TopRequest pressToConfirm(const KeyPress& press);
    void pressInEntry(const KeyPress& press);
    void scrollBy(const KeyPress& press);
    void select(int step);
    void askFor(Deed deed);
    [[nodiscard]] std::optional<ServiceView> selectedService() const;
    [[nodiscard]] std::size_t shownEntry() const;

    Mode m_mode{Mode::Look};
    Deed m_deed{Deed::Start};
    std::optional<ServiceView> m_asked;
    std::string m_selected;
    std::string m_entry;
    Span m_message;
};

} // namespace orvo::ctl
