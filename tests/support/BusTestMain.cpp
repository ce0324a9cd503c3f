// The main of the test programs that use the bus: a private system bus, the device's bus types and
// an application object exist before the first claim.

#include "BusDaemon.h"

#include "dbus-proxy/DbusTypes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>

int main(int argc, char** argv)
{
    testing::InitGoogleMock(&argc, argv);
    if (testing::GTEST_FLAG(list_tests))
    {
        return RUN_ALL_TESTS();
    }
    orvo::test::BusDaemon::ofThisProcess();
    const QCoreApplication application(argc, argv);
    orvo::registerDbusTypes();
    return RUN_ALL_TESTS();
}
