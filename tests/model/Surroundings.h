#pragma once

#include <cstdint>
#include <string>

namespace orvo::model
{

/// What a service said to a ping, or that it said nothing in time.
struct PingAnswer
{
    bool isAnswered;
    std::string level;
};

/// How a child process ended.
struct ProcessEnd
{
    bool isSuccess;
    std::string out;
    std::string err;
};

/// Everything that a supervisor can do to its device or learn from it. The model and the real
/// objects are put into surroundings of their own, which behave alike as long as the two do.
///
/// Units:   ms; now() since the first power-on, wallClock() since 1970 UTC.
/// Threads: one.
class Surroundings
{
public:
    virtual ~Surroundings() = default;
    Surroundings(const Surroundings&) = delete;
    Surroundings& operator=(const Surroundings&) = delete;

    virtual PingAnswer ping(const std::string& service) = 0;
    virtual ProcessEnd run(const std::string& commandLine) = 0;
    virtual void shell(const std::string& commandLine) = 0;
    virtual bool openWatchdog() = 0;
    virtual void feed() = 0;
    /// level: its name; text: escaped as a record's "M" field.
    virtual void record(const std::string& level, const std::string& text) = 0;
    virtual void syslog(int priority, const std::string& text) = 0;
    /// availability: "name=up name=down", ordered by name.
    virtual void signal(const std::string& availability) = 0;

    [[nodiscard]] virtual std::int64_t now() const = 0;
    [[nodiscard]] virtual std::int64_t wallClock() const = 0;
    /// Lets time pass up to this moment; nothing happens when it is past.
    virtual void moveTo(std::int64_t moment) = 0;

protected:
    Surroundings() = default;
};

} // namespace orvo::model
