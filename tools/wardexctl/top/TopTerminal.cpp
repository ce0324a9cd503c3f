#include "top/TopTerminal.h"

#include "top/TerminalType.h"

#include <algorithm>
#include <cstdio>

#include <sys/ioctl.h>
#include <unistd.h>

// Its macros have the names of everybody's functions.
#define NCURSES_NOMACROS
#include <curses.h>

namespace orvo::ctl
{

namespace
{

constexpr int kEscape = 27;
constexpr int kDelete = 127;
constexpr int kEraseLine = 21; // Ctrl-U
/// Long enough for the rest of a key's sequence over a slow serial line.
constexpr int kEscapeDelayMs = 100;

bool operator==(const StyledLine& left, const StyledLine& right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const Span& one, const Span& other)
                      { return one.tone == other.tone && one.text == other.text; });
}

TopKey keyOf(int code)
{
    switch (code)
    {
    case KEY_UP:
        return TopKey::Up;
    case KEY_DOWN:
        return TopKey::Down;
    case KEY_PPAGE:
        return TopKey::PageUp;
    case KEY_NPAGE:
        return TopKey::PageDown;
    case KEY_HOME:
        return TopKey::Home;
    case KEY_END:
        return TopKey::End;
    case KEY_ENTER:
    case '\n':
    case '\r':
        return TopKey::Enter;
    case KEY_BACKSPACE:
    case '\b':
    case kDelete:
        return TopKey::Backspace;
    case kEscape:
        return TopKey::Escape;
    case kEraseLine:
        return TopKey::EraseLine;
    default:
        return code >= ' ' && code <= '~' ? TopKey::Character : TopKey::None;
    }
}

} // namespace

struct TopTerminal::Screen
{
    Screen() : handle(newterm(nullptr, stdout, stdin)) {}
    ~Screen()
    {
        endwin();
        delscreen(handle);
    }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    SCREEN* handle;
};

std::optional<Problem> TopTerminal::problem()
{
    constexpr char kRemedy[] = "wardexctl status shows the same once, top --json for programs.";
    if (isatty(STDIN_FILENO) == 0 || isatty(STDOUT_FILENO) == 0)
    {
        return Problem{"top", "needs a terminal to draw on", kRemedy};
    }
    if (!canPlaceCursor())
    {
        return Problem{"top", "does not know how to draw on this terminal (TERM)",
                       std::string("TERM=vt100 fits most; or: ") + kRemedy};
    }
    return std::nullopt;
}

TopTerminal::TopTerminal(bool isColoured) : m_screen(std::make_unique<Screen>())
{
    cbreak();
    noecho();
    nonl();
    set_escdelay(kEscapeDelayMs);
    keypad(stdscr, TRUE);
    nodelay(stdscr, TRUE);
    curs_set(0);
    m_isColoured = isColoured && has_colors();
    if (m_isColoured)
    {
        start_color();
        use_default_colors();
        init_pair(static_cast<short>(Tone::Good), COLOR_GREEN, -1);
        init_pair(static_cast<short>(Tone::Warning), COLOR_YELLOW, -1);
        init_pair(static_cast<short>(Tone::Bad), COLOR_RED, -1);
    }
}

TopTerminal::~TopTerminal() = default;

ScreenSize TopTerminal::size() const
{
    return {static_cast<std::size_t>(getmaxy(stdscr)), static_cast<std::size_t>(getmaxx(stdscr))};
}

unsigned long TopTerminal::attributeOf(Tone tone) const
{
    switch (tone)
    {
    case Tone::Good:
    case Tone::Warning:
        return m_isColoured ? static_cast<chtype>(COLOR_PAIR(static_cast<int>(tone))) : A_NORMAL;
    case Tone::Bad:
        return m_isColoured ? static_cast<chtype>(COLOR_PAIR(static_cast<int>(tone))) : A_BOLD;
    case Tone::Faint:
        return m_isColoured ? A_DIM : A_NORMAL;
    case Tone::Strong:
        return A_BOLD;
    case Tone::Plain:
        break;
    }
    return A_NORMAL;
}

void TopTerminal::paintLine(std::size_t row, const StyledLine& line)
{
    move(static_cast<int>(row), 0);
    for (const Span& span : line)
    {
        const auto attribute = static_cast<attr_t>(attributeOf(span.tone));
        attrset(static_cast<int>(attribute));
        addnstr(span.text.data(), static_cast<int>(span.text.size()));
    }
    attrset(A_NORMAL);
    clrtoeol();
}

void TopTerminal::paint(const TopScreen& screen)
{
    m_painted.resize(size().rows);
    for (std::size_t row = 0; row < m_painted.size(); ++row)
    {
        const StyledLine line = row < screen.lines.size() ? screen.lines[row] : StyledLine();
        if (!(m_painted[row] == line))
        {
            paintLine(row, line);
            m_painted[row] = line;
        }
    }
    curs_set(screen.cursor ? 1 : 0);
    move(static_cast<int>(screen.lines.size()) - 1, static_cast<int>(screen.cursor.value_or(0)));
    refresh();
}

KeyPress TopTerminal::read()
{
    for (int code = getch(); code != ERR; code = getch())
    {
        const TopKey key = keyOf(code);
        if (key != TopKey::None)
        {
            return {key, key == TopKey::Character ? static_cast<char>(code) : '\0'};
        }
    }
    return {};
}

void TopTerminal::suspend()
{
    curs_set(1);
    endwin();
}

void TopTerminal::resume()
{
    reset_prog_mode();
    takeSize();
}

void TopTerminal::takeSize()
{
    winsize told{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &told) == 0 && told.ws_row > 0 && told.ws_col > 0)
    {
        resizeterm(told.ws_row, told.ws_col);
    }
    erase();
    m_painted.clear();
    clearok(curscr, TRUE);
}

} // namespace orvo::ctl
