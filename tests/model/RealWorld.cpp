// Everything through which the product's objects reach the outside of the process, led into the
// world. The program is linked so that the product's calls of these functions, and only those, come
// here (CMakeLists.txt); the last four take the place of whole source files.

#include "RealWorld.h"

#include "ConfigStore.h"
#include "ConfigThread.h"
#include "ProcessRun.h"
#include "RealSupervisor.h"
#include "RecordPipeline.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <linux/watchdog.h>
#include <sys/socket.h>
#include <unistd.h>

namespace orvo::model
{

namespace
{

Surroundings* g_world = nullptr;
std::uint32_t g_logMask = 0;

/// A socket that leads nowhere.
int openNothing()
{
    return socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
}

} // namespace

void enterRealWorld(Surroundings* world, std::uint32_t logMask)
{
    g_world = world;
    g_logMask = logMask;
}

Surroundings& realWorld()
{
    return *g_world;
}

/// Takes the text of a record apart; everything but the time must be as the model would write it.
void noteRecord(const char* record)
{
    const std::string text(record);
    const std::size_t process =
        text.find("\", \"P\":\"" + std::to_string(getpid()) + "\", \"C\":\"");
    const std::string between = "\", \"S\":\"wardex\", \"M\":\"";
    const std::size_t source = text.find(between);
    const std::string end = "\"}";
    if (text.rfind("{\"T\":\"", 0) != 0 || process == std::string::npos ||
        source == std::string::npos || text.size() < source + between.size() + end.size() ||
        text.compare(text.size() - end.size(), end.size(), end) != 0)
    {
        realWorld().record("?", text);
        return;
    }
    const std::size_t level = text.find("\"C\":\"") + 5;
    const std::size_t message = source + between.size();
    realWorld().record(text.substr(level, source - level),
                       text.substr(message, text.size() - end.size() - message));
}

} // namespace orvo::model

using orvo::model::realWorld;

// NOLINTBEGIN(readability-identifier-naming): the linker makes these names
extern "C"
{
    int __wrap_open(const char* path, int /*flags*/, ...)
    {
        if (std::strcmp(path, "/dev/watchdog") != 0)
        {
            realWorld().record("?", std::string("open ") + path);
            return -1;
        }
        return realWorld().openWatchdog() ? orvo::model::openNothing() : -1;
    }

    // What open() is where files may be large.
    int __wrap_open64(const char* path, int flags, ...)
    {
        return __wrap_open(path, flags);
    }

    int __wrap_ioctl(int descriptor, unsigned long request, ...)
    {
        if (descriptor >= 0 && request == WDIOC_KEEPALIVE)
        {
            realWorld().feed();
        }
        return 0;
    }

    int __wrap_system(const char* command)
    {
        realWorld().shell(command);
        return 0;
    }

    unsigned __wrap_sleep(unsigned /*seconds*/)
    {
        throw orvo::model::Rebooted();
    }

    [[gnu::format(printf, 2, 3)]] void __wrap_syslog(int priority, const char* format, ...)
    {
        char text[512];
        va_list arguments;
        va_start(arguments, format);
        (void)std::vsnprintf(text, sizeof text, format, arguments);
        va_end(arguments);
        realWorld().syslog(priority, text);
    }

    redisContext* __wrap_redisConnectUnix(const char* /*path*/)
    {
        return redisConnectFd(orvo::model::openNothing());
    }
}
// NOLINTEND(readability-identifier-naming)

namespace orvo
{

ProcessOutcome runProcess(const QString& program, const QStringList& arguments)
{
    const QString line = (QStringList(program) + arguments).join(' ');
    const model::ProcessEnd end = realWorld().run(line.toStdString());
    return {ProcessOutcome::End::Exited, end.isSuccess ? 0 : 1, QString::fromStdString(end.out),
            QString::fromStdString(end.err)};
}

} // namespace orvo

namespace orvo::Logger
{

bool writeRecord(redisContext* /*connection*/, const RecordFrame& /*frame*/,
                 const std::string& /*listKey*/, const RecordText& record)
{
    model::noteRecord(record.data());
    return true;
}

RedisConnection openConfigStore(const char* /*caller*/, const char* /*namedSocket*/)
{
    return nullptr;
}

std::optional<std::string> loadConfiguration(const std::string& field)
{
    return R"({"source":")" + field + R"(","mask":)" + std::to_string(model::g_logMask) + "}";
}

std::optional<std::string> storeConfiguration(redisContext* /*store*/, const std::string& /*field*/,
                                              const std::string& /*text*/)
{
    return std::nullopt;
}

// Nobody publishes a configuration, so there is no thread that waits for one.
ConfigThread::ConfigThread(Endpoint endpoint, Consumer consumer)
    : m_endpoint(std::move(endpoint)), m_consumer(std::move(consumer))
{
}

ConfigThread::~ConfigThread() = default;

void ConfigThread::requestStop() {}

bool ConfigThread::isStopping()
{
    return true;
}

} // namespace orvo::Logger
