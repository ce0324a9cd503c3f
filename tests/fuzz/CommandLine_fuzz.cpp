// The daemon's arguments, one per line, against the rules written down a second time.

#include "FuzzTarget.h"

#include "Claim.h"

#include "CommandLine.h"

#include <sstream>
#include <string>
#include <vector>

namespace
{

using orvo::CommandLine;
using Finding = CommandLine::Finding;

bool isHelp(const std::string& option)
{
    return option == "-?" || option == "-h" || option == "--h" || option == "--he" ||
           option == "--hel" || option == "--help";
}

Finding expected(const std::string& argument)
{
    const std::size_t equals = argument.find('=');
    if (!isHelp(argument.substr(0, equals)))
    {
        return Finding::UnknownOption;
    }
    return equals == std::string::npos ? Finding::Help : Finding::CombinedArgumentOfFlag;
}

std::string expectedMessage(Finding finding, const std::string& argument)
{
    switch (finding)
    {
    case Finding::UnknownOption:
        return "Invalid argument: " + argument + "\n";
    case Finding::CombinedArgumentOfFlag:
        return "Option doesn't take an argument, but a combined argument was supplied: " +
               argument + "\n";
    default:
        return "";
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using orvo::fuzz::claim;

    std::vector<std::string> arguments;
    std::istringstream lines(std::string(data, data + size));
    for (std::string line; std::getline(lines, line);)
    {
        arguments.push_back(line);
    }
    CommandLine commandLine(arguments);
    for (const std::string& argument : arguments)
    {
        if (argument.empty() || argument.front() != '-')
        {
            continue;
        }
        const Finding finding = commandLine.next();
        claim(finding == expected(argument), "judged by the rules");
        claim(commandLine.text() == argument, "told as it was written");
        claim(CommandLine::message(finding, argument) == expectedMessage(finding, argument),
              "told by its message");
    }
    claim(commandLine.next() == Finding::End && commandLine.next() == Finding::End, "the end");
    return 0;
}
