#pragma once

#include <utility>

#include <unistd.h>

namespace orvo::simulator
{

/// An open file descriptor that is closed with its owner.
///
/// Units:   -1 = none.
/// Threads: one at a time.
class Descriptor
{
public:
    explicit Descriptor(int number = -1) : m_number(number) {}
    ~Descriptor() { reset(); }
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        reset(std::exchange(other.m_number, -1));
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] int get() const { return m_number; }
    [[nodiscard]] bool isOpen() const { return m_number != -1; }

    /// Closes what is held and takes over number.
    void reset(int number = -1)
    {
        const int old = std::exchange(m_number, number);
        if (old != -1)
        {
            close(old);
        }
    }

private:
    int m_number;
};

} // namespace orvo::simulator
