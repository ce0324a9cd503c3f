#include "doctor/Examinations.h"
#include "identification/EepromCapabilities.h"
#include "identification/EepromLayout.h"
#include "identification/EepromReader.h"
#include "identification/EepromRecord.h"
#include "model/DeviceModel.h"

namespace orvo::ctl
{

namespace
{

void examineEeprom(const EepromModule& module, Findings& findings)
{
    const std::string object = std::string("EEPROM ") + module.letter + " (2-00" +
                               std::to_string(module.deviceNumber) + ")";
    EepromRecord record{};
    if (!readEeprom(module.id, record.data(), record.size()))
    {
        const bool decides = module.id == kEepromF || module.id == kEepromM;
        findings.push_back({decides ? Finding::Grade::Note : Finding::Grade::Fine, object,
                            "not fitted, or not readable", ""});
        return;
    }
    std::string code;
    for (const char each : eepromTypeCode(record))
    {
        code += each >= ' ' && each <= '~' ? each : '#';
    }
    const bool isValid = isValidEepromRecord(module.id, record);
    findings.push_back(
        {isValid ? Finding::Grade::Fine : Finding::Grade::Trouble, object,
         "type code " + code + (isValid ? ", checksum right" : ": header or checksum is wrong"),
         isValid ? "" : "It counts as missing: have the record written again."});
}

std::string familyOfDevice()
{
    if (hasCapability(kCapabilityZk4xx))
    {
        return "ZK4XX";
    }
    if (hasCapability(kCapabilityZm7xx))
    {
        return "ZM7xx";
    }
    return hasCapability(kCapabilityZq9xx) ? "ZQ9XX" : "";
}

} // namespace

std::string examineIdentity(const std::vector<ReadRecord>& records, Findings& findings)
{
    for (const EepromModule& module : kEepromModules)
    {
        examineEeprom(module, findings);
    }
    std::string family = familyOfDevice();
    if (family.empty())
    {
        findings.push_back({Finding::Grade::Trouble, "device family",
                            "no EEPROM says one: the supervisor gives up at its start",
                            "The record of module F or M decides: have it written again."});
        return family;
    }
    findings.push_back({Finding::Grade::Fine, "device family", family, ""});
    DeviceModel model;
    for (const ReadRecord& record : records)
    {
        model.add(record);
    }
    const std::string& found = model.facts().family;
    if (!found.empty() && found != family)
    {
        findings.push_back({Finding::Grade::Trouble, "device family",
                            "the supervisor found " + found + " at its start",
                            "The EEPROMs changed since: start the supervisor again."});
    }
    if (family == "ZM7xx")
    {
        findings.push_back({Finding::Grade::Trouble, "device family",
                            "runs neither corvane nor pictor, which the machines wait for: the "
                            "device is judged unstable, and rebooted in the end",
                            "Keep it in developer mode, or do not run the supervisor there."});
    }
    return family;
}

} // namespace orvo::ctl
