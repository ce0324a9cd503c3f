#include "Frame.h"

#include <cstdint>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace orvo::test
{

namespace
{

std::string hexBytes(const std::string& digits)
{
    std::string bytes;
    std::istringstream words(digits);
    for (unsigned int value = 0; words >> std::hex >> value;)
    {
        bytes += static_cast<char>(value);
    }
    return bytes;
}

} // namespace

std::string frame(const std::string& name)
{
    std::ifstream file(FRAMES_FOLDER "/" + name + ".frame");
    if (!file)
    {
        throw std::runtime_error("no frame " + name);
    }
    std::string bytes;
    for (std::string line; std::getline(file, line);)
    {
        const auto blank = line.find(' ');
        const std::string kind = line.substr(0, blank);
        const std::string rest = line.substr(blank + 1);
        if (kind == "hex")
        {
            bytes += hexBytes(rest);
        }
        else if (kind == "text")
        {
            bytes += rest;
        }
        else if (kind == "zeros")
        {
            bytes.append(std::stoul(rest), '\0');
        }
        else if (kind != "#")
        {
            throw std::runtime_error(std::string("frame ").append(name).append(": ").append(line));
        }
    }
    return bytes;
}

std::string filled(const std::string& text, std::size_t width)
{
    std::string bytes = text;
    bytes.resize(width, '\0');
    return bytes;
}

std::string word(std::int32_t value)
{
    const auto bits = static_cast<std::uint32_t>(value);
    std::string bytes;
    for (unsigned int shift = 0; shift < 32; shift += 8)
    {
        bytes += static_cast<char>((bits >> shift) & 0xffU);
    }
    return bytes;
}

} // namespace orvo::test
