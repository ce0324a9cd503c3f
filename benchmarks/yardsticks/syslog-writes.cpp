// Writes the same message to the machine's syslog; prints messages per second.
//
//   syslog-writes COUNT

#include "Measure.h"
#include "WrittenMessage.h"

#include <syslog.h>

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        bench::fail("syslog-writes COUNT");
    }
    const long count = bench::repetitions(argv[1]);
    openlog(bench::kSource, LOG_PID | LOG_NDELAY, LOG_LOCAL1);
    const double begin = bench::wallSeconds();
    for (long message = 0; message < count; ++message)
    {
        syslog(LOG_WARNING, bench::kFormat, bench::kOrigin, bench::kService, bench::kScript);
    }
    std::printf("%.1f\n", static_cast<double>(count) / (bench::wallSeconds() - begin));
    closelog();
    return EXIT_SUCCESS;
}
