#pragma once

#include <string>

namespace orvo::Logger
{

/// A text as it reads when it serves as a format without arguments: "%%" becomes "%". Every other
/// percent sign stays, since there is nothing that it could print: the text may come from anywhere.
std::string asFormatted(const char* text);

} // namespace orvo::Logger
