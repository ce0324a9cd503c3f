#include "DevicePaths.h"
#include "doctor/Examinations.h"
#include "doctor/WatchdogFacts.h"
#include "model/DeviceModel.h"
#include "model/Duration.h"
#include "model/ScriptRuns.h"
#include "model/ServiceNames.h"

#include <QFile>

#include <cerrno>
#include <set>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

namespace orvo::ctl
{

namespace
{

DeviceFacts factsFrom(const std::vector<ReadRecord>& records)
{
    DeviceModel model;
    for (const ReadRecord& record : records)
    {
        model.add(record);
    }
    return model.facts();
}

void examineScript(const std::string& path, const std::string& whose, Findings& findings)
{
    struct stat state = {};
    if (::stat(path.c_str(), &state) != 0)
    {
        findings.push_back({Finding::Grade::Trouble, path,
                            whose + " cannot be started: " + std::system_category().message(errno),
                            "Install the package that brings it."});
    }
    else if (::access(path.c_str(), X_OK) != 0 || !S_ISREG(state.st_mode))
    {
        findings.push_back({Finding::Grade::Trouble, path,
                            whose + " cannot be started: it is not executable",
                            "chmod 755 " + path});
    }
    else
    {
        findings.push_back({Finding::Grade::Fine, path, "is there and executable", ""});
    }
}

void compareWithScripts(const std::vector<ReadRecord>& records, Findings& findings)
{
    const auto timeout = WatchdogFacts::read().timeout;
    const auto run = longestScriptRun(records);
    std::string text = timeout ? "its time-out is " + durationText(*timeout)
                               : "its time-out is not told by the kernel";
    if (run)
    {
        text += "; longest script run in the log " + durationText(run->seconds) + " (" + run->what +
                ")";
    }
    const bool isShort = timeout && run && run->seconds >= *timeout;
    findings.push_back({isShort   ? Finding::Grade::Trouble
                        : timeout ? Finding::Grade::Fine
                                  : Finding::Grade::Note,
                        kWatchdogNode, text,
                        isShort
                            ? "Nobody feeds it during a script: make the script quicker, or the "
                              "time-out longer in the boot configuration."
                            : ""});
}

} // namespace

void examineScripts(const std::string& family, Findings& findings)
{
    static const std::set<std::string> kSmall{"wirl"};
    static const std::set<std::string> kJudged{"corvane", "pictor"};
    for (const NamedService& service : namedServices())
    {
        const bool isRun = family == "ZM7xx"   ? kSmall.count(service.processName) != 0
                           : family == "ZQ9XX" ? kJudged.count(service.processName) != 0
                                               : true;
        if (isRun)
        {
            examineScript(service.script, service.processName, findings);
        }
    }
    const std::string command = kRestartPackageCommand;
    examineScript(command.substr(0, command.find(' ')), "the whole package", findings);
}

void examineWatchdog(const std::vector<ReadRecord>& records, Findings& findings)
{
    struct stat state = {};
    const DeviceFacts facts = factsFrom(records);
    if (::stat(kWatchdogNode, &state) != 0)
    {
        findings.push_back({Finding::Grade::Trouble, kWatchdogNode,
                            std::string("is missing: ") + std::system_category().message(errno),
                            "Load the watchdog's driver: a supervisor that hangs is not reset."});
        return;
    }
    compareWithScripts(records, findings);
    if (facts.unfed)
    {
        findings.push_back({Finding::Grade::Trouble, kWatchdogNode,
                            "the supervisor could not feed it",
                            "See that no other program holds it, and start the supervisor again."});
    }
}

void examineDeveloperMode(const std::vector<ReadRecord>& records, Findings& findings)
{
    const DeviceFacts facts = factsFrom(records);
    bool isMarked = false;
    for (const char* marker : {kDeveloperMarker, kPersistentDeveloperMarker})
    {
        if (QFile::exists(QLatin1String(marker)))
        {
            isMarked = true;
            findings.push_back({Finding::Grade::Note, marker,
                                "exists: developer mode, nothing is restarted or rebooted",
                                std::string("For supervision: rm ") + marker +
                                    ", then start the supervisor again."});
        }
    }
    if (!isMarked)
    {
        findings.push_back({Finding::Grade::Fine, "developer mode", "no marker file", ""});
    }
    if (facts.started && facts.isDeveloper != isMarked)
    {
        findings.push_back({Finding::Grade::Trouble, "developer mode",
                            std::string("the supervisor started ") +
                                (facts.isDeveloper ? "in it" : "without it") +
                                ", and the marker files changed since",
                            "Start the supervisor again."});
    }
}

} // namespace orvo::ctl
