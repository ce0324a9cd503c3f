#include "Box.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace orvo::test
{

void requireBox()
{
    if (!std::filesystem::is_directory("/box"))
    {
        std::fputs("This test writes to the device's paths: run it with tests/support/in-box.\n",
                   stderr);
        std::abort();
    }
}

} // namespace orvo::test
