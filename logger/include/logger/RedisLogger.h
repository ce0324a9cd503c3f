#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace orvo::Logger
{

/// Level of a message: one bit, so that a mask of enabled levels is a word. A call with any other
/// value is recorded under the level name "UNKNOWN".
enum Level : std::uint32_t
{
    DEBUG = 0x01,
    DIAG = 0x02,
    TRACE = 0x04,
    INFO = 0x08,
    WARN = 0x10,
    ERROR = 0x20,
    FATAL = 0x40,
    EMERG = 0x80
};

/// Writes each message as one JSON text record to a Redis list and publishes it on the channel of
/// the same name; reads the list back.
///
/// Shape:   {"T":"12.0345", "P":"817", "C":"WARN", "S":"wardex", "M":"the message"}
///          T seconds of the monotonic clock with four digits of fraction (cut, not rounded), P
///          process id, C level, S program, M message with \" \/ \\ escaped and every byte that is
///          not printable replaced by '#'. A record of more than 499 characters is stored as 500
///          bytes: 499 characters of it and a zero byte, without its end. Readers accept that.
/// Units:   lengths in bytes; a message has at most 499 (kMessageCapacity), the list at most as
///          many records as the configuration says (10000 by default).
/// Owns:    its connection to Redis. The first logger of a process starts the configuration thread,
///          the destructor of the last one ends it and waits for it, one second at most.
/// Threads: any. One mutex of the process serialises all operations of all loggers, and a call
///          blocks while Redis takes the record: there is no queue and no time-out.
/// Errors:  only a constructor throws (std::runtime_error with hiredis' text) when Redis cannot be
///          reached. After a failed write the connection is gone for good: that write tells on
///          standard error why, every later one writes "REDIS NOT CONNECTED !n" there and answers
///          -1, also when the server is back. SIGPIPE is ignored from the first logger on.
/// On the device: mask, list length and crash pattern come from the hash LOG:PERM:CFG at
///          construction ("all" first, then the program's own field) and from the channel
///          LOGGER:CFG at any time. The crash pattern raises SIGSEGV in the process when it covers
///          a whole message, for a core dump at that very moment; see docs/logging.md.
class RedisLogger
{
public:
    /// Over a Unix socket, as the device does: ("wardex", kLogSocket, kLogList, true).
    /// loadConfig: whether the stored configuration is taken.
    RedisLogger(const std::string& source, const std::string& socketPath,
                const std::string& listKey, bool loadConfig);
    /// Over TCP. Port 0 would make the configuration thread use a Unix socket.
    RedisLogger(const std::string& source, const std::string& host, int port,
                const std::string& listKey, bool loadConfig);
    virtual ~RedisLogger();
    RedisLogger(const RedisLogger&) = delete;
    RedisLogger& operator=(const RedisLogger&) = delete;

    /// Whether log() would write a message of this level now. Asked before a call whose arguments
    /// have to be made for it, because log() gets them ready-made; the mask may change in between,
    /// and log() asks again.
    [[nodiscard]] bool isEnabled(std::uint32_t level) const;

    /// Writes a message; 0 when its level is masked out (nothing is formatted then), the message's
    /// length when it was written, -1 when it was not.
    [[gnu::format(printf, 3, 4)]] int log(std::uint32_t level, const char* format, ...);

    /// As log(), but each formatted text only once in the life of the process, whichever logger
    /// wrote it, and 0 when it was written before. A text at a masked level is not remembered; one
    /// whose write failed is.
    [[gnu::format(printf, 3, 4)]] int logOnce(std::uint32_t level, const char* format, ...);

    /// Writes a text as it is; length 0 means up to its terminator. Result as of log(), except that
    /// the crash pattern is tried even on a text whose level is masked out.
    int write(std::uint32_t level, const char* text, std::size_t length);

    /// Stores a configuration for the programs called source in LOG:PERM:CFG. A mask below 0, a
    /// maximum below 1 and an empty pattern leave that value out of it; with none of them, or
    /// without a source, nothing is stored and a WARN record says so. Source and pattern go into
    /// the JSON text as they are: a backslash or a quote in them has to come escaped already.
    /// A server (kConfigSocket) that cannot be reached is told on standard error; 0 then.
    ///
    /// Stored is not published: running loggers, this one too, keep their values. 1 would tell that
    /// the values were also taken by this logger, which no Redis server known makes happen: it
    /// answers HSET with a number, and the result is 0 although the configuration is stored.
    int saveConfig(const std::string& source, int mask, int maxEntries, const std::string& pattern);

    /// The records from index first to last, oldest first; 0 is the oldest, -1 the newest. Empty on
    /// any failure; Redis' own complaint goes to standard error. A failed read leaves the
    /// connection in its error state, in which writes answer -1 without a word.
    std::vector<std::string> getLogEntries(int first, int last);

    /// As getLogEntries(), but only records for which a Lua expression over the variable `entry`
    /// holds, for example string.find(entry, '"C":"ERROR"'). Redis evaluates it, unchecked. One too
    /// long for the script (kFilterScriptCapacity), or with a zero byte in it, is refused on
    /// standard error.
    std::vector<std::string> getLogEntriesFiltered(int first, int last,
                                                   const std::string& condition);

    /// Number of records in the list; 0 on any failure.
    int getLogEntryCount();

    /// Deletes the list; 1 when Redis answered, 0 when it could not be asked.
    int clearLogEntries();

    class RedisLoggerPimpl;

private:
    RedisLogger(std::unique_ptr<RedisLoggerPimpl> pimpl, bool loadConfig);

    std::unique_ptr<RedisLoggerPimpl> m_pimpl;
};

} // namespace orvo::Logger
