#pragma once

#include "BusDaemon.h"
#include "ChildProcess.h"
#include "Eventually.h"

#include <QRegularExpression>
#include <QString>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace orvo::test
{

/// What goes over the private bus, as a monitor sees it, from construction on.
class BusJournal
{
public:
    BusJournal()
        : m_monitor({"dbus-monitor", "--address", BusDaemon::ofThisProcess().address()}, kFile)
    {
        // A monitor loses its own name when the bus has made it one; from there on it sees all.
        isListening = eventually([this] { return text().find("NameLost") != std::string::npos; });
    }

    /// The device's names whose owners somebody began to follow, in the order of the calls.
    [[nodiscard]] std::vector<std::string> followedNames() const { return namesIn("AddMatch"); }

    /// The device's names whose owners somebody ceased to follow, in the order of the calls.
    [[nodiscard]] std::vector<std::string> abandonedNames() const { return namesIn("RemoveMatch"); }

    bool isListening{false};

private:
    [[nodiscard]] static std::vector<std::string> namesIn(const QString& member)
    {
        const QRegularExpression call("member=" + member +
                                      "\\n +string \"[^\\n]*arg0='(com[.]orvo[.][a-z]+)'");
        std::vector<std::string> names;
        auto calls = call.globalMatch(QString::fromStdString(text()));
        while (calls.hasNext())
        {
            names.push_back(calls.next().captured(1).toStdString());
        }
        return names;
    }

    [[nodiscard]] static std::string text()
    {
        std::ifstream file(kFile);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    static constexpr const char* kFile = "/tmp/bus-journal";
    ChildProcess m_monitor;
};

} // namespace orvo::test
