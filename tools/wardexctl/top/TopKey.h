#pragma once

namespace orvo::ctl
{

/// A key, whatever the terminal sent for it.
enum class TopKey
{
    None,
    Character,
    Up,
    Down,
    PageUp,
    PageDown,
    Home,
    End,
    Enter,
    Escape,
    Backspace,
    EraseLine
};

struct KeyPress
{
    TopKey key{TopKey::None};
    char character{'\0'}; ///< printable, of a Character
};

} // namespace orvo::ctl
