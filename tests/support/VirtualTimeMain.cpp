#include "VirtualTime.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

/// The main function of a test program that runs in virtual time.
int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    orvo::test::VirtualTime::install();
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
