#include "output/Terminal.h"

#include <algorithm>
#include <cstring>

#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace orvo::ctl
{

Terminal Terminal::ofOutput()
{
    constexpr std::size_t kLeast = 40;
    Terminal terminal;
    winsize size{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
    {
        terminal.width = std::max<std::size_t>(size.ws_col, kLeast);
    }
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody sets the locale once the program runs
    terminal.isUtf8 = std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0;
    return terminal;
}

} // namespace orvo::ctl
