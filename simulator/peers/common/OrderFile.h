#pragma once

#include "common/Descriptor.h"
#include "common/Order.h"

#include <string>
#include <vector>

namespace orvo::simulator
{

/// The orders that a person or a story gives to one service of the simulated device.
///
/// Shape:   a text file, replaced as a whole (rename); one order per line, one line per ping, the
///          last line repeats. Empty lines do not count. A missing or empty file means `up`.
/// Owns:    the descriptor of the file read last: as long as it is held, its inode cannot be given
///          to a replacement, which therefore never passes for the old file.
/// Threads: one at a time.
/// Errors:  a file that cannot be read is the same as a missing one.
class OrderFile
{
public:
    explicit OrderFile(const std::string& path) : m_path(path) {}

    /// The order for the ping that has just come; goes on to the following line. A replaced file
    /// starts again at its first line.
    Order next();

    /// The order that next() would answer.
    Order peek();

private:
    void refresh();
    void load();

    std::string m_path;
    Descriptor m_file;
    std::vector<Order> m_orders;
    std::size_t m_position{0};
    long long m_size{0};
    long long m_modifiedNs{0};
};

} // namespace orvo::simulator
