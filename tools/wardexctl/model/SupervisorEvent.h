#pragma once

#include "log-reading/ReadRecord.h"

#include <cstdint>
#include <string>

namespace orvo::ctl
{

/// What a record of the supervisor tells, as far as the state of the device follows from it.
struct SupervisorEvent
{
    enum class Kind
    {
        None,
        Started,               ///< supervises for real
        StartedDeveloper,      ///< in developer mode
        Family,                ///< name: the family
        NoFamily,              ///< the supervisor gives up
        MaskChanged,           ///< mask
        ServiceEntry,          ///< state, name
        ServiceDown,           ///< state, name: its machine was told "down"
        SystemEntry,           ///< state
        ServiceIsUp,           ///< state of the system, name
        ServiceIsDown,         ///< state of the system, name
        PingFailed,            ///< name
        NotRegistered,         ///< name
        LevelDown,             ///< no name; ServiceDown follows
        LevelStarting,         ///< no name; ServiceEntry follows
        ThresholdExceeded,     ///< no name; ServiceDown follows
        ConsideredDead,        ///< name; its script runs now
        DeadDisabled,          ///< name; developer mode
        PackageRestart,        ///< its script runs now
        PackageDisabled,       ///< developer mode, only the first time
        TooManyRestarts,       ///< the decision to reboot
        SystemRestart,         ///< the reboot itself
        SystemRestartDisabled, ///< developer mode, only the first time
        Grace,                 ///< name, milliseconds: its pings come in that interval
        Unfed,                 ///< the watchdog could not be fed
        CameToBus,             ///< name
        LeftBus                ///< name
    };

    Kind kind{Kind::None};
    std::string state;
    std::string name;
    std::uint32_t mask{0};
    int milliseconds{0};
};

/// The name under which the supervisor logs.
inline constexpr char kSupervisorSource[] = "wardex";

/// None for records of other programs, and for what says nothing about the state.
SupervisorEvent supervisorEvent(const ReadRecord& record);

} // namespace orvo::ctl
