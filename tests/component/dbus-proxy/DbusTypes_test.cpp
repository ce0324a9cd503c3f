#include "dbus-proxy/DbusTypes.h"

#include "SimulatedService.h"

#include "dbus-proxy/BusNames.h"

#include <gtest/gtest.h>

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>

#include <limits>

namespace orvo
{

/// Values that a peer sends over a real bus, as they arrive here.
class DbusTypesOnTheBus : public testing::Test
{
protected:
    /// The reply to a ping that the peer answers with the one value.
    template <typename T>
    QDBusMessage sent(const T& value)
    {
        m_peer.answersWith({QVariant::fromValue(value)});
        return QDBusConnection::systemBus().call(QDBusMessage::createMethodCall(
            m_name, QLatin1String(kBusObjectPath), m_name, QStringLiteral("doPing")));
    }

    template <typename T>
    static T received(const QDBusMessage& message)
    {
        return qdbus_cast<T>(message.arguments().value(0));
    }

private:
    const QString m_name = QLatin1String(kPictorBusName);
    test::SimulatedService m_peer{m_name};
};

TEST_F(DbusTypesOnTheBus, KeepCodeAndMessageOfAnErrorStatus)
{
    const ErrorStatus status(101040);
    const QDBusMessage message = sent(status);
    EXPECT_EQ(QStringLiteral("(is)"), message.signature());
    EXPECT_EQ(101040, received<ErrorStatus>(message).code);
    EXPECT_EQ(status.message, received<ErrorStatus>(message).message);
}

TEST_F(DbusTypesOnTheBus, TakeTheMessageOfAnErrorStatusAsItArrives)
{
    for (const std::int32_t code :
         {std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max(), 0})
    {
        ErrorStatus status;
        status.code = code;
        status.message = QStringLiteral("Ger\u00e4t \u0394 \u26a0");
        const auto arrived = received<ErrorStatus>(sent(status));
        EXPECT_EQ(code, arrived.code);
        EXPECT_EQ(status.message, arrived.message);
    }
}

TEST_F(DbusTypesOnTheBus, KeepCodeAndTextOfADiagCtlEvent)
{
    DiagCtlEvent event;
    event.text = QStringLiteral("undervoltage");
    const QDBusMessage message = sent(event);
    EXPECT_EQ(QStringLiteral("(is)"), message.signature());
    EXPECT_EQ(30000, received<DiagCtlEvent>(message).code);
    EXPECT_EQ(event.text, received<DiagCtlEvent>(message).text);
}

// As a part of something greater an event is written by its own operator, not by its meta type's.
TEST_F(DbusTypesOnTheBus, KeepADiagCtlEventThatIsAPart)
{
    DiagCtlEvent event;
    event.text = QStringLiteral("undervoltage");
    QDBusArgument argument;
    argument << event;
    const QDBusMessage message = sent(argument);
    EXPECT_EQ(QStringLiteral("(is)"), message.signature());
    EXPECT_EQ(30000, received<DiagCtlEvent>(message).code);
    EXPECT_EQ(event.text, received<DiagCtlEvent>(message).text);
}

TEST_F(DbusTypesOnTheBus, KeepAListOfMaps)
{
    const VariantMapList list{
        {{QStringLiteral("id"), 7}, {QStringLiteral("name"), QStringLiteral("a")}},
        {},
        {{QStringLiteral("active"), true}}};
    const QDBusMessage message = sent(list);
    EXPECT_EQ(QStringLiteral("aa{sv}"), message.signature());
    EXPECT_EQ(list, received<VariantMapList>(message));
}

TEST_F(DbusTypesOnTheBus, KeepAMapOfMaps)
{
    const VariantMapMap map{{QStringLiteral("imager"), {{QStringLiteral("exposure"), 5000.5}}},
                            {QStringLiteral("empty"), {}}};
    const QDBusMessage message = sent(map);
    EXPECT_EQ(QStringLiteral("a{sa{sv}}"), message.signature());
    EXPECT_EQ(map, received<VariantMapMap>(message));
}

TEST_F(DbusTypesOnTheBus, KeepAVectorOfUnsignedNumbers)
{
    const QVector<uint> numbers{0U, 1U, std::numeric_limits<uint>::max()};
    const QDBusMessage message = sent(numbers);
    EXPECT_EQ(QStringLiteral("au"), message.signature());
    EXPECT_EQ(numbers, received<QVector<uint>>(message));
}

TEST_F(DbusTypesOnTheBus, KeepTheirSignatureWhenTheyAreEmpty)
{
    EXPECT_EQ(QStringLiteral("aa{sv}"), sent(VariantMapList()).signature());
    EXPECT_EQ(QStringLiteral("a{sa{sv}}"), sent(VariantMapMap()).signature());
    EXPECT_EQ(QStringLiteral("au"), sent(QVector<uint>()).signature());
}

} // namespace orvo
