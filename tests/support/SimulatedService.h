#pragma once

#include <QString>
#include <QVariantList>

#include <memory>

namespace orvo::test
{

/// A service of the device on the private bus: owns its name and answers doPing as it is told.
///
/// It lives in a thread and on a bus connection of its own, so that a ping that blocks the caller's
/// thread is answered. From the start it answers run level "up".
///
/// Threads: the operations may be called from any thread; each holds from the next ping on.
/// Errors:  a name that cannot be owned ends the program with a message.
class SimulatedService
{
public:
    explicit SimulatedService(const QString& busName);
    ~SimulatedService();
    SimulatedService(const SimulatedService&) = delete;
    SimulatedService& operator=(const SimulatedService&) = delete;

    /// A good answer: success and this run level.
    void answers(const QString& runLevel);

    /// Any answer, well-formed or not: the values of the reply, as they go over the bus.
    void answersWith(const QVariantList& values);

    /// A D-Bus error of this name.
    void answersWithError(const QString& errorName);

    /// Each answer is sent so many milliseconds after its ping; 0 = at once.
    void answersAfter(int delayMs);

    void staysSilent();

    void leavesTheBus();
    void returnsToTheBus();

    /// Pings received so far, answered or not.
    [[nodiscard]] int pings() const;

private:
    class Peer;
    class Connection;
    std::unique_ptr<Peer> m_peer;
    std::unique_ptr<Connection> m_connection;
};

} // namespace orvo::test
