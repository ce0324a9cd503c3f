#include "watchdog/GuardOptions.h"

#include "common/Numbers.h"

#include <algorithm>
#include <iterator>

namespace orvo::simulator
{

namespace
{
bool takeOption(GuardOptions& options, const std::string& name, const std::string& value,
                std::string& problem)
{
    if (name == "--device")
    {
        options.device = value;
    }
    else if (name == "--journal")
    {
        options.journal = value;
    }
    else if (name == "--timeout-ms")
    {
        options.timeoutMs = parseMilliseconds(value).value_or(0);
        if (options.timeoutMs == 0)
        {
            problem = "--timeout-ms needs a whole number of at least 1, not '" + value + "'";
        }
    }
    else
    {
        problem = "unknown option '" + name + "'";
    }
    return problem.empty();
}
} // namespace

std::optional<GuardOptions> GuardOptions::parse(const std::vector<std::string>& words,
                                                std::string& problem)
{
    GuardOptions options;
    problem.clear();
    const auto separator = std::find(words.begin(), words.end(), "--");
    for (auto word = words.begin(); word < separator; std::advance(word, 2))
    {
        const auto value = std::next(word);
        if (value == separator)
        {
            problem = "option '" + *word + "' needs a value";
            return std::nullopt;
        }
        if (!takeOption(options, *word, *value, problem))
        {
            return std::nullopt;
        }
    }
    if (separator == words.end() || std::next(separator) == words.end())
    {
        problem = "no program given after --";
    }
    else if (options.device.empty() || options.journal.empty() || options.timeoutMs == 0)
    {
        problem = "--device, --timeout-ms and --journal must all be given";
    }
    if (!problem.empty())
    {
        return std::nullopt;
    }
    options.command.assign(std::next(separator), words.end());
    return options;
}

} // namespace orvo::simulator
