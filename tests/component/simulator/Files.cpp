#include "Files.h"

#include <filesystem>
#include <fstream>
#include <sstream>

namespace orvo::test
{

std::string peer(const std::string& name)
{
    return std::string(PEERS_FOLDER "/") + name;
}

std::string contentOf(const std::string& path)
{
    std::ostringstream content;
    content << std::ifstream(path).rdbuf();
    return content.str();
}

std::vector<std::string> linesOf(const std::string& path)
{
    std::vector<std::string> lines;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);)
    {
        lines.push_back(line);
    }
    return lines;
}

std::vector<std::string> journalOf(const std::string& path)
{
    std::vector<std::string> lines = linesOf(path);
    for (std::string& line : lines)
    {
        line.erase(0, line.find(' ') + 1);
    }
    return lines;
}

std::vector<double> timesOf(const std::string& path)
{
    std::vector<double> times;
    for (const std::string& line : linesOf(path))
    {
        times.push_back(std::stod(line));
    }
    return times;
}

void replaceFile(const std::string& path, const std::string& content)
{
    const std::string fresh = path + ".new";
    std::ofstream(fresh) << content;
    std::filesystem::rename(fresh, path);
}

} // namespace orvo::test
