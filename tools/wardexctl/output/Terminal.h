#pragma once

#include <cstddef>

namespace orvo::ctl
{

/// What the place where standard output goes can show.
struct Terminal
{
    std::size_t width{80}; ///< characters in a line; 80 where nobody tells
    bool isUtf8{false};    ///< by the locale

    static Terminal ofOutput();
};

} // namespace orvo::ctl
