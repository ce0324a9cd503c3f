#include "output/Progress.h"

#include <cstdio>
#include <utility>

#include <unistd.h>

namespace orvo::ctl
{

Progress::Progress(std::string what)
    : m_what(std::move(what)), m_isTerminal(isatty(STDERR_FILENO) != 0)
{
}

Progress::~Progress()
{
    if (m_isShown && m_isTerminal)
    {
        std::fputs("\r\033[K", stderr);
    }
}

void Progress::show(int seconds)
{
    if (m_isTerminal)
    {
        std::fprintf(stderr, "\r%s ... %d s\033[K", m_what.c_str(), seconds);
    }
    else if (!m_isShown)
    {
        std::fprintf(stderr, "%s ...\n", m_what.c_str());
    }
    m_isShown = true;
}

} // namespace orvo::ctl
