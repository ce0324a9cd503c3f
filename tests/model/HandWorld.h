#pragma once

#include "Surroundings.h"

#include <string>
#include <vector>

namespace orvo::model
{

/// What the surroundings do while a single step is taken.
struct StepScript
{
    PingAnswer answer{false, "down"};
    /// One letter per look at the process list: 'r' the process runs, 'g' it is gone, 'f' the list
    /// cannot be had. Gone when there is no further one.
    std::string looks{};
    bool doScriptsFail{false};
    bool isCommanded{false}; ///< by the bus: its actions are not the machines'
};

/// Surroundings in which every step is scripted and no time passes by itself.
class HandWorld final : public Surroundings
{
public:
    explicit HandWorld(bool isDeveloper) : m_isDeveloper(isDeveloper) {}

    void begin(const StepScript& script);
    void setWallClock(std::int64_t wallClock) { m_wallClock = wallClock; }
    [[nodiscard]] const std::vector<std::string>& deeds() const { return m_deeds; }
    [[nodiscard]] const std::vector<std::string>& breaches() const { return m_breaches; }
    void note(const std::string& deed) { m_deeds.push_back(deed); }

    PingAnswer ping(const std::string& service) override;
    ProcessEnd run(const std::string& commandLine) override;
    void shell(const std::string& commandLine) override;
    bool openWatchdog() override;
    void feed() override;
    void record(const std::string& level, const std::string& text) override;
    void syslog(int priority, const std::string& text) override;
    void signal(const std::string& availability) override;
    [[nodiscard]] std::int64_t now() const override { return 0; }
    [[nodiscard]] std::int64_t wallClock() const override { return m_wallClock; }
    void moveTo(std::int64_t /*moment*/) override {}

private:
    void act(const std::string& commandLine);

    const bool m_isDeveloper;
    StepScript m_script{};
    std::size_t m_looks{0};
    std::int64_t m_wallClock{0};
    bool m_isRebooting{false};
    std::string m_actsOn; ///< a service's script, the package or the device; empty before an action
    std::vector<std::string> m_deeds;
    std::vector<std::string> m_breaches;
};

} // namespace orvo::model
