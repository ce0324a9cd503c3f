#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace orvo::ctl
{

/// The names of the levels that a mask lets through, the least serious first: "WARN,ERROR";
/// "none" for none.
std::string maskText(std::uint32_t mask);

/// The mask that a person means. Words are joined by commas: "WARN", "warn+" (it and more serious
/// ones), "all", "none", "default". When every word begins with '+' or '-', they change the present
/// mask. Nothing, and complaint set, for anything else.
std::optional<std::uint32_t> maskOf(const std::string& text, std::uint32_t present,
                                    std::string& complaint);

/// Whether a word takes levels out of a mask ("-INFO", "-debug,+WARN"), though it looks like an
/// option of a command line.
bool isRemoval(const std::string& word);

} // namespace orvo::ctl
