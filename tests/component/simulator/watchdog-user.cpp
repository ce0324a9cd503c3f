// A program that uses the watchdog, word by word; each result is a line on standard output.
//
//   open FILE      feed          gettimeout     write TEXT     close
//   feeds N MS     N feeds, one each MS milliseconds
//   bad-pointer    gettimeout to an address that is not mapped
//   fork           goes on in a child; the parent waits for it and ends with its status
//   orphan         starts a process that leaves the session and waits for ever, without a parent
//   short-orphan   the same, but it ends at once
//   pid            says the process id       terminal   opens a terminal and asks whether it is one
//   wait           waits for ever            exit N

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <fcntl.h>
#include <linux/watchdog.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

void say(const char* what, long value)
{
    std::printf("%s %ld\n", what, value);
    std::fflush(stdout);
}

void sayResult(const char* what, int result)
{
    say(what, result == 0 ? 0 : -errno);
}

void feed(int device)
{
    sayResult("feed", ioctl(device, WDIOC_KEEPALIVE, nullptr));
}

void getTimeout(int device)
{
    int seconds = -1;
    const int result = ioctl(device, WDIOC_GETTIMEOUT, &seconds);
    say("gettimeout", result == 0 ? seconds : -errno);
}

void badPointer(int device)
{
    void* const page = mmap(nullptr, 1, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    sayResult("bad-pointer", ioctl(device, WDIOC_GETTIMEOUT, page));
}

void goOnInChild()
{
    const pid_t child = fork();
    if (child != 0)
    {
        int status = 0;
        waitpid(child, &status, 0);
        _exit(WEXITSTATUS(status));
    }
}

void startOrphan(bool waits)
{
    std::array<int, 2> born{};
    if (pipe(born.data()) != 0)
    {
        std::abort();
    }
    const pid_t parent = fork();
    if (parent == 0)
    {
        if (fork() == 0)
        {
            setsid();
            const pid_t own = getpid();
            (void)!write(born[1], &own, sizeof own);
            if (waits)
            {
                pause();
            }
            _exit(0);
        }
        _exit(0);
    }
    pid_t orphan = -1;
    (void)!read(born[0], &orphan, sizeof orphan);
    waitpid(parent, nullptr, 0);
    say("orphan", orphan);
}

void askTerminal()
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    say("terminal", isatty(terminal));
    winsize size{};
    sayResult("size", ioctl(terminal, TIOCGWINSZ, &size));
}

/// Does the words of the command line in turn.
class WatchdogUser
{
public:
    WatchdogUser(char** words, int count) : m_words(words, words + count) {}

    int run()
    {
        while (m_next < m_words.size())
        {
            const std::string word = take();
            if (word == "exit")
            {
                return takeNumber();
            }
            const auto deed = m_deeds.find(word);
            if (deed == m_deeds.end())
            {
                std::fprintf(stderr, "unknown word %s\n", word.c_str());
                return 1;
            }
            deed->second();
        }
        return 0;
    }

private:
    std::string take() { return m_words.at(m_next++); }
    int takeNumber() { return std::stoi(take()); }

    void openDevice()
    {
        m_device = open(take().c_str(), O_RDWR);
        say("open", m_device < 0 ? -errno : 0);
    }

    void feedInPeriods()
    {
        const int count = takeNumber();
        const int periodMs = takeNumber();
        for (int number = 0; number < count; ++number)
        {
            poll(nullptr, 0, periodMs);
            feed(m_device);
        }
    }

    void writeText()
    {
        const std::string text = take();
        say("write", write(m_device, text.data(), text.size()));
    }

    std::vector<std::string> m_words;
    std::size_t m_next{0};
    int m_device{-1};
    const std::map<std::string, std::function<void()>> m_deeds = {
        {"open",
         [this]
         {
             openDevice();
         }},
        {"feed",
         [this]
         {
             feed(m_device);
         }},
        {"feeds",
         [this]
         {
             feedInPeriods();
         }},
        {"gettimeout",
         [this]
         {
             getTimeout(m_device);
         }},
        {"bad-pointer",
         [this]
         {
             badPointer(m_device);
         }},
        {"write",
         [this]
         {
             writeText();
         }},
        {"close",
         [this]
         {
             sayResult("close", close(m_device));
         }},
        {"fork",
         []
         {
             goOnInChild();
         }},
        {"orphan",
         []
         {
             startOrphan(true);
         }},
        {"short-orphan",
         []
         {
             startOrphan(false);
         }},
        {"pid",
         []
         {
             say("pid", getpid());
         }},
        {"terminal",
         []
         {
             askTerminal();
         }},
        {"wait",
         []
         {
             pause();
         }},
    };
};

} // namespace

int main(int argc, char** argv)
{
    return WatchdogUser(argv + 1, argc - 1).run();
}
