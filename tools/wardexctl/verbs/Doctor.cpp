#include "verbs/Doctor.h"

#include "doctor/Examinations.h"
#include "log/StoredLog.h"
#include "output/ExitStatus.h"
#include "output/Json.h"

#include <algorithm>

namespace orvo::ctl
{

namespace
{

struct GradeWords
{
    const char* word;
    const char* mark;
    Tone tone;
};

GradeWords wordsOf(Finding::Grade grade)
{
    switch (grade)
    {
    case Finding::Grade::Fine:
        return {"fine", "ok      ", Tone::Good};
    case Finding::Grade::Note:
        return {"note", "note    ", Tone::Warning};
    case Finding::Grade::Trouble:
        break;
    }
    return {"trouble", "TROUBLE ", Tone::Bad};
}

void show(const Output& output, const Findings& findings, bool isHealthy)
{
    QJsonArray array;
    for (const Finding& finding : findings)
    {
        const GradeWords words = wordsOf(finding.grade);
        output.line(output.tone(words.tone, words.mark) + finding.object + ": " + finding.text);
        if (!finding.remedy.empty())
        {
            output.line("        " + finding.remedy);
        }
        array.append(QJsonObject{{"grade", words.word},
                                 {"object", jsonText(finding.object)},
                                 {"text", jsonText(finding.text)},
                                 {"remedy", jsonTextOrNull(finding.remedy)}});
    }
    QJsonObject json = jsonOf("doctor");
    json["healthy"] = isHealthy;
    json["findings"] = array;
    output.json(json);
}

} // namespace

int runDoctor(const Output& output)
{
    Findings findings;
    const bool answers = examineBus(findings);
    examineRedis(findings);
    StoredLog log;
    const std::vector<ReadRecord> records =
        readRecords(log.read().value_or(std::vector<std::string>()));
    const std::string family = examineIdentity(records, findings);
    examineScripts(family, findings);
    examineWatchdog(records, findings);
    examineDeveloperMode(records, findings);
    examineClock(findings);
    const bool isHealthy =
        std::none_of(findings.begin(), findings.end(),
                     [](const Finding& each) { return each.grade == Finding::Grade::Trouble; });
    show(output, findings, isHealthy);
    if (!answers)
    {
        return kSupervisorSilent;
    }
    return isHealthy ? kOk : kFailed;
}

} // namespace orvo::ctl
