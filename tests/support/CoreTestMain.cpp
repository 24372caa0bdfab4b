// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

using namespace lexmira;

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    // Death tests run in a fresh copy of this process, which is safe with worker threads.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    test::useLoopbackServices();
    QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
