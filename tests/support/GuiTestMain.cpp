// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "app/Application.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

using namespace lexmira;

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    test::useLoopbackServices();
    // Widgets render offscreen, or on the test session's X display for the tests that read back
    // what the X server shows.
#ifdef LEXMIRA_TEST_ON_X11
    qputenv("QT_QPA_PLATFORM", "xcb");
    qputenv("DISPLAY", qgetenv("LEXMIRA_TEST_DISPLAY"));
#else
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
#endif
    Application application(argc, argv);
    return RUN_ALL_TESTS();
}
