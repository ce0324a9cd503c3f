#include "SignalListener.h"

#include "Eventually.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusConnection>

namespace orvo::test
{

TEST(SignalListener, GetsTheSignalItListensToAndNoOther)
{
    const QString path = QStringLiteral("/");
    const QString interface = QStringLiteral("com.orvo.test");
    QDBusConnection bus = QDBusConnection::systemBus();
    const SignalListener listener(bus, path, interface, QStringLiteral("wanted"));
    for (const char* name : {"other", "wanted"})
    {
        bus.send(QDBusMessage::createSignal(path, interface, QLatin1String(name)) << 7);
    }
    EXPECT_TRUE(eventually(
        [&listener]
        {
            QCoreApplication::processEvents();
            return !listener.messages().isEmpty();
        }));
    ASSERT_EQ(1, listener.messages().size());
    EXPECT_EQ(QStringLiteral("wanted"), listener.messages().first().member());
    EXPECT_EQ(QVariantList{7}, listener.messages().first().arguments());
}

} // namespace orvo::test
