#pragma once

#include <cstddef>
#include <string_view>

namespace orvo::Logger
{

/// The decimal text of a number.
class Decimal
{
public:
    /// Zeros fill up to the minimal count of digits, at most 19 of them.
    explicit Decimal(long number, std::size_t minimalDigits = 1)
    {
        const bool isNegative = number < 0;
        auto rest = static_cast<unsigned long>(number);
        rest = isNegative ? 0UL - rest : rest;
        const char* const lastZero = m_digits + sizeof m_digits - minimalDigits;
        do
        {
            *--m_start = static_cast<char>('0' + rest % 10);
            rest /= 10;
        } while (rest != 0);
        while (m_start > lastZero)
        {
            *--m_start = '0';
        }
        if (isNegative)
        {
            *--m_start = '-';
        }
    }
    // The text points into the object.
    Decimal(const Decimal&) = delete;
    Decimal& operator=(const Decimal&) = delete;

    [[nodiscard]] std::string_view text() const
    {
        return {m_start, static_cast<std::size_t>(m_digits + sizeof m_digits - m_start)};
    }

private:
    char m_digits[20]; // sign and digits of 64 bits
    char* m_start{m_digits + sizeof m_digits};
};

} // namespace orvo::Logger
