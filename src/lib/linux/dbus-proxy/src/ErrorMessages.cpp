#include "ErrorMessages.h"

#include <algorithm>
#include <array>

namespace orvo
{

namespace
{

struct ErrorMessage
{
    std::int32_t code;
    const char* text;
};

// The texts are the device's, misspellings included ("doen't", "more the one time"): clients and
// manuals quote them.
// clang-format off
constexpr std::array<ErrorMessage, kErrorMessageCount> kErrorMessages{{
    // Success.
    {0, ""},
    // XML-RPC transport.
    {100000, "XMLRPC object not found"},
    {100001, "XMLRPC method not found"},
    {100002, "Invalid XMLRPC parameter"},
    // Configuration and applications.
    {101000, "no parameter with the given name"},
    {101001, "value incompatible format"},
    {101002, "value out of range"},
    {101003, "parameter is readonly"},
    {101004, "device already has an edit-session active"},
    {101005, "invalid password"},
    {101006, "invalid SessionID"},
    {101007, "could not execute reboot"},
    {101008, "invalid command"},
    {101009, "invalid command parameter"},
    {101010, "invalid format"},
    {101011, "invalid device-type"},
    {101012, "unexpected/unsupported import-flags"},
    {101013, "there is no application on this Index"},
    {101014, "an application is in edit-mode"},
    {101015, "maximum number of application"},
    {101016, "there is no application in edit-status"},
    {101017, "name is too long"},
    {101018, "description is too long"},
    {101019, "given array doesn't contain all Applications"},
    {101020, "given array contains a non-existing Application-ID"},
    {101021, "an Index is mapped more the one time"},
    {101022, "an Index is out-of-range (must be between 1 and 32)"},
    {101023, "password was not active"},
    {101024, "device is in an operation mode which does not allow to perform a software trigger"},
    {101025, "invalid schema"},
    {101026, "invalid Pin-ID"},
    {101027, "image settings type does not exist"},
    {101028, "unsupported application type"},
    {101029, "maximum number of models"},
    {101030, "unsupported model type"},
    {101031, "there is no model with this ID"},
    {101032, "application requires pin that is already used by device global feature"},
    {101033, "logic-layer contains model+roi which doen't exist anymore"},
    {101034, "Teach Failed"},
    {101035, "Invalid ROI Specification"},
    {101036, "The selected Temporal Filter can not be combined with the selected Trigger Mode"},
    {101037, "teaching failed, because of not enough valid pixels in the ROI"},
    {101038, "teaching failed, because of too much distance noise in the ROI"},
    {101039, "teaching failed, because the pixels inside the ROI do not define a reliable plane"},
    {101040, "teaching failed, because the angle between the sensor's z-axis and the plane normal exceeds the maximum"},
    {101041, "not possible on this pin"},
    {101042, "unable to request snapshot"},
    {101043, "unable to process snapshot"},
    {101044, "anchor teach failed"},
    {101045, "teach failed, missing ref-image/background"},
    {101046, "Failed to read EEPROM"},
    {101047, "Invalid Logic Graph"},
    {101048, "Device is not in run mode"},
    {101049, "Current exposure mode does not support this operation"},
    {101050, "Extern application switch active"},
    {101051, "invalid network configuration"},
    {101052, "device busy"},
    {101053, "Service Report is not locked"},
    {101054, "continuous autoexposure is active"},
    {101055, "LED duty cycle violation"},
    {101056, "auto exposure not supported"},
    {101057, "No statistic data for given application ID"},
    {101058, "invalid firmware version"},
    {101059, "out of memory"},
    {101060, "Internal D-Bus error"},
    {101061, "Invalid ProfiNet Device Name"},
    {101062, "Unable to set fieldbus"},
    {101063, "Motor AF interface initialization error (EEPROM/driver)"},
    {101069, "Trigger forbidden during pause time"},
    // IO and diagnostic controller.
    {200000, "WIRL_FAIL"},
    {200001, "WIRL_CRC_ERROR"},
    {200002, "WIRL_SSTATE_INVALID"},
    {200003, "WIRL_CONNECTION_ERROR"},
    {200004, "WIRL_VALUE_RANGE_ERROR"},
    {200005, "WIRL_DIAGEVENT_UNSUPPORTED"},
    {200006, "WIRL_NOT_IMPLEMENTED"},
    {200007, "WIRL_INTERNAL_ERROR"},
    {200008, "WIRL_SEQ_NR_ERROR"},
    {200009, "WIRL_TIMEOUT_ERROR"},
    // Logic layer.
    {300000, "LL_LUA_RUNTIME_ERROR: runtime error in lua interpreter"},
    {300001, "LL_JSON_ERROR: error while parsing json/creating graph from json"},
    {300002, "LL_RUNTIME_ERROR: general runtime error in logic layer"},
    {300003, "LL_JSON_SEQUENTIAL_FILE: handling a <sequential file> as json input and it is not possible"},
}};
// clang-format on

constexpr bool isSortedByCode()
{
    for (std::size_t i = 1; i < kErrorMessages.size(); ++i)
    {
        if (kErrorMessages[i - 1].code >= kErrorMessages[i].code)
        {
            return false;
        }
    }
    return true;
}

static_assert(isSortedByCode(), "the lookup halves the table, and a code has one text only");
static_assert(kErrorMessages.back().text != nullptr, "every row is filled in");

} // namespace

const char* findErrorMessage(std::int32_t code)
{
    const auto* row = std::lower_bound(kErrorMessages.begin(), kErrorMessages.end(), code,
                                       [](const ErrorMessage& message, std::int32_t wanted)
                                       { return message.code < wanted; });
    return row != kErrorMessages.end() && row->code == code ? row->text : nullptr;
}

} // namespace orvo
