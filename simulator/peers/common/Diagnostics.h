#pragma once

#include <string>

namespace orvo::simulator
{

/// The text of the calling thread's errno, as "No such file or directory".
std::string errnoText();

/// One line "PROGRAM: TEXT" on standard error, PROGRAM being the name this peer runs under.
void complain(const std::string& text);

} // namespace orvo::simulator
