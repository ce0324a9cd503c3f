#include "log-reader/ReaderOptions.h"
#include "logger/LogDefaults.h"

#include <gtest/gtest.h>

namespace orvo::simulator
{

class ReaderOptionsTest : public testing::Test
{
};

TEST_F(ReaderOptionsTest, WithoutWordsShowAllRecordsOnce)
{
    const ReaderOptions options = readerOptions({});
    EXPECT_FALSE(options.follow);
    EXPECT_FALSE(options.help);
    EXPECT_EQ("", options.condition);
    EXPECT_EQ("", options.complaint);
}

TEST_F(ReaderOptionsTest, TakeAWordThatLooksLikeAnOptionAsText)
{
    const ReaderOptions options = readerOptions({"-g", "-f"});
    EXPECT_FALSE(options.follow);
    EXPECT_NE("", options.condition);
}

TEST_F(ReaderOptionsTest, FollowAndHelpAreTold)
{
    EXPECT_TRUE(readerOptions({"-f"}).follow);
    EXPECT_TRUE(readerOptions({"-h"}).help);
    EXPECT_TRUE(readerOptions({"--help"}).help);
}

TEST_F(ReaderOptionsTest, NameTheRightWordsForWrongOnes)
{
    EXPECT_EQ("'-x' is not known; see record-reader --help", readerOptions({"-x"}).complaint);
    EXPECT_EQ("after '-g' comes a value; see record-reader --help",
              readerOptions({"-g"}).complaint);
    EXPECT_EQ("after '--level' comes a value; see record-reader --help",
              readerOptions({"--level"}).complaint);
    EXPECT_EQ("no level is called 'warn': say one of DEBUG, DIAG, TRACE, INFO, WARN, ERROR, FATAL, "
              "EMERG",
              readerOptions({"--level", "warn"}).complaint);
}

TEST_F(ReaderOptionsTest, PassNothingOfALevelOnThatIsNone)
{
    EXPECT_EQ("", readerOptions({"--level", "' or true or '"}).condition);
}

TEST_F(ReaderOptionsTest, ConditionHoldsNoByteOfATextThatMeansSomethingInLua)
{
    RecordFilter filter;
    filter.text = "']] or redis.call(\"DEL\",KEYS[1]) --\n\\";
    const std::string condition = filter.condition().value();
    const std::string head = "string.find((string.match(entry,'\"M\":\"(.*)\"}$') or entry),'";
    ASSERT_EQ(head, condition.substr(0, head.size()));
    EXPECT_EQ("\\039\\093\\093 or redis\\046call\\040\\092\\034DEL\\092\\034\\044KEYS\\0911\\093"
              "\\041 \\045\\045\\035\\092\\092',1,true)",
              condition.substr(head.size()));
}

TEST_F(ReaderOptionsTest, RefuseATextThatTheScriptCannotHold)
{
    // Eight characters of script for each byte of the text.
    const std::string longest(425, '/');
    EXPECT_EQ("", readerOptions({"-g", longest}).complaint);
    EXPECT_EQ("the text is too long to be searched for: take a part of it",
              readerOptions({"-g", longest + std::string(20, '/')}).complaint);
}

} // namespace orvo::simulator
