#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvo
{

/// Joins the stored log and the live channel: who subscribes first and reads the list then gets the
/// records of that moment twice, and each of them only once through this.
///
/// Shape:   a record is pushed before it is published, and two programs may be published in
///          another order than they are stored in; so records are counted, not compared in order.
/// Units:   kOverlapSeconds of the records' own time: what is published later than that after the
///          newest stored record cannot have been stored before.
/// Threads: one.
class OverlapFilter
{
public:
    static constexpr int kOverlapSeconds = 5;

    /// stored: all that was read after the subscription was in force.
    explicit OverlapFilter(const std::vector<std::string>& stored);

    /// Whether a published record was not among the stored ones.
    [[nodiscard]] bool isNew(const std::string& published);

private:
    std::unordered_map<std::string, int> m_stored;
    std::int64_t m_newest{-1};
};

} // namespace orvo
