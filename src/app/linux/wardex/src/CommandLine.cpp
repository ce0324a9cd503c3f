#include "CommandLine.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace orvo
{

namespace
{

using Finding = CommandLine::Finding;

struct Option
{
    std::string_view text;
    Finding finding;
};

constexpr Option kOptions[] = {
    {"-?", Finding::Help},
    {"-h", Finding::Help},
    {"--help", Finding::Help},
};

struct ErrorMessage
{
    Finding error;
    std::string_view prefix;
};

// The first and the third are what three flags can lead to: the others need options that share a
// beginning or take an argument, and stand here for the day when there is one.
constexpr ErrorMessage kErrorMessages[] = {
    {Finding::UnknownOption, "Invalid argument: "},
    {Finding::AmbiguousOption, "Multiple options matched the supplied option text: "},
    {Finding::CombinedArgumentOfFlag,
     "Option doesn't take an argument, but a combined argument was supplied: "},
    {Finding::CombinedInsteadOfSeparateArgument,
     "SO_REQ_CMB style-argument was supplied to a SO_REQ_SEP option: "},
    {Finding::MissingArgument, "Required argument was not supplied: "},
    {Finding::ArgumentLooksLikeOption, "Option argument looks like another option: "},
};

constexpr std::string_view kLongPrefix = "--";

bool startsWith(std::string_view text, std::string_view beginning)
{
    return text.substr(0, beginning.size()) == beginning;
}

bool isAbbreviation(std::string_view typed, std::string_view option)
{
    return typed.size() > kLongPrefix.size() && startsWith(typed, kLongPrefix) &&
           startsWith(option, typed);
}

Finding match(std::string_view typed)
{
    const auto* exact = std::find_if(std::begin(kOptions), std::end(kOptions),
                                     [&](const Option& option) { return option.text == typed; });
    if (exact != std::end(kOptions))
    {
        return exact->finding;
    }
    Finding found = Finding::UnknownOption;
    for (const Option& option : kOptions)
    {
        if (isAbbreviation(typed, option.text))
        {
            found = found == Finding::UnknownOption ? option.finding : Finding::AmbiguousOption;
        }
    }
    return found;
}

} // namespace

CommandLine::CommandLine(std::vector<std::string> arguments) : m_arguments(std::move(arguments)) {}

CommandLine::Finding CommandLine::next()
{
    while (m_next < m_arguments.size())
    {
        m_text = m_arguments[m_next++];
        if (!startsWith(m_text, "-"))
        {
            continue;
        }
        const std::string_view whole = m_text;
        const std::size_t equals = whole.find('=');
        const Finding found = match(whole.substr(0, equals));
        const bool isError = found == Finding::UnknownOption || found == Finding::AmbiguousOption;
        const bool hasArgument = equals != std::string_view::npos;
        return hasArgument && !isError ? Finding::CombinedArgumentOfFlag : found;
    }
    return Finding::End;
}

std::string CommandLine::message(Finding error, const std::string& text)
{
    for (const ErrorMessage& row : kErrorMessages)
    {
        if (row.error == error)
        {
            return std::string(row.prefix) + text + "\n";
        }
    }
    return {};
}

} // namespace orvo
