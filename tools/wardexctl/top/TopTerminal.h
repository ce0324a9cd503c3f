#pragma once

#include "output/Output.h"
#include "top/TopKey.h"
#include "top/TopScreen.h"

#include <memory>
#include <optional>
#include <vector>

namespace orvo::ctl
{

/// The terminal as a screen: paints lines and reads keys. What they mean is none of its business.
///
/// Shape:   only lines that differ from the painted ones are written.
/// Owns:    the terminal's settings, from the construction to the destruction.
/// Threads: one; blocks only while the terminal takes no output.
class TopTerminal
{
public:
    /// Why standard input and output cannot be used as a screen; nothing when they can.
    static std::optional<Problem> problem();

    explicit TopTerminal(bool isColoured);
    ~TopTerminal();
    TopTerminal(const TopTerminal&) = delete;
    TopTerminal& operator=(const TopTerminal&) = delete;

    [[nodiscard]] ScreenSize size() const;
    void paint(const TopScreen& screen);
    /// None: there is no key at the moment.
    KeyPress read();

    /// Gives the terminal back, and takes it again as it is then.
    void suspend();
    void resume();
    /// Takes the terminal's present size.
    void takeSize();

private:
    struct Screen;

    [[nodiscard]] unsigned long attributeOf(Tone tone) const;
    void paintLine(std::size_t row, const StyledLine& line);

    std::unique_ptr<Screen> m_screen;
    bool m_isColoured;
    std::vector<StyledLine> m_painted;
};

} // namespace orvo::ctl
