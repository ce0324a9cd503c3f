#pragma once

#include "DbusCmd.h"
#include "ServiceInfo.h"

#include "BusDaemon.h"
#include "Eventually.h"
#include "LoggedDevice.h"
#include "ScriptJournal.h"
#include "StubService.h"

#include "dbus-proxy/BusNames.h"
#include "logger/LogDefaults.h"
#include "logger/RedisLogger.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusPendingCall>

namespace orvo::test
{

/// The bus command object on a real bus, with a client that has a connection of its own.
class SupervisorOnTheBus : public testing::Test
{
protected:
    void SetUp() override { m_supervisor = std::make_unique<DbusCmd>(&m_info, &m_logger); }

    void TearDown() override
    {
        m_supervisor.reset();
        QDBusConnection::systemBus().unregisterService(kName);
        QDBusConnection::disconnectFromBus(m_client.name());
    }

    /// Lets the supervisor's event loop run until condition() holds.
    template <typename Condition>
    static bool runUntil(Condition condition)
    {
        return eventually(
            [&]
            {
                QCoreApplication::processEvents();
                return condition();
            });
    }

    QDBusMessage call(const char* method, const QVariantList& arguments = {},
                      const QString& service = kName)
    {
        QDBusMessage message = QDBusMessage::createMethodCall(
            service, QLatin1String(kBusObjectPath), kName, QLatin1String(method));
        message.setArguments(arguments);
        QDBusPendingCall pending = m_client.asyncCall(message);
        EXPECT_TRUE(runUntil([&] { return pending.isFinished(); }));
        return pending.reply();
    }

    static ErrorStatus statusOf(const QDBusMessage& reply)
    {
        EXPECT_EQ(QDBusMessage::ReplyMessage, reply.type()) << qPrintable(reply.errorMessage());
        return qdbus_cast<ErrorStatus>(reply.arguments().value(0));
    }

    static int codeOf(const QDBusMessage& reply) { return statusOf(reply).code; }

    static inline const QString kName = QLatin1String(kWardexBusName);

    LoggedDevice m_device;
    ScriptJournal m_journal;
    Logger::RedisLogger m_logger{"wardex", Logger::kLogSocket, Logger::kLogList, true};
    ServiceInfo m_info{&m_logger, false};
    QDBusConnection m_client = QDBusConnection::connectToBus(
        QString::fromStdString(BusDaemon::ofThisProcess().address()), QStringLiteral("client"));
    std::unique_ptr<DbusCmd> m_supervisor;
};

} // namespace orvo::test
