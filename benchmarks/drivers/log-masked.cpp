// Log calls whose level is masked out; prints nanoseconds of one.
//
//   log-masked REDIS-SOCKET COUNT

#include "Measure.h"
#include "WrittenMessage.h"
#include "logger/RedisLogger.h"

using orvo::Logger::RedisLogger;

int main(int argc, char** argv)
{
    if (argc != 3)
    {
        bench::fail("log-masked REDIS-SOCKET COUNT");
    }
    const long count = bench::repetitions(argv[2]);
    RedisLogger logger(bench::kSource, argv[1], bench::kList, false);
    const double begin = bench::processorSeconds();
    for (long call = 0; call < count; ++call)
    {
        // The state machines' own kind of call.
        if (logger.log(orvo::Logger::TRACE, "%s::%s (%s)", "SuprUp", "ping", bench::kService) != 0)
        {
            bench::fail("a masked message was written");
        }
    }
    std::printf("%.3f\n", (bench::processorSeconds() - begin) / static_cast<double>(count) * 1e9);
    bench::leave();
}
