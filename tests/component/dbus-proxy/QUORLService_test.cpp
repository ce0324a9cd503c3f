#include "QuorlServer.h"

#include "dbus-proxy/QUORLService.h"

#include <gtest/gtest.h>

namespace orvo
{

/// The service object and the service's socket.
class QUORLServicePing : public testing::Test
{
protected:
    bool isAlive()
    {
        m_runLevel = QStringLiteral("untouched");
        return m_service.isAlive(m_runLevel);
    }

    QUORLService m_service{QStringLiteral("quorl"), QStringLiteral("/init.d/20_quorl")};
    QString m_runLevel;
};

TEST_F(QUORLServicePing, HasItsNameScriptAndInterval)
{
    EXPECT_EQ(QStringLiteral("quorl"), m_service.name());
    EXPECT_EQ(QStringLiteral("/init.d/20_quorl"), m_service.initScript());
    EXPECT_EQ(1000, m_service.pingTimeout());
}

TEST_F(QUORLServicePing, IsUpWhenTheServiceTellsItsBindAddress)
{
    const test::QuorlServer server;
    EXPECT_TRUE(isAlive());
    EXPECT_EQ(QStringLiteral("up"), m_runLevel);
    ASSERT_EQ(1U, server.requests().size());
    EXPECT_STREQ("Bind-Address", server.requests()[0].substr(4).c_str());
}

TEST_F(QUORLServicePing, IsUpFromAResultOfOne)
{
    test::QuorlServer server;
    server.answersConfig("a", 1);
    EXPECT_TRUE(isAlive());
    EXPECT_EQ(QStringLiteral("up"), m_runLevel);
}

TEST_F(QUORLServicePing, IsDeadWhenTheBindAddressIsEmpty)
{
    test::QuorlServer server;
    server.answersConfig("", 0);
    EXPECT_FALSE(isAlive());
    EXPECT_EQ(QStringLiteral("untouched"), m_runLevel);
}

TEST_F(QUORLServicePing, IsDeadWhenTheServiceReportsAnErrorTogetherWithAText)
{
    test::QuorlServer server;
    server.answersConfig("unknown item", -1);
    EXPECT_FALSE(isAlive());
    EXPECT_EQ(QStringLiteral("untouched"), m_runLevel);
}

TEST_F(QUORLServicePing, IsDeadWhenTheServiceClosesEarly)
{
    test::QuorlServer server;
    server.answers(std::string(1000, 'x'));
    EXPECT_FALSE(isAlive());
    EXPECT_EQ(QStringLiteral("untouched"), m_runLevel);
}

TEST_F(QUORLServicePing, IsDeadWhenNobodyListens)
{
    EXPECT_FALSE(isAlive());
    EXPECT_EQ(QStringLiteral("untouched"), m_runLevel);
}

} // namespace orvo
