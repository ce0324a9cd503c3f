#include "NamedProcess.h"

#include "Box.h"
#include "Eventually.h"

#include <filesystem>
#include <fstream>

namespace orvo::test
{

namespace
{

std::string programNamed(const std::string& name)
{
    requireBox();
    std::string path = "/tmp/" + name;
    std::filesystem::remove(path);
    std::filesystem::create_symlink("/usr/bin/sleep", path);
    return path;
}

std::string listedName(pid_t pid)
{
    std::string name;
    std::getline(std::ifstream("/proc/" + std::to_string(pid) + "/comm"), name);
    return name;
}

} // namespace

NamedProcess::NamedProcess(const std::string& name) : m_process({programNamed(name), "600"})
{
    eventually([&] { return listedName(m_process.pid()) == name; });
}

} // namespace orvo::test
