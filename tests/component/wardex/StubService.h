#pragma once

#include "ServiceInfo.h"

#include <functional>
#include <string>

namespace orvo::test
{

/// A supervised service that is told how it answers.
class StubService final : public ServiceInfo::Service
{
public:
    struct Answers
    {
        bool isAlive{true};
        QString runLevel{QStringLiteral("up")};
        int pings{0};
        int destroyed{0};
        /// Done inside each ping, before the answer.
        std::function<void()> onPing{};

        void answer(const QString& level)
        {
            isAlive = true;
            runLevel = level;
        }
        void fail() { isAlive = false; }
    };

    StubService(const QString& name, int pingTimeoutMs, const QString& initScript, Answers* answers)
        : Service(name, pingTimeoutMs, initScript), m_answers(answers)
    {
    }
    ~StubService()
    {
        if (m_answers != nullptr)
        {
            ++m_answers->destroyed;
        }
    }
    StubService(const StubService&) = delete;
    StubService& operator=(const StubService&) = delete;

    bool isAlive(QString& runLevel) override
    {
        ++m_answers->pings;
        if (m_answers->onPing)
        {
            m_answers->onPing();
        }
        if (m_answers->isAlive)
        {
            runLevel = m_answers->runLevel;
        }
        return m_answers->isAlive;
    }

private:
    Answers* m_answers;
};

/// A bus name that no claim of this process has used: the service table is never emptied.
inline QString freshBusName(const QString& label = QStringLiteral("service"))
{
    static int made = 0;
    return QStringLiteral("com.orvo.%1%2").arg(label).arg(++made);
}

/// Enters a service that is there for its script and process name only; its bus name.
inline QString addScriptedService(const QString& processName, const QString& initScript)
{
    QString name = freshBusName();
    ServiceInfo::addService(
        name, ServiceInfo::makeService<StubService>(processName, 1000, initScript, nullptr));
    return name;
}

} // namespace orvo::test
