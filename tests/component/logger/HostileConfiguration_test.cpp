#include "Eventually.h"
#include "LogDevice.h"
#include "StreamCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include <unistd.h>

namespace orvo::Logger
{

/// A configuration that means harm, as anybody may publish it who reaches the server.
struct HostileRow
{
    const char* name;
    std::string text;
};

void PrintTo(const HostileRow& row, std::ostream* stream)
{
    *stream << row.name;
}

namespace
{

constexpr std::size_t kMegabyte = 1 << 20;

std::string withPattern(const std::string& pattern)
{
    return R"({"source":"all","segvregex":")" + pattern + "\"}";
}

std::string repeated(const std::string& text, int times)
{
    std::string all;
    for (int count = 0; count < times; ++count)
    {
        all += text;
    }
    return all;
}

} // namespace

class HostileConfiguration : public LoggerOnDevice, public testing::WithParamInterface<HostileRow>
{
protected:
    [[nodiscard]] bool hasAnnounced(const std::string& part) const
    {
        const std::vector<std::string> all = announcements();
        return std::any_of(all.begin(), all.end(),
                           [&](const std::string& text)
                           { return text.find(part) != std::string::npos; });
    }
};

TEST_P(HostileConfiguration, NeitherEndsNorHoldsTheProgram)
{
    const test::StreamCapture output(STDOUT_FILENO);
    const test::StreamCapture errors(STDERR_FILENO);
    m_client.publishToListeners(kConfigChannel, GetParam().text);
    // Announced only after the former has been handled.
    m_client.publishToListeners(kConfigChannel, R"({"source":"all","mask":255})");
    ASSERT_TRUE(test::eventually([this] { return hasAnnounced("mask(0xff)"); }));

    const std::string longest(499, 'a');
    EXPECT_EQ(499, m_logger.log(WARN, "%s", longest.c_str()));
    configure(R"({"source":"all","segvregex":"","max":10000})");
    EXPECT_EQ(9, m_logger.log(ERROR, "laser off"));
    EXPECT_EQ("laser off", messages().back());
}

INSTANTIATE_TEST_SUITE_P(
    Rows, HostileConfiguration,
    testing::Values(
        HostileRow{"PatternThatIsNone", withPattern("([")},
        HostileRow{"PatternThatBacktracks", withPattern("(a*)*b")},
        HostileRow{"PatternOfOverlappingAlternatives", withPattern("(a|aa|aaa)+b")},
        HostileRow{"PatternThatRefersBack", withPattern(R"((a+)\\1+b)")},
        HostileRow{"PatternThatLooksAhead", withPattern("(?:(?!(?:a*){300}b)a)*c")},
        HostileRow{"PatternOfNestedLookaheads", withPattern("(?=.*(?=.*(?=.*b))).*")},
        HostileRow{"PatternThatMultiplies", withPattern("((a{999}){999}){999}")},
        HostileRow{"PatternOfAHugeNumber", withPattern("a{99999999999999999999}")},
        HostileRow{"PatternOfParentheses", withPattern(std::string(1000, '('))},
        HostileRow{"PatternOfAMegabyte", withPattern(std::string(kMegabyte, 'a'))},
        HostileRow{"PatternWithAZeroByte", withPattern("a\\u0000(")},
        HostileRow{"NumbersOutOfRange",
                   R"({"source":"all","mask":1e999,"max":-1e999,"pid":1e999})"},
        HostileRow{"NumbersBeyondTheirWord",
                   R"({"source":"all","mask":18446744073709551616,"max":99999999999})"},
        HostileRow{"ListOfNoLength", R"({"source":"all","max":-2147483648})"},
        HostileRow{"NumberOfAMegabyte",
                   R"({"source":"all","mask":)" + std::string(kMegabyte, '9') + "}"},
        HostileRow{"TextOfAMegabyte", std::string(kMegabyte, 'x')},
        HostileRow{"FormatSigns", "%s%n%1000000d%n"},
        HostileRow{"SourceOfAMegabyte", R"({"source":")" + std::string(kMegabyte, 'x') + "\"}"},
        HostileRow{"ManyMembers", R"({"source":"all")" + repeated(R"(,"mask":240)", 50000) + "}"},
        HostileRow{"NestedArrays", R"({"source":"all","x":)" + std::string(kMegabyte, '[')},
        HostileRow{"NestedObjects", repeated(R"({"source":)", 50000)},
        HostileRow{"ZeroByteInside", std::string("{\"source\":\"all\"\0,\"mask\":0}", 26)},
        HostileRow{"ZeroByteFirst", std::string("\0{\"source\":\"all\"}", 17)},
        HostileRow{"BytesThatAreNoText", "\xff\xfe{\"source\":\"all\"}\x80"},
        HostileRow{"HalfASurrogate", withPattern("\\ud800")}),
    [](const auto& row) { return row.param.name; });

} // namespace orvo::Logger
