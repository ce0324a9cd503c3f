#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace orvo
{

/// Remembers the end of a list that grows at its end and is trimmed at its front, so that the
/// next look at it can begin where the last one ended: indexes cannot, for trimming shifts them.
///
/// Shape:   records tell themselves apart by their time stamp. Only where all records compared are
///          alike, stamp included, is one more of them not noticed.
/// Threads: one.
class RecordTail
{
public:
    /// Where in the newest records of the list those begin that were not seen yet; nothing when
    /// the window has none that was.
    [[nodiscard]] std::optional<std::size_t> begin(const std::vector<std::string>& window) const;

    /// The window has been seen from this index on.
    void add(const std::vector<std::string>& window, std::size_t first);

    /// The list was empty: all that comes is new.
    void forget() { m_seen.clear(); }
    [[nodiscard]] bool isEmpty() const { return m_seen.empty(); }

private:
    /// More than a burst of records that look alike.
    static constexpr std::size_t kRemembered = 64;

    std::vector<std::string> m_seen;
};

} // namespace orvo
