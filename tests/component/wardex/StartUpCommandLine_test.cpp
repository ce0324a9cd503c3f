#include "DaemonRun.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace orvo
{

namespace
{

using test::DaemonRun;

/// The command line of the real binary. The box has neither Redis nor a bus: the command line is
/// judged before anything else is touched.
class DaemonCommandLine : public testing::Test
{
protected:
    static void expectRun(const std::vector<std::string>& arguments, int exitStatus,
                          const std::string& out, const std::string& err)
    {
        DaemonRun run(arguments);
        EXPECT_EQ(exitStatus, run.waitForEnd());
        EXPECT_EQ(out, run.out());
        EXPECT_EQ(err, run.err());
    }

    static constexpr const char kUsage[] =
        "Usage: wardex [V.0.4.1539] <options ... >\nOptions:  [-?] [-h] [--help]\n";
};

} // namespace

TEST_F(DaemonCommandLine, PrintsTheUsageForEachHelpOption)
{
    for (const char* option : {"-h", "-?", "--help", "--he"})
    {
        SCOPED_TRACE(option);
        expectRun({option}, 0, kUsage, "");
    }
}

TEST_F(DaemonCommandLine, PrintsTheUsageOnceHoweverOftenItIsAskedFor)
{
    expectRun({"word", "-h", "--help", "-?"}, 0, kUsage, "");
}

TEST_F(DaemonCommandLine, NamesTheProgramAsItWasCalled)
{
    std::filesystem::remove("/tmp/renamed");
    std::filesystem::create_symlink(WARDEX_PROGRAM, "/tmp/renamed");
    DaemonRun run({"-h"}, DaemonRun::OnSigterm::Dies, "/tmp/renamed");
    EXPECT_EQ(0, run.waitForEnd());
    EXPECT_EQ("Usage: renamed [V.0.4.1539] <options ... >\nOptions:  [-?] [-h] [--help]\n",
              run.out());
}

TEST_F(DaemonCommandLine, RefusesAnUnknownOption)
{
    for (const std::string option : {"-x", "--unknown", "-", "--", "-he"})
    {
        SCOPED_TRACE(option);
        expectRun({option}, 1, "", "Invalid argument: " + option + "\n");
    }
}

TEST_F(DaemonCommandLine, RefusesACombinedArgument)
{
    expectRun({"--help=x"}, 1, "",
              "Option doesn't take an argument, but a combined argument was supplied: --help=x\n");
}

TEST_F(DaemonCommandLine, StopsAtTheFirstErrorBeforeTheHelp)
{
    expectRun({"-x", "--help", "-y"}, 1, "", "Invalid argument: -x\n");
}

TEST_F(DaemonCommandLine, GivesHelpBeforeItSeesALaterError)
{
    expectRun({"--help", "-x"}, 0, kUsage, "");
}

TEST_F(DaemonCommandLine, DoesNotLoseArgumentsToTheApplicationObject)
{
    expectRun({"-qmljsdebugger=port:1"}, 1, "", "Invalid argument: -qmljsdebugger=port:1\n");
}

TEST_F(DaemonCommandLine, SeesAnErrorBehindMoreThanFiftyArguments)
{
    std::vector<std::string> arguments(60, "word");
    arguments.emplace_back("-x");
    expectRun(arguments, 1, "", "Invalid argument: -x\n");
}

} // namespace orvo
