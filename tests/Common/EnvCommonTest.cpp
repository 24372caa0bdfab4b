// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "Common/EnvCommon.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

namespace lexmira {

namespace {

TEST(EnvCommon, HoldsTheIdentityOfTheBundle)
{
    test::TemporaryBundle bundle;
    const EnvCommon common{Bundle(bundle.path()), nullptr, nullptr};
    EXPECT_EQ(common.appInfo.appName, "Lexmira");
    EXPECT_EQ(common.appInfo.component, AppInfo::Component::companion);
    EXPECT_EQ(common.envType, EnvType::prod);
    EXPECT_FALSE(common.clientInfo.clientVersion.empty());
}

TEST(EnvCommon, SharedValuesMatchTheExtension)
{
    EXPECT_EQ(keychainService, "com.lexmira.safari.extension");
    EXPECT_EQ(appGroupSuiteName, "Q7R2M5K8T1.group.com.lexmira.safari.extension");
    EXPECT_EQ(keychainAccessGroup, "Q7R2M5K8T1.com.lexmira.safari.extension");
}

TEST(EnvCommonDeathTest, BundleWithoutClientInfoStopsTheProcessNamingEnvCommon)
{
    test::TemporaryBundle bundle;
    bundle.remove(QStringLiteral("clientInfo.json"));
    EXPECT_DEATH((EnvCommon{Bundle(bundle.path()), nullptr, nullptr}), "file Common/EnvCommon.cpp");
}

} // namespace

} // namespace lexmira
