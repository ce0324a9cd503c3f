// Log calls that write a record each; prints records per second.
//
//   log-writes REDIS-SOCKET COUNT

#include "Measure.h"
#include "WrittenMessage.h"
#include "logger/RedisLogger.h"

using orvo::Logger::RedisLogger;

int main(int argc, char** argv)
{
    if (argc != 3)
    {
        bench::fail("log-writes REDIS-SOCKET COUNT");
    }
    const long count = bench::repetitions(argv[2]);
    RedisLogger logger(bench::kSource, argv[1], bench::kList, false);
    const double begin = bench::wallSeconds();
    for (long call = 0; call < count; ++call)
    {
        const int written = logger.log(orvo::Logger::WARN, bench::kFormat, bench::kOrigin,
                                       bench::kService, bench::kScript);
        if (written != bench::kMessageLength)
        {
            bench::fail("a record was not written");
        }
    }
    std::printf("%.1f\n", static_cast<double>(count) / (bench::wallSeconds() - begin));
    bench::leave();
}
