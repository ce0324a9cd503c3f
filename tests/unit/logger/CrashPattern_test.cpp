#include "CrashPattern.h"

#include <gtest/gtest.h>

#include <regex>
#include <string>

namespace orvo::Logger
{

namespace
{

CrashVerdict verdict(const std::string& pattern, std::string_view message)
{
    std::string reason;
    return tryCrashPattern(pattern, message, reason);
}

std::string complaintAbout(const std::string& pattern)
{
    std::string reason;
    EXPECT_EQ(CrashVerdict::Unusable, tryCrashPattern(pattern, "message", reason)) << pattern;
    return reason;
}

} // namespace

TEST(CrashPattern, CoversTheWholeMessage)
{
    EXPECT_EQ(CrashVerdict::Crash, verdict("fatal.*disk", "fatal error on disk"));
    EXPECT_EQ(CrashVerdict::Spare, verdict("fatal.*disk", "a fatal error on disk now"));
    EXPECT_EQ(CrashVerdict::Spare, verdict("fatal.*disk", "a fatal error on disk"));
    EXPECT_EQ(CrashVerdict::Spare, verdict("fatal.*disk", "fatal error on disk now"));
}

TEST(CrashPattern, TakesEveryByteOfTheMessageAsItIs)
{
    EXPECT_EQ(CrashVerdict::Crash, verdict("a\\nb", "a\nb"));
    EXPECT_EQ(CrashVerdict::Spare, verdict("a.b", "a\nb"));
    EXPECT_EQ(CrashVerdict::Crash, verdict("a[^x]b", std::string_view("a\0b", 3)));
    EXPECT_EQ(CrashVerdict::Crash, verdict("\xc3\xa4", "\xc3\xa4"));
}

TEST(CrashPattern, AgreesWithABacktrackingMatcher)
{
    for (const std::string pattern :
         {"",           "a",         "a*",     "(a|ab)(c|bcd)(d*)", "(a*)*",    "(a+)+b?",
          "[a-c]{2,4}", "(ab|a)*?b", "^a.*d$", "a(?=b).*",          "a(?!b).*", "\\w+\\s?\\d*",
          "(?:a|b)+",   "\\bab.*",   "[^a]*",  "[[:alpha:]]+",      "(|a)+",    "a{0}",
          "(a?){3}",    "x|abcd"})
    {
        for (const std::string message :
             {"", "a", "ab", "abcd", "aaab", "abab", "bcda", "a1", "ab 12", "x", "aaaa", "abx"})
        {
            const bool expected = std::regex_match(message, std::regex(pattern));
            EXPECT_EQ(expected ? CrashVerdict::Crash : CrashVerdict::Spare,
                      verdict(pattern, message))
                << pattern << " on " << message;
        }
    }
}

TEST(CrashPattern, IsUnusableWhenItIsNoRegularExpression)
{
    for (const char* pattern : {"(", ")", "[", "a{2", "*a", "a{3,2}", "[z-a]", "\\", "(?<a>b)"})
    {
        EXPECT_NE("", complaintAbout(pattern));
    }
}

TEST(CrashPattern, IsUnusableWithABackReference)
{
    EXPECT_NE("", complaintAbout("(.)\\1"));
}

TEST(CrashPattern, IsUsableUpToAThousandCharacters)
{
    EXPECT_EQ(CrashVerdict::Spare, verdict(std::string(1000, 'x'), "message"));
    EXPECT_EQ("longer than 1000 characters", complaintAbout(std::string(1001, 'x')));
}

TEST(CrashPattern, IsUsableWithLookaheadsSideBySide)
{
    EXPECT_EQ(CrashVerdict::Crash, verdict("(?=m)(?!x).*", "message"));
    EXPECT_EQ(CrashVerdict::Crash, verdict("(?=.*disk)(?=.*fatal).*", "fatal error on disk"));
    EXPECT_EQ(CrashVerdict::Spare, verdict("(?=.*disk)(?!.*fatal).*", "fatal error on disk"));
    EXPECT_EQ(CrashVerdict::Crash, verdict("(?=.*\\(b\\))(?=a).*", "a (b) c"));
    EXPECT_EQ(CrashVerdict::Crash, verdict("(?=(me|ss)[a-z]).*", "message"));
}

// Each one inside another multiplies the time of a match by the length of the message.
TEST(CrashPattern, IsUnusableWhenLookaheadsCouldHoldEachOther)
{
    for (const char* pattern : {"(?=.*(?=.*(?=.*x))).*", "(?=m)(?!(x)).*", "(?=[m)])(?!x).*",
                                "(?=\\c)(?=x))", "(?=x)(?=\\", "(?=x)(?=x"})
    {
        EXPECT_EQ("several look-aheads, one with a group or a set in it", complaintAbout(pattern))
            << pattern;
    }
}

// One that is tried at each byte of a message takes seconds when it has many states.
TEST(CrashPattern, IsUnusableWithALookaheadWhenItHasACount)
{
    for (const char* pattern : {"(?:(?!(?:a*){300}b)a)*c", "(?=a{2}).*", "(?!a).{3}"})
    {
        EXPECT_EQ("a look-ahead in a pattern that is long or has a count", complaintAbout(pattern));
    }
}

TEST(CrashPattern, IsUsableWithALookaheadUpToAHundredCharacters)
{
    const std::string look = "(?!a*b)";
    EXPECT_EQ(CrashVerdict::Crash, verdict(look + std::string(93, 'x'), std::string(93, 'x')));
    EXPECT_EQ("a look-ahead in a pattern that is long or has a count",
              complaintAbout(look + std::string(94, 'x')));
}

TEST(CrashPattern, IsUnusableWhenItsRepetitionsBlowItUp)
{
    EXPECT_NE("", complaintAbout("(a{100}){100}"));
    EXPECT_NE("", complaintAbout("(a?){100000}"));
}

// The standard library computes beyond its word with them.
TEST(CrashPattern, IsUnusableWithAHugeNumber)
{
    for (const char* pattern : {"a{99999999999999999999}", "a{10000}", "a{1,10000}",
                                "a{1,99999999999999999999}", "(a)\\99999999999999999999"})
    {
        EXPECT_EQ("a number of more than 4 digits", complaintAbout(pattern)) << pattern;
    }
    EXPECT_NE("a number of more than 4 digits", complaintAbout("a{9999}"));
    EXPECT_NE("a number of more than 4 digits", complaintAbout("a{1,9999}"));
}

TEST(CrashPattern, MayHoldAnyOtherNumber)
{
    EXPECT_EQ(CrashVerdict::Crash, verdict("at 1234567,1234567 .*", "at 1234567,1234567 it fell"));
    EXPECT_EQ(CrashVerdict::Crash, verdict("a{3}12345", "aaa12345"));
}

TEST(CrashPattern, CoversALongestMessage)
{
    const std::string message(499, 'a');
    EXPECT_EQ(CrashVerdict::Crash, verdict("a*", message));
    EXPECT_EQ(CrashVerdict::Crash, verdict(std::string(499, 'a'), message));
}

// Each of these takes a backtracking matcher for ever or past the end of its stack.
TEST(CrashPattern, SurvivesPatternsMadeToHurt)
{
    const std::string message(499, 'a');
    EXPECT_EQ(CrashVerdict::Spare, verdict("(a*)*b", message));
    EXPECT_EQ(CrashVerdict::Spare, verdict("(a|aa)+b", message));
    EXPECT_EQ(CrashVerdict::Spare, verdict("(.*)(.*)(.*)(.*)(.*)(.*)(.*)(.*)b", message));
    EXPECT_EQ(CrashVerdict::Crash, verdict("(.|a)*", std::string(50000, 'a')));
    std::string empties = "(";
    for (int index = 0; index < 300; ++index)
    {
        empties += "()";
    }
    EXPECT_EQ(CrashVerdict::Spare, verdict(empties + "a)*b", message));
    EXPECT_EQ(CrashVerdict::Spare,
              verdict(std::string(400, '(') + "a" + std::string(400, ')') + "*b", message));
    verdict(std::string(1000, '('), message);
    verdict(std::string(500, '[') + std::string(500, '('), message);
    verdict("(?=.*" + std::string(50, '.') + ").*b", message);
}

} // namespace orvo::Logger
