#include "common/Order.h"

#include <sstream>

namespace orvo::simulator
{

Order Order::parse(const std::string& line)
{
    Order order;
    std::istringstream words(line);
    words >> order.word;
    if (order.word.empty())
    {
        return Order();
    }
    for (std::string word; words >> word;)
    {
        order.arguments.push_back(word);
    }
    return order;
}

std::string Order::argument(std::size_t position, const std::string& fallback) const
{
    return position < arguments.size() ? arguments[position] : fallback;
}

} // namespace orvo::simulator
