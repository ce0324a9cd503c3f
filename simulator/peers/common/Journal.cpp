#include "common/Journal.h"

#include "common/Diagnostics.h"
#include "common/MonotonicTime.h"

#include <fcntl.h>
#include <unistd.h>

namespace orvo::simulator
{

namespace
{
constexpr mode_t kJournalMode = 0644;
}

Journal::Journal(const std::string& path)
    : m_path(path),
      m_file(open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, kJournalMode))
{
    if (!m_file.isOpen())
    {
        complain("cannot open the journal " + path + ": " + errnoText() +
                 "; create its folder and make it writable");
    }
}

void Journal::note(const std::string& text)
{
    append(monotonicSeconds() + " " + text);
}

void Journal::append(const std::string& line)
{
    const std::string bytes = line + "\n";
    if (!isOpen() || m_complained)
    {
        return;
    }
    if (write(m_file.get(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
    {
        complain("cannot write the journal " + m_path + ": " + errnoText() +
                 "; it ends here, free some space and start again");
        m_complained = true;
    }
}

} // namespace orvo::simulator
