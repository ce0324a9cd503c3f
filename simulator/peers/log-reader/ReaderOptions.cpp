#include "log-reader/ReaderOptions.h"

#include <algorithm>

namespace orvo::simulator
{

namespace
{

std::string joined(const std::vector<std::string>& words)
{
    std::string text;
    for (const std::string& word : words)
    {
        text += (text.empty() ? "" : ", ") + word;
    }
    return text;
}

void setCondition(const RecordFilter& filter, ReaderOptions& options)
{
    const std::vector<std::string>& names = levelNames();
    if (!filter.level.empty() && std::find(names.begin(), names.end(), filter.level) == names.end())
    {
        options.complaint =
            "no level is called '" + filter.level + "': say one of " + joined(names);
        return;
    }
    const auto condition = filter.condition();
    if (!condition)
    {
        options.complaint = "the text is too long to be searched for: take a part of it";
        return;
    }
    options.condition = *condition;
}

} // namespace

ReaderOptions readerOptions(const std::vector<std::string>& words)
{
    ReaderOptions options;
    RecordFilter filter;
    for (auto word = words.begin(); word != words.end(); ++word)
    {
        const bool takesValue = *word == "--level" || *word == "-g";
        if (*word == "--help" || *word == "-h")
        {
            options.help = true;
        }
        else if (*word == "-f")
        {
            options.follow = true;
        }
        else if (takesValue && word + 1 != words.end())
        {
            std::string& value = *word == "-g" ? filter.text : filter.level;
            value = *++word;
        }
        else
        {
            options.complaint =
                takesValue ? "after '" + *word + "' comes a value" : "'" + *word + "' is not known";
            options.complaint += "; see record-reader --help";
            return options;
        }
    }
    setCondition(filter, options);
    return options;
}

} // namespace orvo::simulator
