#include "observer/JsonLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo::test
{

using simulator::JsonLine;
using simulator::jsonText;
using testing::MatchesRegex;

struct TextRow
{
    const char* name;
    std::string bytes;
    std::string json;
};

void PrintTo(const TextRow& row, std::ostream* stream)
{
    *stream << row.name;
}

class JsonText : public testing::TestWithParam<TextRow>
{
};

TEST_P(JsonText, LosesNothing)
{
    EXPECT_EQ("\"" + GetParam().json + "\"", jsonText(GetParam().bytes));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, JsonText,
    testing::Values(TextRow{"Empty", "", ""}, TextRow{"Ascii", "a/b ~", "a/b ~"},
                    TextRow{"QuoteAndBackslash", "a\"b\\", "a\\\"b\\\\"},
                    TextRow{"Controls", std::string("\0\n\x1f\x7f", 4),
                            "\\u0000\\u000a\\u001f\\u007f"},
                    TextRow{"TwoBytes", "\xc2\x80\xdf\xbf", "\xc2\x80\xdf\xbf"},
                    TextRow{"ThreeBytes", "\xe0\xa0\x80\xef\xbf\xbf", "\xe0\xa0\x80\xef\xbf\xbf"},
                    TextRow{"FourBytes", "\xf0\x90\x80\x80\xf4\x8f\xbf\xbf",
                            "\xf0\x90\x80\x80\xf4\x8f\xbf\xbf"},
                    TextRow{"LoneTail", "\x80\xbf", "\\udc80\\udcbf"},
                    TextRow{"OverlongTwo", "\xc1\xbf", "\\udcc1\\udcbf"},
                    TextRow{"OverlongThree", "\xe0\x9f\xbf", "\\udce0\\udc9f\\udcbf"},
                    TextRow{"OverlongFour", "\xf0\x8f\xbf\xbf", "\\udcf0\\udc8f\\udcbf\\udcbf"},
                    TextRow{"Surrogate", "\xed\xa0\x80", "\\udced\\udca0\\udc80"},
                    TextRow{"LastBeforeSurrogates", "\xed\x9f\xbf", "\xed\x9f\xbf"},
                    TextRow{"BeyondUnicode", "\xf4\x90\x80\x80", "\\udcf4\\udc90\\udc80\\udc80"},
                    TextRow{"NoLeadByte", "\xf5\xff", "\\udcf5\\udcff"},
                    TextRow{"CutTwo", "\xc3", "\\udcc3"},
                    TextRow{"CutThree", "\xe2\x82", "\\udce2\\udc82"},
                    TextRow{"CutFour", "\xf0\x9f\x98", "\\udcf0\\udc9f\\udc98"},
                    TextRow{"BrokenByAscii", "\xe2\x82X", "\\udce2\\udc82X"}),
    [](const auto& row) { return row.param.name; });

TEST(JsonLine, BeginsWithTimeAndEvent)
{
    EXPECT_THAT(JsonLine("listening").str(),
                MatchesRegex("\\{\"t\":[0-9]+\\.[0-9]{6},\"event\":\"listening\"\\}"));
}

TEST(JsonLine, HoldsItsMembersInTheirOrder)
{
    const std::string line = JsonLine("x")
                                 .text("b", "1")
                                 .flag("a", true)
                                 .flag("c", false)
                                 .texts("m", {{"y", "2"}, {"x", "3"}})
                                 .texts("n", {})
                                 .str();
    EXPECT_EQ(R"("x","b":"1","a":true,"c":false,"m":{"x":"3","y":"2"},"n":{}})",
              line.substr(line.find("\"x\"")));
}

} // namespace orvo::test
