#pragma once

#include "log-reading/RecordFilter.h"

#include <string>
#include <vector>

namespace orvo::simulator
{

/// The words of record-reader, taken apart.
struct ReaderOptions
{
    bool help{false};
    bool follow{false};
    std::string condition;
    std::string complaint; ///< what is wrong with the words; empty when nothing is
};

/// Takes the words after the program's name apart.
ReaderOptions readerOptions(const std::vector<std::string>& words);

} // namespace orvo::simulator
