#pragma once

#include <string>
#include <vector>

namespace orvo::test
{

/// A libudev of the test's own: this program defines the library's functions, so that a test sees
/// each question and can refuse each answer. One at a time.
class FakeUdev
{
public:
    struct Device
    {
        std::string syspath;
        std::string driver; ///< "" = none bound.
        bool vanished{false};
    };

    FakeUdev();
    ~FakeUdev();
    FakeUdev(const FakeUdev&) = delete;
    FakeUdev& operator=(const FakeUdev&) = delete;

    std::vector<Device> devices; ///< In the order of enumeration.
    bool refusesContext{false};
    bool refusesMonitor{false};
    bool refusesEnumeration{false};

    /// Each call with its texts, in the order of the calls.
    std::vector<std::string> calls;
    int openHandles{0};
};

} // namespace orvo::test
