// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "app/Application.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEvent>

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
    const int result = RUN_ALL_TESTS();
    // What Qt and the code under test left for the next turns of the event loop (zero timers,
    // objects deleted later) runs before the process ends, as it would in a running
    // application, so that the leak check at exit does not count it as lost.
    for (int round = 0; round < 3; ++round) {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return result;
}
