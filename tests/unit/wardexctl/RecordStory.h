#pragma once

#include "log-reading/ReadRecord.h"
#include "model/DeviceModel.h"

#include <cstdio>
#include <string>
#include <vector>

namespace orvo::test
{

/// Records as the supervisor would write them, in the order of the calls.
class RecordStory
{
public:
    /// Another life of the supervisor from here on.
    RecordStory& process(int pid)
    {
        m_pid = pid;
        return *this;
    }

    RecordStory& says(double seconds, const std::string& level, const std::string& message,
                      const std::string& source = "wardex")
    {
        char time[32];
        std::snprintf(time, sizeof time, "%.4f", seconds);
        m_records.push_back(readRecord("{\"T\":\"" + std::string(time) + "\", \"P\":\"" +
                                       std::to_string(m_pid) + "\", \"C\":\"" + level +
                                       "\", \"S\":\"" + source + "\", \"M\":\"" + message + "\"}"));
        return *this;
    }

    RecordStory& traces(double seconds, const std::string& message)
    {
        return says(seconds, "TRACE", message);
    }

    RecordStory& starts(double seconds)
    {
        return says(seconds, "WARN",
                    "wardex: supervision activity starting, Bello the watchdog, is unfused ...");
    }

    RecordStory& startsDeveloper(double seconds)
    {
        return says(seconds, "WARN", "wardex starting in developer mode");
    }

    RecordStory& restartsPackage(double seconds)
    {
        return says(seconds, "FATAL",
                    "SUPERVISOR PING timeout retry exceeding threshold: restarting mf-optware");
    }

    /// A device that has just become stable, at 10 s.
    RecordStory& becomesStable()
    {
        starts(8);
        says(8, "WARN", "Registerinng services for the ZK4XX family of devices");
        traces(8, "SuprStartingSystem::entry");
        for (const char* name : {"com.orvo.vistor", "com.orvo.pictor"})
        {
            traces(8, std::string("SuprStarting::entry (") + name + ")");
        }
        for (const char* name : {"com.orvo.vistor", "com.orvo.pictor"})
        {
            traces(10, std::string("SuprUp::entry (") + name + ")");
            traces(10, std::string("SuprStartingSystem::serviceIsUp ") + name);
        }
        return traces(10, "SuprStartingSystem::exit").traces(10, "SuprStableSystem::entry");
    }

    /// pictor misses its pings from 20 s on, and is down at 23 s.
    RecordStory& losesPictor()
    {
        for (const double seconds : {20.0, 21.0, 22.0, 23.0})
        {
            traces(seconds, "Ping com.orvo.pictor failed");
        }
        traces(23, "Ping threshold exceeded. Going down");
        traces(23, "SuprUp::down (com.orvo.pictor)");
        traces(23, "SuprUp::exit (com.orvo.pictor)");
        traces(23, "SuprDown::entry (com.orvo.pictor)");
        traces(23, "SuprStableSystem::serviceIsDown com.orvo.pictor");
        return traces(23, "SuprUnstableSystem::entry");
    }

    [[nodiscard]] const std::vector<ReadRecord>& records() const { return m_records; }

    [[nodiscard]] ctl::DeviceFacts facts() const
    {
        ctl::DeviceModel model;
        for (const ReadRecord& record : m_records)
        {
            model.add(record);
        }
        return model.facts();
    }

private:
    int m_pid{7};
    std::vector<ReadRecord> m_records;
};

} // namespace orvo::test
