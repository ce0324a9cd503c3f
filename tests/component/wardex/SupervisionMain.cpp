// The main of the programs that test the machines: a private system bus and virtual time.

#include "BusDaemon.h"
#include "VirtualTime.h"

#include "dbus-proxy/DbusTypes.h"

#include <QCoreApplication>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    testing::InitGoogleMock(&argc, argv);
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    if (testing::GTEST_FLAG(list_tests))
    {
        return RUN_ALL_TESTS();
    }
    orvo::test::BusDaemon::ofThisProcess();
    orvo::test::VirtualTime::install();
    const QCoreApplication application(argc, argv);
    orvo::registerDbusTypes();
    return RUN_ALL_TESTS();
}
