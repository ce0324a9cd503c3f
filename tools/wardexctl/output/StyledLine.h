#pragma once

#include "output/Output.h"

#include <string>
#include <vector>

namespace orvo::ctl
{

/// A piece of a line in one colour.
struct Span
{
    Tone tone{Tone::Plain};
    std::string text;
};

/// A line of a screen, wherever that is drawn.
using StyledLine = std::vector<Span>;

/// As it goes to standard output.
inline std::string textOf(const Output& output, const StyledLine& line)
{
    std::string text;
    for (const Span& span : line)
    {
        text += output.tone(span.tone, span.text);
    }
    return text;
}

} // namespace orvo::ctl
