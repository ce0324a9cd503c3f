// A crash pattern and, behind its first line end, a message: no pattern may hurt the process or
// keep it, whatever the message.

#include "FuzzTarget.h"

#include "Claim.h"

#include "CrashPattern.h"
#include "logger/LogDefaults.h"

#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace orvo::Logger;
    using orvo::fuzz::claim;

    const std::string input(data, data + size);
    const std::size_t end = input.find('\n');
    const std::string pattern = input.substr(0, end);
    const std::string message =
        end == std::string::npos ? "" : input.substr(end + 1, kMessageCapacity - 1);

    std::string reason;
    const CrashVerdict verdict = tryCrashPattern(pattern, message, reason);
    claim((verdict == CrashVerdict::Unusable) == !reason.empty(), "a reason for what is unusable");
    if (verdict != CrashVerdict::Unusable)
    {
        // In a group of its own it says the same, unless that makes it too long.
        const CrashVerdict grouped = tryCrashPattern("(" + pattern + ")", message, reason);
        claim(grouped == verdict || grouped == CrashVerdict::Unusable, "the same in a group");
    }
    return 0;
}
