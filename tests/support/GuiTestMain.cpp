#include "app/Application.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    test::useLoopbackServices();
    // Widgets render offscreen unless a test sets up a real display itself.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    Application application(argc, argv);
    return RUN_ALL_TESTS();
}
