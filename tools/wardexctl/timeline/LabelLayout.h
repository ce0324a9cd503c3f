#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace orvo::ctl
{

/// A label that belongs to a place on the axis.
struct Label
{
    double x{0};
    std::string text;
};

/// A label where nothing covers it, nor the line from its place down to it.
struct PlacedLabel
{
    double x{0};    ///< where its line stands
    double left{0}; ///< of the text
    double width{0};
    std::size_t row{0}; ///< 0 is next to the axis
    std::string text;
};

/// The room for labels.
struct LabelRoom
{
    double left{0};
    double right{0};
    double characterWidth{1}; ///< of the widest usual character
    double gap{1};            ///< kept free behind a label
    std::size_t rows{1};
};

/// Gives each label a row. Labels for which there is no room are put together, so that none is
/// lost: "3 x restart, 1 x package restart".
///
/// Shape:   labels in the order of their x; so are the answers.
std::vector<PlacedLabel> placeLabels(const std::vector<Label>& labels, const LabelRoom& room);

} // namespace orvo::ctl
