#pragma once

namespace orvo::Logger
{

/// Where the process-wide texts go. The start value is LoggerStdout.
enum LoggerMode
{
    LoggerStdout = 1,
    LoggerSyslog = 2,
    LoggerRedis = 4
};

/// Index of a level for the calls below; on the right the syslog priority it stands for.
enum LoggerIndex
{
    LoggerDebug = 0, ///< LOG_DEBUG
    LoggerInfo = 1,  ///< LOG_INFO
    LoggerTrace = 2, ///< LOG_NOTICE
    LoggerWarn = 3,  ///< LOG_WARNING
    LoggerError = 4, ///< LOG_ERR
    LoggerFatal = 5, ///< LOG_CRIT
    LoggerEmerg = 6  ///< LOG_EMERG
};

// The process-wide facade: for code without a logger object of its own, as the client of the quorl
// service. One mode of the process decides where a text goes, and a logger that fails turns it over
// to syslog for good.
//
// Units:   texts formatted here have at most 254 bytes (kFacadeCapacity).
// Owns:    the process-wide RedisLogger, from loggerInit() to loggerShutdown(). One that is not
//          shut down lives until the process ends and is not destroyed: that would take a second.
// Threads: any.
// Errors:  nothing is thrown, not even when Redis cannot be reached: the first text then switches
//          to syslog.
// On the device: Redis records carry the program's short name, level and texts as they are. Syslog
//          gets facility LOG_LOCAL1 with the process id, and standard error a copy, when
//          loggerInit() has opened it; after a turn from Redis facility LOG_USER and no copy.

/// Sets the mode; takes effect with the next text, but syslog and Redis want a loggerInit().
void loggerSetMode(int mode);

/// Prepares the destination of the mode: opens syslog, or makes the process-wide RedisLogger if
/// there is none (with the stored configuration). Any other mode becomes LoggerStdout. Always 0.
int loggerInit();

/// Writes a text as it is. Length of the text when it was handed to standard output or syslog; for
/// Redis the result of RedisLogger::write(): 0 when the level is masked out.
///
/// When Redis fails, or there is no logger: -1, the mode becomes LoggerSyslog, syslog gets
/// "Logger failure: Switching to syslog." and then the text by way of loggerPrintf(), with which an
/// EMERG text is lost and "%%" becomes "%"; any other percent sign stays.
/// An index outside 0 to 6 answers -1 and writes nothing.
int loggerWrite(int levelIndex, const char* text);

/// Formats a text and writes it. LoggerEmerg, and what is no index, answer -1 and write nothing.
[[gnu::format(printf, 2, 3)]] int loggerPrintf(int levelIndex, const char* format, ...);

/// Formats a text and writes it at LoggerInfo.
[[gnu::format(printf, 1, 2)]] int loggerInfo(const char* format, ...);

/// Destroys the process-wide RedisLogger, if there is one. Always 1.
int loggerShutdown();

} // namespace orvo::Logger
