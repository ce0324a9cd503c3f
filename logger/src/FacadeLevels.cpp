#include "FacadeLevels.h"

#include "logger/LoggerFacade.h"
#include "logger/RedisLogger.h"

#include <array>

#include <syslog.h>

namespace orvo::Logger
{

namespace
{

constexpr std::array<FacadeLevel, 7> kFacadeLevels{{{DEBUG, LOG_DEBUG},
                                                    {INFO, LOG_INFO},
                                                    {TRACE, LOG_NOTICE},
                                                    {WARN, LOG_WARNING},
                                                    {ERROR, LOG_ERR},
                                                    {FATAL, LOG_CRIT},
                                                    {EMERG, LOG_EMERG}}};
static_assert(kFacadeLevels.size() == LoggerEmerg + 1, "one entry for each index");

} // namespace

const FacadeLevel* facadeLevel(int levelIndex)
{
    const auto index = static_cast<std::size_t>(levelIndex);
    return levelIndex >= 0 && index < kFacadeLevels.size() ? &kFacadeLevels[index] : nullptr;
}

} // namespace orvo::Logger
