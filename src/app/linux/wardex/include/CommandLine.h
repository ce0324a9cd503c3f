#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace orvo
{

/// Reads the daemon's command line, one option per call.
///
/// Shape:   the only options are -?, -h and --help, all of them flags. An option is an argument
///          with a leading dash; it must match exactly, only the long one may be abbreviated as far
///          as it stays unambiguous ("--he"). Everything behind "=" is a combined argument. A lone
///          "-" or "--" is an option, too, and an unknown one. Other arguments are skipped.
/// Threads: any, one at a time.
class CommandLine
{
public:
    enum class Finding
    {
        End,  ///< no further option
        Help, ///< one of the help options
        UnknownOption,
        AmbiguousOption,
        CombinedArgumentOfFlag,
        CombinedInsteadOfSeparateArgument,
        MissingArgument,
        ArgumentLooksLikeOption
    };

    /// arguments: without the program's name.
    explicit CommandLine(std::vector<std::string> arguments);

    /// Goes on to the next option, or behind the last one.
    [[nodiscard]] Finding next();

    /// The argument that the last next() judged, as it was written.
    [[nodiscard]] const std::string& text() const { return m_text; }

    /// The line that a finding is told with, with its line end; empty for a finding that is none of
    /// the errors.
    [[nodiscard]] static std::string message(Finding error, const std::string& text);

private:
    std::vector<std::string> m_arguments;
    std::size_t m_next{0};
    std::string m_text;
};

} // namespace orvo
