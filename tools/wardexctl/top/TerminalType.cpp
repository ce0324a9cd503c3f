#include "top/TerminalType.h"

#include <unistd.h>

// Apart from the rest, for the second one makes macros of everyday words.
#include <curses.h>
#include <term.h>

namespace orvo::ctl
{

bool canPlaceCursor()
{
    int answer = 0;
    if (setupterm(nullptr, STDOUT_FILENO, &answer) != OK)
    {
        return false;
    }

    return cursor_address != nullptr;
}

} // namespace orvo::ctl
