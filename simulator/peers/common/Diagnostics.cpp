#include "common/Diagnostics.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace orvo::simulator
{

std::string errnoText()
{
    return std::generic_category().message(errno);
}

void complain(const std::string& text)
{
    std::fprintf(stderr, "%s: %s\n", program_invocation_short_name, text.c_str());
}

} // namespace orvo::simulator
