#include "LogConfiguration.h"

#include <gtest/gtest.h>

#include <climits>

namespace orvo::Logger
{

class LogConfiguration : public testing::Test
{
protected:
    static constexpr int kPid = 817;

    ConfigVerdict read(const std::string& text, const std::string& source = "wardex")
    {
        return readConfiguration(text.c_str(), source, kPid, m_settings);
    }
    void expectUnchanged() const
    {
        EXPECT_EQ("former", m_settings.segvRegex);
        EXPECT_EQ(4711, m_settings.maxEntries);
        EXPECT_EQ(0x55U, m_settings.mask);
    }

    LogSettings m_settings{"former", 4711, 0x55};
};

TEST_F(LogConfiguration, StartsWithWarnAndAboveTenThousandRecordsAndNoPattern)
{
    const LogSettings fresh;
    EXPECT_EQ(0xF0U, fresh.mask);
    EXPECT_EQ(10000, fresh.maxEntries);
    EXPECT_EQ("", fresh.segvRegex);
}

TEST_F(LogConfiguration, TakesEachValueThatIsGiven)
{
    EXPECT_EQ(ConfigVerdict::Taken,
              read(R"({"source":"wardex","mask":255,"max":500,"segvregex":"a.*b","pid":817})"));
    EXPECT_EQ("a.*b", m_settings.segvRegex);
    EXPECT_EQ(500, m_settings.maxEntries);
    EXPECT_EQ(255U, m_settings.mask);
}

TEST_F(LogConfiguration, KeepsTheValuesThatAreNotGiven)
{
    EXPECT_EQ(ConfigVerdict::Taken, read(R"({"source":"all","mask":8})"));
    EXPECT_EQ(8U, m_settings.mask);
    EXPECT_EQ("former", m_settings.segvRegex);
    EXPECT_EQ(4711, m_settings.maxEntries);
    EXPECT_EQ(ConfigVerdict::Taken, read(R"({"source":"all"})"));
    EXPECT_EQ(8U, m_settings.mask);
}

TEST_F(LogConfiguration, ClearsThePatternWithAnEmptyOne)
{
    EXPECT_EQ(ConfigVerdict::Taken, read(R"({"source":"all","segvregex":""})"));
    EXPECT_EQ("", m_settings.segvRegex);
}

TEST_F(LogConfiguration, TakesTheSourceWhereverItStands)
{
    EXPECT_EQ(ConfigVerdict::Taken, read(R"({"mask":1,"source":"wardex"})"));
    EXPECT_EQ(1U, m_settings.mask);
}

TEST_F(LogConfiguration, IsForUsWhenOneOfSeveralSourcesIs)
{
    EXPECT_EQ(ConfigVerdict::Taken, read(R"({"source":"all","source":"other","mask":1})"));
    EXPECT_EQ(ConfigVerdict::Taken, read(R"({"source":"other","source":"wardex","mask":1})"));
}

TEST_F(LogConfiguration, IgnoresAForeignOrMissingSource)
{
    for (const char* text :
         {R"({"mask":255})", R"({"source":"other","mask":255})", R"({"source":"","mask":255})",
          R"({"source":"Wardex","mask":255})", R"({"source":"wardexx","mask":255})",
          R"({"source":"ALL","mask":255})", R"({"Source":"all","mask":255})",
          R"({"source":5,"mask":255})", R"({"source":null,"mask":255})",
          R"({"source":["all"],"mask":255})", R"({})"})
    {
        EXPECT_EQ(ConfigVerdict::Ignored, read(text)) << text;
        expectUnchanged();
    }
}

TEST_F(LogConfiguration, IgnoresAMissingSourceAlsoForAProgramWithoutName)
{
    EXPECT_EQ(ConfigVerdict::Ignored, read(R"({"mask":255})", ""));
    expectUnchanged();
}

TEST_F(LogConfiguration, IgnoresValidJsonThatIsNoObject)
{
    for (const char* text : {"[]", R"(["all", 5, {"source":"all"}])", "5", "null", "true",
                             R"("all")", R"([{"source":"all","mask":255}])"})
    {
        EXPECT_EQ(ConfigVerdict::Ignored, read(text)) << text;
        expectUnchanged();
    }
}

TEST_F(LogConfiguration, IgnoresAForeignProcess)
{
    for (const char* pid : {"1", "816", "818", "-1", "0", "817.5", "1e300", "1e999", "-1e999"})
    {
        EXPECT_EQ(ConfigVerdict::Ignored,
                  read(std::string(R"({"source":"all","mask":255,"pid":)") + pid + "}"))
            << pid;
        expectUnchanged();
    }
}

TEST_F(LogConfiguration, TakesTheOwnProcess)
{
    EXPECT_EQ(ConfigVerdict::Taken, read(R"({"pid":817,"source":"wardex","mask":255})"));
    EXPECT_EQ(255U, m_settings.mask);
}

TEST_F(LogConfiguration, IgnoresKeysWithAValueOfAnotherType)
{
    EXPECT_EQ(ConfigVerdict::Taken,
              read(R"({"source":"all","mask":"255","max":true,"segvregex":7,"pid":"1"})"));
    expectUnchanged();
    EXPECT_EQ(ConfigVerdict::Taken,
              read(R"({"source":"all","mask":null,"max":[1],"segvregex":{},"pid":{}})"));
    expectUnchanged();
}

TEST_F(LogConfiguration, IgnoresOtherKeys)
{
    EXPECT_EQ(ConfigVerdict::Taken,
              read(R"({"source":"all","MASK":1,"maximum":2,"regex":"x","":"","level":3})"));
    expectUnchanged();
}

TEST_F(LogConfiguration, TakesNumbersUpToTheLimitsOfTheirWord)
{
    read(R"({"source":"all","max":2147483647,"mask":4294967295})");
    EXPECT_EQ(INT_MAX, m_settings.maxEntries);
    EXPECT_EQ(0xffffffffU, m_settings.mask);
    read(R"({"source":"all","max":-2147483648,"mask":-2147483648})");
    EXPECT_EQ(INT_MIN, m_settings.maxEntries);
    EXPECT_EQ(0x80000000U, m_settings.mask);
}

TEST_F(LogConfiguration, IgnoresNumbersBeyondTheLimitsOfTheirWord)
{
    for (const char* number : {"4294967296", "-2147483649", "1e300", "-1e300", "1e999", "-1e999"})
    {
        const std::string value(number);
        EXPECT_EQ(ConfigVerdict::Taken, read(R"({"source":"all","mask":)" + value + "}"));
        EXPECT_EQ(ConfigVerdict::Taken, read(R"({"source":"all","max":)" + value + "}"));
        expectUnchanged();
    }
    EXPECT_EQ(ConfigVerdict::Taken, read(R"({"source":"all","max":2147483648})"));
    expectUnchanged();
}

TEST_F(LogConfiguration, ReadsAMaskOfMinusOneAsAllLevels)
{
    read(R"({"source":"all","mask":-1})");
    EXPECT_EQ(0xffffffffU, m_settings.mask);
}

TEST_F(LogConfiguration, DropsTheFractionOfANumber)
{
    read(R"({"source":"all","max":500.9,"mask":8.9})");
    EXPECT_EQ(500, m_settings.maxEntries);
    EXPECT_EQ(8U, m_settings.mask);
}

TEST_F(LogConfiguration, TellsWhatIsNotJson)
{
    for (const char* text : {"", "oops{", "{", R"({"source":"all")", "{source:all}",
                             R"({"source":"all"} and more)", R"({"source":"all"}})", "nul"})
    {
        EXPECT_EQ(ConfigVerdict::NotJson, read(text)) << text;
        expectUnchanged();
    }
}

TEST_F(LogConfiguration, ToleratesBlanksAroundTheObject)
{
    EXPECT_EQ(ConfigVerdict::Taken, read(" {\"source\" : \"all\"\n,\"mask\" : 1\n}\n"));
    EXPECT_EQ(1U, m_settings.mask);
}

TEST_F(LogConfiguration, RefusesNestingThatWouldEatTheStack)
{
    EXPECT_EQ(ConfigVerdict::NotJson, read(std::string(100000, '[')));
    expectUnchanged();
}

TEST(ConfigurationText, HasALineForEachValue)
{
    EXPECT_EQ("{\n"
              "\"source\" : \"wardex\"\n"
              ",\"max\" : 500\n"
              ",\"mask\" : 255\n"
              ",\"segvregex\" : \"a.*b\"\n"
              "}\n",
              configurationText("wardex", 255, 500, "a.*b"));
}

TEST(ConfigurationText, LeavesOutWhatIsNotGiven)
{
    EXPECT_EQ("{\n\"source\" : \"all\"\n}\n", configurationText("all", -1, 0, ""));
    EXPECT_EQ("{\n\"source\" : \"all\"\n,\"mask\" : 0\n}\n", configurationText("all", 0, -1, ""));
    EXPECT_EQ("{\n\"source\" : \"all\"\n,\"max\" : 1\n}\n",
              configurationText("all", INT_MIN, 1, ""));
}

TEST(ConfigurationText, DoesNotEscapeSourceAndPattern)
{
    EXPECT_EQ("{\n\"source\" : \"a\"b\"\n,\"segvregex\" : \"\\(\"\n}\n",
              configurationText("a\"b", -1, 0, "\\("));
}

TEST_F(LogConfiguration, IsReadBackAsItWasWritten)
{
    EXPECT_EQ(ConfigVerdict::Taken, read(configurationText("wardex", INT_MAX, INT_MAX, "x+")));
    EXPECT_EQ(0x7fffffffU, m_settings.mask);
    EXPECT_EQ(INT_MAX, m_settings.maxEntries);
    EXPECT_EQ("x+", m_settings.segvRegex);
}

} // namespace orvo::Logger
