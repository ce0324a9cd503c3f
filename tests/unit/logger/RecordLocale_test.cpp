#include "LogRecord.h"

#include <gtest/gtest.h>

#include <cctype>
#include <langinfo.h>

// A device whose locale changes: this program's own versions of two functions of the C library
// tell of a locale in which the letter x, the quote and every byte above 127 are (not) printable.

namespace
{

bool& isOtherLocale()
{
    static bool isOther = false;
    return isOther;
}

} // namespace

extern "C" int isprint(int byte) noexcept
{
    if (isOtherLocale() && (byte == 'x' || byte == '"' || byte > 127))
    {
        return byte > 127 ? 1 : 0;
    }
    return byte >= 0x20 && byte <= 0x7e ? 1 : 0;
}

extern "C" char* nl_langinfo(nl_item) noexcept
{
    static char one[] = "ANSI_X3.4-1968";
    static char other[] = "ISO-8859-1";
    return isOtherLocale() ? other : one;
}

namespace orvo::Logger
{

TEST(RecordLocale, DecidesWhatIsPrintableAtEachRecord)
{
    EscapedText text;
    escapeMessage("axb\"\xe4", text);
    EXPECT_STREQ("axb\\\"#", text.data());
    isOtherLocale() = true;
    escapeMessage("axb\"\xe4", text);
    EXPECT_STREQ("a#b#\xe4", text.data());
    isOtherLocale() = false;
    escapeMessage("axb\"\xe4", text);
    EXPECT_STREQ("axb\\\"#", text.data());
}

} // namespace orvo::Logger
