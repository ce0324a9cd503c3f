#include "ScriptJournal.h"

#include "Box.h"

#include <filesystem>
#include <fstream>

namespace orvo::test
{

ScriptJournal::ScriptJournal() : m_path("/box/journal")
{
    requireBox();
    std::ofstream(m_path, std::ios::trunc).flush();
}

ScriptJournal::~ScriptJournal()
{
    for (const std::string& script : m_scripts)
    {
        std::error_code isGoneAlready;
        std::filesystem::remove(script, isGoneAlready);
    }
}

void ScriptJournal::install(const std::string& path, int exitStatus, const std::string& body)
{
    namespace fs = std::filesystem;
    fs::create_directories(fs::path(path).parent_path());
    m_scripts.push_back(path);
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
