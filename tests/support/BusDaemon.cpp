#include "BusDaemon.h"

#include "Eventually.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <vector>

namespace orvo::test
{

namespace
{

constexpr char kConfiguration[] = R"(<!DOCTYPE busconfig PUBLIC
    "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
    "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <listen>)";

constexpr char kPolicy[] = R"(</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow send_destination="*" eavesdrop="true"/>
    <allow receive_sender="*" eavesdrop="true"/>
  </policy>
</busconfig>
)";

std::string contentOf(const std::string& path)
{
    std::ostringstream content;
    content << std::ifstream(path).rdbuf();
    return content.str();
}

} // namespace

BusDaemon& BusDaemon::ofThisProcess()
{
    static BusDaemon daemon;
    return daemon;
}

BusDaemon::BusDaemon()
{
    const std::string folder = m_folder.path().toStdString();
    m_address = "unix:path=" + folder + "/bus";
    std::ofstream(folder + "/bus.conf") << kConfiguration << m_address << kPolicy;
    start();
    // The program has no second thread yet. NOLINTNEXTLINE(concurrency-mt-unsafe)
    setenv("DBUS_SYSTEM_BUS_ADDRESS", m_address.c_str(), 1);
}

BusDaemon::~BusDaemon() = default;

void BusDaemon::crash()
{
    m_daemon->kill();
}

void BusDaemon::restart()
{
    crash();
    start();
}

void BusDaemon::start()
{
    const std::string folder = m_folder.path().toStdString();
    const std::string output = folder + "/output";
    // What an earlier daemon printed must not be taken for this one's.
    std::ofstream(output, std::ios::trunc).close();
    m_daemon = std::make_unique<ChildProcess>(
        std::vector<std::string>{"dbus-daemon", "--nofork", "--print-address",
                                 "--config-file=" + folder + "/bus.conf"},
        output);
    // It prints its address when it listens.
    if (!eventually([&] { return contentOf(output).find(m_address) != std::string::npos; }))
    {
        std::fprintf(stderr, "dbus-daemon does not listen on %s; it says:\n%s", m_address.c_str(),
                     contentOf(output).c_str());
        std::abort();
    }
}

} // namespace orvo::test
