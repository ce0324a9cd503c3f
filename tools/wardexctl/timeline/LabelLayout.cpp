#include "timeline/LabelLayout.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace orvo::ctl
{

namespace
{

/// "restart", "3 x restart", "2 x restart, reboot".
std::string joined(const std::vector<Label>& labels, std::size_t first, std::size_t past)
{
    std::vector<std::pair<std::string, int>> counts;
    for (std::size_t index = first; index < past; ++index)
    {
        const auto known =
            std::find_if(counts.begin(), counts.end(),
                         [&](const auto& each) { return each.first == labels[index].text; });
        if (known == counts.end())
        {
            counts.emplace_back(labels[index].text, 1);
        }
        else
        {
            ++known->second;
        }
    }
    std::string text;
    for (const auto& [word, count] : counts)
    {
        text +=
            (text.empty() ? "" : ", ") + (count > 1 ? std::to_string(count) + " x " + word : word);
    }
    return text;
}

std::vector<Label> gathered(const std::vector<Label>& labels, double distance)
{
    std::vector<Label> groups;
    std::size_t first = 0;
    while (first < labels.size())
    {
        std::size_t past = first + 1;
        while (past < labels.size() && labels[past].x - labels[first].x < distance)
        {
            ++past;
        }
        groups.push_back({labels[first].x, joined(labels, first, past)});
        first = past;
    }
    return groups;
}

bool overlaps(const PlacedLabel& one, const PlacedLabel& other, double gap)
{
    return one.left < other.left + other.width + gap && other.left < one.left + one.width + gap;
}

bool isCovered(double x, const PlacedLabel& label)
{
    return x > label.left && x < label.left + label.width;
}

/// Whether a label fits there: text beside text, and no line through a text.
bool fits(const PlacedLabel& label, const std::vector<PlacedLabel>& placed, double gap)
{
    return std::all_of(placed.begin(), placed.end(),
                       [&](const PlacedLabel& other)
                       {
                           if (other.row == label.row)
                           {
                               return !overlaps(label, other, gap);
                           }
                           return other.row < label.row ? !isCovered(label.x, other)
                                                        : !isCovered(other.x, label);
                       });
}

std::optional<std::vector<PlacedLabel>> tryToPlace(const std::vector<Label>& labels,
                                                   const LabelRoom& room)
{
    std::vector<PlacedLabel> placed;
    // From the right: a label reaches to the right, where the lines of those before it never are.
    for (auto label = labels.rbegin(); label != labels.rend(); ++label)
    {
        PlacedLabel next{label->x, 0, static_cast<double>(label->text.size()) * room.characterWidth,
                         0, label->text};
        next.left = std::max(std::min(next.x, room.right - next.width), room.left);
        while (next.row < room.rows && !fits(next, placed, room.gap))
        {
            ++next.row;
        }
        if (next.row == room.rows)
        {
            return std::nullopt;
        }
        placed.push_back(next);
    }
    std::reverse(placed.begin(), placed.end());
    return placed;
}

} // namespace

std::vector<PlacedLabel> placeLabels(const std::vector<Label>& labels, const LabelRoom& room)
{
    constexpr double kWider = 1.5;
    double distance = room.characterWidth;
    // A single one always fits.
    auto placed = tryToPlace(gathered(labels, distance), room);
    while (!placed)
    {
        distance *= kWider;
        placed = tryToPlace(gathered(labels, distance), room);
    }
    return *placed;
}

} // namespace orvo::ctl
