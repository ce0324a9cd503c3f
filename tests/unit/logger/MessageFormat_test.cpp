#include "MessageFormat.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include <climits>
#include <cstdio>

// vsnprintf is the measure of every message.

namespace orvo::Logger
{

namespace
{

[[gnu::format(printf, 1, 2)]] std::string formatted(const char* format, ...)
{
    char message[kMessageCapacity];
    std::fill(std::begin(message), std::end(message), '?');
    va_list arguments;
    va_start(arguments, format);
    const std::size_t length = formatMessage(message, format, arguments);
    va_end(arguments);
    EXPECT_EQ('\0', message[length]);
    return std::string(message, length);
}

[[gnu::format(printf, 1, 2)]] std::string formattedByTheBook(const char* format, ...)
{
    char message[kMessageCapacity];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(message, sizeof message, format, arguments);
    va_end(arguments);
    return std::string(message, std::min<std::size_t>(static_cast<std::size_t>(length), 499));
}

} // namespace

#define EXPECT_BY_THE_BOOK(...) EXPECT_EQ(formattedByTheBook(__VA_ARGS__), formatted(__VA_ARGS__))

TEST(MessageFormat, CopiesWhatIsNoConversion)
{
    EXPECT_EQ("", formatted("%s", ""));
    EXPECT_EQ("a \n\xe4 b", formatted("a \n\xe4 b"));
}

TEST(MessageFormat, PutsTextsAndNumbersInTheirPlaces)
{
    EXPECT_EQ("SuprUp::ping (pictor) 3 of -4",
              formatted("%s::%s (%s) %d of %d", "SuprUp", "ping", "pictor", 3, -4));
    EXPECT_EQ("ab12c", formatted("%s%s%d%d%s", "a", "b", 1, 2, "c"));
}

TEST(MessageFormat, HasNumbersAsTheLibraryHasThem)
{
    for (const int number : {INT_MIN, INT_MIN + 1, -10, -9, -1, 0, 1, 9, 10, 99, 100, INT_MAX})
    {
        EXPECT_BY_THE_BOOK("<%d>", number);
    }
}

TEST(MessageFormat, LeavesEveryOtherConversionToTheLibrary)
{
    const char* const text = "text";
    EXPECT_BY_THE_BOOK("%s 100%% %d", text, 1);
    EXPECT_BY_THE_BOOK("%s %u %x %X %o", text, UINT_MAX, 255U, 255U, 8U);
    EXPECT_BY_THE_BOOK("%d %ld %lu %zu %lld", 1, LONG_MIN, ULONG_MAX, std::string(text).size(),
                       LLONG_MAX);
    EXPECT_BY_THE_BOOK("%d %5d|%-5d|%05d|%+d|% d|%.3d", 1, 2, 3, 4, 5, 6, 7);
    EXPECT_BY_THE_BOOK("%s|%8s|%-8s|%.2s|%.*s|%*d", text, text, text, text, 3, text, 4, 5);
    EXPECT_BY_THE_BOOK("%s %c %i %5.2f %e", text, 'c', -7, 3.14159, 1e10);
    EXPECT_BY_THE_BOOK("%s %p", text, static_cast<const void*>(text));
    EXPECT_BY_THE_BOOK("%d%c%d", 1, '\0', 2);
}

TEST(MessageFormat, LeavesATextThatIsNotThereToTheLibrary)
{
    const char* volatile missing = nullptr;
    EXPECT_EQ("1 (null) text 2", formatted("%d %s %s %d", 1, missing, "text", 2));
}

TEST(MessageFormat, CutsAt499Characters)
{
    for (const std::size_t length : {497U, 498U, 499U, 500U, 501U, 5000U})
    {
        const std::string text(length, 'x');
        EXPECT_BY_THE_BOOK("%s", text.c_str());
        EXPECT_BY_THE_BOOK("%s12", text.c_str());
        EXPECT_BY_THE_BOOK("%d%s%d%s", 12, text.c_str(), 345, "end");
        EXPECT_BY_THE_BOOK("%s%u", text.c_str(), 345U);
    }
}

TEST(MessageFormat, CutsAlsoWithinTheFormat)
{
#define TEN "0123456789"
#define HUNDRED TEN TEN TEN TEN TEN TEN TEN TEN TEN TEN
    EXPECT_BY_THE_BOOK(HUNDRED HUNDRED HUNDRED HUNDRED HUNDRED "%d", 1);
    EXPECT_BY_THE_BOOK(HUNDRED HUNDRED HUNDRED HUNDRED HUNDRED "%u", 1U);
    EXPECT_BY_THE_BOOK("%d" HUNDRED HUNDRED HUNDRED HUNDRED HUNDRED "%s", 1, "end");
    EXPECT_BY_THE_BOOK(HUNDRED HUNDRED HUNDRED HUNDRED TEN TEN TEN TEN TEN TEN TEN TEN TEN
                       "12345678%d" HUNDRED,
                       123);
}

TEST(MessageFormat, IsTheLibrarysForRandomMessages)
{
    std::mt19937 random{817}; // NOLINT(cert-msc32-c,cert-msc51-cpp): the same bytes in each run
    const auto text = [&random]
    {
        std::string made(random() % 7 == 0 ? random() % 600 : random() % 30, '\0');
        std::generate(made.begin(), made.end(),
                      [&random] { return static_cast<char>(1 + random() % 255); });
        return made;
    };
    for (int round = 0; round < 20000; ++round)
    {
        const std::string first = text();
        const std::string second = text();
        const auto number = static_cast<int>(random()) >> (random() % 32);
        EXPECT_BY_THE_BOOK("%s: %s takes %d, %d left%s", first.c_str(), second.c_str(), number,
                           round, first.c_str());
        EXPECT_BY_THE_BOOK("%d%s takes %ld, %s", number, first.c_str(), static_cast<long>(round),
                           second.c_str());
    }
}

} // namespace orvo::Logger
