#include "dbus-proxy/DbusTypes.h"

#include <gtest/gtest.h>

#include <QDBusMetaType>
#include <QMetaType>

#include <memory>

namespace orvo
{

namespace
{

/// What the bus library writes for a type of that name; empty when it cannot write it.
std::string signatureOf(const char* typeName)
{
    const char* signature = QDBusMetaType::typeToSignature(QMetaType::type(typeName));
    return signature != nullptr ? signature : "";
}

} // namespace

/// Every claim starts with the types registered, as the daemon does before it touches the bus.
class DbusTypes : public testing::Test
{
protected:
    static void SetUpTestSuite() { registerDbusTypes(); }
};

TEST_F(DbusTypes, GoOverTheBusInTheDevicesWireForm)
{
    EXPECT_EQ("(is)", signatureOf("orvo::ErrorStatus"));
    EXPECT_EQ("(is)", signatureOf("orvo::DiagCtlEvent"));
    EXPECT_EQ("aa{sv}", signatureOf("orvo::VariantMapList"));
    EXPECT_EQ("a{sa{sv}}", signatureOf("orvo::VariantMapMap"));
    EXPECT_EQ("au", signatureOf("QVector<uint>"));
}

TEST_F(DbusTypes, AreTheOnesThatTheProgramUsesUnderTheirNames)
{
    EXPECT_EQ(qMetaTypeId<ErrorStatus>(), QMetaType::type("orvo::ErrorStatus"));
    EXPECT_EQ(qMetaTypeId<VariantMapList>(), QMetaType::type("orvo::VariantMapList"));
    EXPECT_EQ(qMetaTypeId<VariantMapMap>(), QMetaType::type("orvo::VariantMapMap"));
    EXPECT_EQ(qMetaTypeId<QVector<uint>>(), QMetaType::type("QVector<uint>"));
}

TEST_F(DbusTypes, ShareOneMetaTypeForErrorStatusAndDiagCtlEvent)
{
    const int id = QMetaType::type("orvo::DiagCtlEvent");
    EXPECT_EQ(QMetaType::type("orvo::ErrorStatus"), id);
    EXPECT_EQ(id, qMetaTypeId<DiagCtlEvent>());
    EXPECT_EQ("orvo::ErrorStatus", std::string(QMetaType::typeName(id)));
}

TEST_F(DbusTypes, MakeADiagCtlEventOfTheMetaTypeSystemWithTheCodeOfSuccess)
{
    const int id = QMetaType::type("orvo::DiagCtlEvent");
    const auto destroy = [id](void* object)
    {
        QMetaType::destroy(id, object);
    };
    const std::unique_ptr<void, decltype(destroy)> event(QMetaType::create(id), destroy);
    EXPECT_EQ(0, static_cast<DiagCtlEvent*>(event.get())->code);
}

TEST_F(DbusTypes, StayAsTheyAreWhenRegisteredAgain)
{
    const int id = QMetaType::type("orvo::ErrorStatus");
    registerDbusTypes();
    EXPECT_EQ(id, QMetaType::type("orvo::ErrorStatus"));
    EXPECT_EQ(id, QMetaType::type("orvo::DiagCtlEvent"));
}

TEST(DiagCtlEvent, IsAnUnsetEventFromTheStart)
{
    const DiagCtlEvent event;
    EXPECT_EQ(30000, event.code);
    EXPECT_EQ(QString(), event.text);
}

} // namespace orvo
