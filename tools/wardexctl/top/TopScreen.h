#pragma once

#include "output/StyledLine.h"
#include "top/TopState.h"

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace orvo::ctl
{

struct ScreenSize
{
    std::size_t rows{0};
    std::size_t columns{0};

    bool operator==(const ScreenSize& other) const
    {
        return rows == other.rows && columns == other.columns;
    }
};

/// A screen as it is to be painted: at most as many lines as the terminal has, each narrower than
/// it, of printable ASCII only, which every terminal knows.
struct TopScreen
{
    static constexpr ScreenSize kSmallest{24, 80};

    std::vector<StyledLine> lines;
    std::size_t logHeight{0};
    bool isTooSmall{false};
    std::optional<std::size_t> cursor; ///< column in the last line; nothing: hidden

    static TopScreen of(const TopState& state, const ScreenSize& size);
};

} // namespace orvo::ctl
