// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "util/FatalError.h"

#include <gtest/gtest.h>

namespace lexmira {

namespace {

TEST(FatalError, StopsTheProcessNamingMessageAndSourceFile)
{
    EXPECT_DEATH(fatalError("something is missing"),
                 "Fatal error: something is missing: file .*FatalErrorTest.cpp, line [0-9]+");
}

} // namespace

} // namespace lexmira
