#include "CommandLine.h"

#include <gtest/gtest.h>

namespace orvo
{

using Finding = CommandLine::Finding;

namespace
{

Finding firstFinding(const std::string& argument)
{
    return CommandLine({argument}).next();
}

} // namespace

TEST(CommandLine, EndsAtOnceWithoutArguments)
{
    EXPECT_EQ(Finding::End, CommandLine({}).next());
}

class HelpOption : public testing::TestWithParam<std::string>
{
};

TEST_P(HelpOption, IsFound)
{
    EXPECT_EQ(Finding::Help, firstFinding(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(EachSpelling, HelpOption, testing::Values("-?", "-h", "--help"));
INSTANTIATE_TEST_SUITE_P(EachAbbreviation, HelpOption, testing::Values("--h", "--he", "--hel"));

class UnknownOption : public testing::TestWithParam<std::string>
{
};

TEST_P(UnknownOption, IsInvalid)
{
    CommandLine commandLine({GetParam()});
    const Finding found = commandLine.next();
    EXPECT_EQ(Finding::UnknownOption, found);
    EXPECT_EQ("Invalid argument: " + GetParam() + "\n",
              CommandLine::message(found, commandLine.text()));
}

INSTANTIATE_TEST_SUITE_P(EachKind, UnknownOption,
                         testing::Values("-x", "--unknown", "-H", "--HELP", "--helpx", "--elp",
                                         "-x=5", "--unknown=help", "-=x", "--=x"));
INSTANTIATE_TEST_SUITE_P(LoneDashes, UnknownOption, testing::Values("-", "--", "---"));
// Only the long option has abbreviations, and short ones cannot be put together.
INSTANTIATE_TEST_SUITE_P(OneDash, UnknownOption, testing::Values("-he", "-help", "-hh", "-h?"));

class CombinedArgument : public testing::TestWithParam<std::string>
{
};

TEST_P(CombinedArgument, IsRefusedByAFlag)
{
    CommandLine commandLine({GetParam()});
    const Finding found = commandLine.next();
    EXPECT_EQ(Finding::CombinedArgumentOfFlag, found);
    EXPECT_EQ("Option doesn't take an argument, but a combined argument was supplied: " +
                  GetParam() + "\n",
              CommandLine::message(found, commandLine.text()));
}

INSTANTIATE_TEST_SUITE_P(EachSpelling, CombinedArgument,
                         testing::Values("--help=x", "--help=", "--he=x", "-h=x", "-?=x",
                                         "--help=x=y"));

TEST(CommandLine, SkipsArgumentsThatAreNoOptions)
{
    CommandLine commandLine({"word", "", "/some/file", "h", "?", "help=x", " -h"});
    EXPECT_EQ(Finding::End, commandLine.next());
}

TEST(CommandLine, FindsAnOptionBehindArgumentsThatAreNone)
{
    CommandLine commandLine({"word", "--help"});
    EXPECT_EQ(Finding::Help, commandLine.next());
    EXPECT_EQ("--help", commandLine.text());
}

TEST(CommandLine, JudgesOptionsInTheirOrder)
{
    CommandLine commandLine({"-x", "-h", "--help=x"});
    EXPECT_EQ(Finding::UnknownOption, commandLine.next());
    EXPECT_EQ(Finding::Help, commandLine.next());
    EXPECT_EQ(Finding::CombinedArgumentOfFlag, commandLine.next());
    EXPECT_EQ(Finding::End, commandLine.next());
    EXPECT_EQ(Finding::End, commandLine.next());
}

TEST(CommandLine, KeepsOptionsApartHoweverManyThereAre)
{
    std::vector<std::string> arguments(200, "word");
    arguments.emplace_back("-x");
    CommandLine commandLine(arguments);
    EXPECT_EQ(Finding::UnknownOption, commandLine.next());
    EXPECT_EQ("-x", commandLine.text());
}

TEST(CommandLineMessage, NamesTheOffendingOptionForEachError)
{
    EXPECT_EQ("Invalid argument: -x\n", CommandLine::message(Finding::UnknownOption, "-x"));
    EXPECT_EQ("Multiple options matched the supplied option text: --h\n",
              CommandLine::message(Finding::AmbiguousOption, "--h"));
    EXPECT_EQ("Option doesn't take an argument, but a combined argument was supplied: -h=1\n",
              CommandLine::message(Finding::CombinedArgumentOfFlag, "-h=1"));
    EXPECT_EQ("SO_REQ_CMB style-argument was supplied to a SO_REQ_SEP option: -o=1\n",
              CommandLine::message(Finding::CombinedInsteadOfSeparateArgument, "-o=1"));
    EXPECT_EQ("Required argument was not supplied: -o\n",
              CommandLine::message(Finding::MissingArgument, "-o"));
    EXPECT_EQ("Option argument looks like another option: -o\n",
              CommandLine::message(Finding::ArgumentLooksLikeOption, "-o"));
}

TEST(CommandLineMessage, IsEmptyForAnythingOutsideTheTable)
{
    EXPECT_EQ("", CommandLine::message(Finding::Help, "-h"));
    EXPECT_EQ("", CommandLine::message(static_cast<Finding>(99), "-h"));
}

} // namespace orvo
