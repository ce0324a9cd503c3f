#include "ChildProcess.h"
#include "Files.h"

#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo::test
{

using testing::ElementsAre;
using testing::HasSubstr;

/// A refused command line: the words after the program's name, and what is wrong with them.
struct RefusalRow
{
    const char* name;
    std::vector<std::string> words;
    const char* problem;
};

void PrintTo(const RefusalRow& row, std::ostream* stream)
{
    *stream << row.name;
}

class GuardCommandLine : public testing::TestWithParam<RefusalRow>
{
protected:
    int run(const std::vector<std::string>& words)
    {
        std::vector<std::string> command = {peer("watchdog-guard")};
        command.insert(command.end(), words.begin(), words.end());
        ChildProcess guard(command, output());
        return guard.waitForEnd(10000) ? guard.exitStatus() : -1;
    }

    [[nodiscard]] std::string output() const
    {
        return m_folder.filePath(QStringLiteral("output")).toStdString();
    }

    QTemporaryDir m_folder;
};

TEST_P(GuardCommandLine, IsRefusedWithTheReason)
{
    EXPECT_EQ(64, run(GetParam().words));
    EXPECT_THAT(linesOf(output()), ElementsAre(std::string("watchdog-guard: ") +
                                               GetParam().problem + "; see watchdog-guard --help"));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, GuardCommandLine,
    testing::Values(
        RefusalRow{"Nothing", {}, "no program given after --"},
        RefusalRow{"NoProgram",
                   {"--device", "d", "--timeout-ms", "1", "--journal", "j", "--"},
                   "no program given after --"},
        RefusalRow{"NoSeparator",
                   {"--device", "d", "--timeout-ms", "1", "--journal", "j"},
                   "no program given after --"},
        RefusalRow{"NoDevice",
                   {"--timeout-ms", "1", "--journal", "j", "--", "true"},
                   "--device, --timeout-ms and --journal must all be given"},
        RefusalRow{"NoTimeout",
                   {"--device", "d", "--journal", "j", "--", "true"},
                   "--device, --timeout-ms and --journal must all be given"},
        RefusalRow{"NoJournal",
                   {"--device", "d", "--timeout-ms", "1", "--", "true"},
                   "--device, --timeout-ms and --journal must all be given"},
        RefusalRow{"ZeroTimeout",
                   {"--timeout-ms", "0", "--", "true"},
                   "--timeout-ms needs a whole number of at least 1, not '0'"},
        RefusalRow{"NegativeTimeout",
                   {"--timeout-ms", "-1", "--", "true"},
                   "--timeout-ms needs a whole number of at least 1, not '-1'"},
        RefusalRow{"TimeoutWithUnit",
                   {"--timeout-ms", "5s", "--", "true"},
                   "--timeout-ms needs a whole number of at least 1, not '5s'"},
        RefusalRow{"TimeoutOutOfRange",
                   {"--timeout-ms", "2147483648", "--", "true"},
                   "--timeout-ms needs a whole number of at least 1, not '2147483648'"},
        RefusalRow{
            "OptionWithoutValue", {"--device", "--", "true"}, "option '--device' needs a value"},
        RefusalRow{"UnknownOption", {"--speed", "1", "--", "true"}, "unknown option '--speed'"}),
    [](const auto& row) { return row.param.name; });

TEST_F(GuardCommandLine, HelpNamesEveryOption)
{
    EXPECT_EQ(0, run({"--help"}));
    const std::string help = contentOf(output());
    EXPECT_THAT(help, HasSubstr("--device FILE"));
    EXPECT_THAT(help, HasSubstr("--timeout-ms N"));
    EXPECT_THAT(help, HasSubstr("--journal FILE"));
}

TEST_F(GuardCommandLine, JournalThatCannotBeWrittenIsSaid)
{
    EXPECT_EQ(71, run({"--device", "/dev/null", "--timeout-ms", "1", "--journal", "/none/journal",
                       "--", "true"}));
    EXPECT_THAT(linesOf(output()),
                ElementsAre("watchdog-guard: cannot open the journal /none/journal: No such file "
                            "or directory; create its folder and make it writable"));
}

} // namespace orvo::test
