// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "Common/EnvType.h"

#include <gtest/gtest.h>

namespace lexmira {

namespace {

TEST(EnvType, RawValuesRoundTrip)
{
    EXPECT_EQ(rawValue(EnvType::prod), "prod");
    EXPECT_EQ(rawValue(EnvType::dev), "dev");
    EXPECT_EQ(envTypeFromRawValue("prod"), EnvType::prod);
    EXPECT_EQ(envTypeFromRawValue("dev"), EnvType::dev);
}

TEST(EnvType, RawValuesAreCaseSensitive)
{
    EXPECT_EQ(envTypeFromRawValue("Prod"), std::nullopt);
    EXPECT_EQ(envTypeFromRawValue("PROD"), std::nullopt);
    EXPECT_EQ(envTypeFromRawValue(""), std::nullopt);
}

TEST(EnvType, OnlyProductionSendsRealEvents)
{
    EXPECT_FALSE(forcesTestEvents(EnvType::prod));
    EXPECT_TRUE(forcesTestEvents(EnvType::dev));
}

} // namespace

} // namespace lexmira
