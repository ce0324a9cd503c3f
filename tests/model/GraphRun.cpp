#include "GraphRun.h"

#include "Exploration.h"
#include "GraphReplay.h"
#include "HandTime.h"
#include "WorldProcess.h"

#include <algorithm>
#include <cstdio>

#include <sys/wait.h>

namespace orvo::model
{

namespace
{

constexpr std::size_t kToldBreaches = 10;

struct GraphWork
{
    const Exploration* exploration;
    ModelSetting setting;
};

int walkGraph(void* argument)
{
    const auto& work = *static_cast<GraphWork*>(argument);
    GraphReplay replay(*work.exploration, work.setting);
    const bool isAgreed = replay.walkAll();
    std::printf("    walked on the real objects: %zu steps, %zu power-ons, %s\n", replay.steps(),
                replay.powerOns(), isAgreed ? "all agree" : "DIFFERENT");
    std::printf("%s", replay.difference().c_str());
    return isAgreed ? 0 : 1;
}

} // namespace

bool exploreDevice(const std::string& kind)
{
    GraphWork work{nullptr, {}};
    work.setting.isDeveloper = kind.rfind("developer", 0) == 0;
    work.setting.services = kind.find("-without") != std::string::npos ? bitOf(Wirl) : kMustBeUp;
    const Exploration exploration(work.setting);
    work.exploration = &exploration;
    std::printf("%s: %zu states (%zu unstable), %zu edges, %zu breaches\n", kind.c_str(),
                exploration.edges().size(), exploration.unstableStates(), exploration.edgeCount(),
                exploration.breaches().size());
    const std::size_t told = std::min(kToldBreaches, exploration.breaches().size());
    for (std::size_t i = 0; i < told; ++i)
    {
        std::printf("    this must never be: %s\n", exploration.breaches()[i].c_str());
    }
    int status = 0;
    waitpid(startWorldProcess(HandTime::install, walkGraph, &work), &status, 0);
    const int end = endOfProcess(status);
    if (end > 1)
    {
        std::printf("    the process of the walk ended with status %d\n", end);
    }
    return end == 0 && exploration.breaches().empty();
}

} // namespace orvo::model
