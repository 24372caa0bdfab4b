// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEvent>

using namespace lexmira;

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    // Death tests run in a fresh copy of this process, which is safe with worker threads.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    test::useLoopbackServices();
    QCoreApplication application(argc, argv);
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
