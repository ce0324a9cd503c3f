#pragma once

#include <string>
#include <vector>

namespace orvo::test
{

/// The path of one of the simulator's programs.
std::string peer(const std::string& name);

/// The whole file; empty when it is missing.
std::string contentOf(const std::string& path);

std::vector<std::string> linesOf(const std::string& path);

/// The lines without their first word, which is a time.
std::vector<std::string> journalOf(const std::string& path);

/// The times of the lines, in seconds.
std::vector<double> timesOf(const std::string& path);

/// Puts a new file in the place of the old one, as those who give orders do.
void replaceFile(const std::string& path, const std::string& content);

} // namespace orvo::test
