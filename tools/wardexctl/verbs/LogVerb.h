#pragma once

#include "log-reading/LogSubscription.h"
#include "log/LogQuery.h"
#include "output/Output.h"

#include <memory>
#include <string>
#include <vector>

namespace orvo::ctl
{

/// Shows the device's log: what is stored, and with follow what comes, each record once.
///
/// Threads: one. Following ends when nobody reads any more, or by a signal.
/// Errors:  without the server kLogSilent at once; one that goes away while it is followed is
///          waited for, and told on standard error.
class LogVerb
{
public:
    LogVerb(const Output& output, LogWords words, bool follows);

    int run();

private:
    bool begin();
    bool show(const std::string& raw);
    bool showStored(const std::vector<std::string>& raws);
    bool follow();
    bool waitForServer();

    const Output& m_output;
    LogWords m_words;
    bool m_follows;
    LogQuery m_query;
    LogSubscription m_live;
    std::vector<std::string> m_stored;
};

} // namespace orvo::ctl
