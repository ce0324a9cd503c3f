#pragma once

#include <cstdlib>
#include <memory>
#include <utility>

#include <unistd.h>

namespace orvo::Quorl
{

/// Owns a descriptor; -1 is none.
class Descriptor
{
public:
    explicit Descriptor(int number) : m_number(number) {}
    ~Descriptor()
    {
        if (m_number != -1)
        {
            ::close(m_number);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&&) = delete;

    [[nodiscard]] int number() const { return m_number; }
    [[nodiscard]] bool isOpen() const { return m_number != -1; }

private:
    int m_number;
};

struct Free
{
    void operator()(const void* memory) const { std::free(const_cast<void*>(memory)); }
};

} // namespace orvo::Quorl
