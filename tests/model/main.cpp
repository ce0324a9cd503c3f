// The model of supervision beside the product's objects; see usage() and docs/reliability.md.

#include "GraphRun.h"
#include "SeedRun.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace
{

using orvo::model::playSeeds;
using orvo::model::SeedFigures;
using orvo::model::SeedOrder;

constexpr std::int64_t kYearHours = 8760;
constexpr std::int64_t kYearScenarioHours = 10;
constexpr std::uint64_t kYearFirstSeed = 100'000;
constexpr std::int64_t kUsualHours = 2;

int usage()
{
    std::fputs(
        "Usage: wardex_model seeds FIRST COUNT [HOURS]   play seeds (2 hours each)\n"
        "       wardex_model replay SEED [HOURS]         play one, and tell every deed\n"
        "       wardex_model year                        play a simulated year\n"
        "       wardex_model explore KIND                walk every state: field, developer,\n"
        "                                                field-without, developer-without\n",
        stderr);
    return EXIT_FAILURE;
}

std::int64_t number(const std::vector<std::string>& words, std::size_t index,
                    std::int64_t otherwise)
{
    return index < words.size() ? std::strtoll(words[index].c_str(), nullptr, 10) : otherwise;
}

int play(const SeedOrder& order)
{
    const SeedFigures figures = playSeeds(order);
    std::printf("%s\n", figures.inWords().c_str());
    return figures.failed == 0 && figures.seeds == order.count ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int argc, char** argv)
{
    const std::vector<std::string> words(argv + 1, argv + argc);
    const std::string what = words.empty() ? "" : words.front();
    SeedOrder order;
    order.jobs = static_cast<int>(std::thread::hardware_concurrency());
    order.first = static_cast<std::uint64_t>(number(words, 1, 1));
    if (what == "seeds" && words.size() >= 3)
    {
        order.count = static_cast<std::uint64_t>(number(words, 2, 1));
        order.hours = number(words, 3, kUsualHours);
        order.jobs = 1; // ctest plays several runs side by side
        return play(order);
    }
    if (what == "replay" && words.size() >= 2)
    {
        order.hours = number(words, 2, kUsualHours);
        order.isTold = true;
        return play(order);
    }
    if (what == "explore" && words.size() == 2)
    {
        return orvo::model::exploreDevice(words[1]) ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    if (what == "year")
    {
        order.first = kYearFirstSeed;
        order.count = kYearHours / kYearScenarioHours;
        order.hours = kYearScenarioHours;
        return play(order);
    }
    return usage();
}
