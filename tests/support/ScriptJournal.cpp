#include "ScriptJournal.h"

#include <filesystem>
#include <fstream>

namespace orvo::test
{

ScriptJournal::ScriptJournal() : m_path("/box/journal")
{
    std::ofstream(m_path, std::ios::trunc).flush();
}

void ScriptJournal::install(const std::string& path, int exitStatus, const std::string& body) const
{
    namespace fs = std::filesystem;
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream script(path, std::ios::trunc);
    script << "#!/bin/sh\n"
           << "note() { echo \"$*\" >>" << m_path << "; }\n"
           << "note \"$0\" \"$@\"\n"
           << body << "\nexit " << exitStatus << "\n";
    script.close();
    fs::permissions(path, fs::perms::owner_all | fs::perms::group_exec | fs::perms::others_exec,
                    fs::perm_options::add);
}

std::vector<std::string> ScriptJournal::calls() const
{
    std::vector<std::string> calls;
    std::ifstream journal(m_path);
    for (std::string line; std::getline(journal, line);)
    {
        calls.push_back(line);
    }
    return calls;
}

} // namespace orvo::test
