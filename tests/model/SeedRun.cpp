#include "SeedRun.h"

#include "Duel.h"
#include "VirtualTime.h"
#include "WorldProcess.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orvo::model
{

namespace
{

constexpr int kPlayed = 0;
constexpr int kDiffered = 1;
constexpr double kMsPerHour = 3'600'000;

/// Written by the process of a seed, read when it has ended.
using SharedFigures = SeedFigures;

struct FileCloser
{
    void operator()(std::FILE* file) const { (void)std::fclose(file); }
};
/// What a process says on standard error; told only when it crashes.
using LastWords = std::unique_ptr<std::FILE, FileCloser>;

void tell(std::FILE* lastWords)
{
    std::rewind(lastWords);
    char line[1000];
    while (std::fgets(line, sizeof line, lastWords) != nullptr)
    {
        std::fputs(line, stdout);
    }
}

SharedFigures* makeShared()
{
    void* const memory = mmap(nullptr, sizeof(SharedFigures), PROT_READ | PROT_WRITE,
                              MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
    {
        std::perror("model: no memory to share with the process of a seed");
        std::exit(EXIT_FAILURE); // NOLINT(concurrency-mt-unsafe): one thread
    }
    return new (memory) SharedFigures;
}

struct SeedWork
{
    std::uint64_t seed;
    const SeedOrder* order;
    SharedFigures* figures;
    std::FILE* lastWords;
};

int playSeed(void* argument)
{
    const auto& work = *static_cast<SeedWork*>(argument);
    (void)dup2(fileno(work.lastWords), STDERR_FILENO);
    const Verdict verdict = playScenario(work.seed, work.order->hours, work.order->isTold);
    *work.figures = {verdict.tally, verdict.simulatedMs, 1, verdict.isAgreed ? 0U : 1U};
    if (!verdict.isAgreed)
    {
        std::printf("%s", verdict.difference.c_str());
    }
    return verdict.isAgreed ? kPlayed : kDiffered;
}

/// The seeds that are being played.
class Players
{
public:
    explicit Players(const SeedOrder& order) : m_order(order) {}

    void start(std::uint64_t seed)
    {
        SharedFigures* const shared = makeShared();
        LastWords lastWords(std::tmpfile());
        SeedWork work{seed, &m_order, shared, lastWords.get()};
        m_running[startWorldProcess(test::VirtualTime::install, playSeed, &work)] = {
            seed, shared, std::move(lastWords)};
    }

    void awaitOne(SeedFigures& figures)
    {
        int status = 0;
        const pid_t child = wait(&status);
        const auto& [seed, shared, lastWords] = m_running.at(child);
        const int end = endOfProcess(status);
        if (end > kDiffered)
        {
            *shared = {{}, 0, 1, 1};
            std::printf("the process of the seed ended with status %d\n", end);
            tell(lastWords.get());
        }
        if (shared->failed != 0)
        {
            std::printf("SEED %llu FAILED. Again: wardex_model replay %llu %lld\n\n",
                        static_cast<unsigned long long>(seed),
                        static_cast<unsigned long long>(seed),
                        static_cast<long long>(m_order.hours));
        }
        figures.add(*shared);
        munmap(shared, sizeof(SharedFigures));
        m_running.erase(child);
    }

    [[nodiscard]] std::size_t count() const { return m_running.size(); }

private:
    const SeedOrder& m_order;
    struct Player
    {
        std::uint64_t seed;
        SharedFigures* figures;
        LastWords lastWords;
    };
    std::map<pid_t, Player> m_running;
};

} // namespace

void SeedFigures::add(const SeedFigures& other)
{
    tally.pings += other.tally.pings;
    tally.feeds += other.tally.feeds;
    tally.records += other.tally.records;
    tally.signals += other.tally.signals;
    tally.scripts += other.tally.scripts;
    tally.packageRestarts += other.tally.packageRestarts;
    tally.reboots += other.tally.reboots;
    tally.incidents += other.tally.incidents;
    simulatedMs += other.simulatedMs;
    seeds += other.seeds;
    failed += other.failed;
}

std::string SeedFigures::inWords() const
{
    char text[400];
    (void)std::snprintf(
        text, sizeof text,
        "%llu seeds, %llu failed, %.0f simulated hours: %llu pings, %llu feeds, %llu records, "
        "%llu signals, %llu incidents, %llu scripts, %llu package restarts, %llu reboots",
        static_cast<unsigned long long>(seeds), static_cast<unsigned long long>(failed),
        static_cast<double>(simulatedMs) / kMsPerHour, static_cast<unsigned long long>(tally.pings),
        static_cast<unsigned long long>(tally.feeds),
        static_cast<unsigned long long>(tally.records),
        static_cast<unsigned long long>(tally.signals),
        static_cast<unsigned long long>(tally.incidents),
        static_cast<unsigned long long>(tally.scripts),
        static_cast<unsigned long long>(tally.packageRestarts),
        static_cast<unsigned long long>(tally.reboots));
    return text;
}

SeedFigures playSeeds(const SeedOrder& order)
{
    SeedFigures figures;
    Players players(order);
    const auto jobs = static_cast<std::size_t>(std::max(1, order.jobs));
    for (std::uint64_t seed = order.first; seed < order.first + order.count; ++seed)
    {
        if (players.count() == jobs)
        {
            players.awaitOne(figures);
        }
        players.start(seed);
    }
    while (players.count() > 0)
    {
        players.awaitOne(figures);
    }
    return figures;
}

} // namespace orvo::model
