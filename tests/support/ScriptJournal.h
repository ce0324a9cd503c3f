#pragma once

#include <string>
#include <vector>

namespace orvo::test
{

/// Scripts of the device that note each call in one journal, in the order of the calls.
///
/// Meant for programs that run in a box: it writes to the device's real paths.
/// Owns:    the scripts it installed; they are removed with it.
/// Threads: any; a call is in the journal when its script has ended.
class ScriptJournal
{
public:
    /// Begins with an empty journal.
    ScriptJournal();
    ~ScriptJournal();
    ScriptJournal(const ScriptJournal&) = delete;
    ScriptJournal& operator=(const ScriptJournal&) = delete;

    /// Puts a script at path (folders are made): it notes `path arguments`, runs body (shell text)
    /// and exits with exitStatus. body may use note TEXT to write lines of its own.
    void install(const std::string& path, int exitStatus = 0, const std::string& body = {});

    /// The calls so far, as "/opt/orvo/etc/init.d/30_pictor restart".
    [[nodiscard]] std::vector<std::string> calls() const;

private:
    std::string m_path;
    std::vector<std::string> m_scripts;
};

} // namespace orvo::test
