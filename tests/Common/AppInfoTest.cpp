// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "Common/AppInfo.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

namespace lexmira {

namespace {

TEST(AppInfo, ReadsNameAndDerivesExtensionIdentifier)
{
    test::TemporaryBundle bundle;
    const AppInfo info(AppInfo::Component::companion, Bundle(bundle.path()));
    EXPECT_EQ(info.appName, "Lexmira");
    EXPECT_EQ(info.extensionBundleIdentifier, "com.lexmira.companion.ext");
    EXPECT_EQ(info.component, AppInfo::Component::companion);
}

TEST(AppInfo, ExtensionIdentifierIsBundleIdentifierFollowedDirectlyByExt)
{
    test::TemporaryBundle bundle;
    bundle.write(QStringLiteral("Info.json"),
                 R"({"CFBundleName": "X", "CFBundleIdentifier": "Org.Example-App."})");
    const AppInfo info(AppInfo::Component::native, Bundle(bundle.path()));
    EXPECT_EQ(info.extensionBundleIdentifier, "Org.Example-App..ext");
}

TEST(AppInfo, ComponentRawValuesRoundTrip)
{
    EXPECT_EQ(rawValue(AppInfo::Component::companion), "companion");
    EXPECT_EQ(rawValue(AppInfo::Component::native), "native");
    EXPECT_EQ(componentFromRawValue("native"), AppInfo::Component::native);
    EXPECT_EQ(componentFromRawValue("Companion"), std::nullopt);
}

TEST(AppInfoDeathTest, MissingInformationDictionaryStopsTheProcess)
{
    test::TemporaryBundle bundle;
    bundle.remove(QStringLiteral("Info.json"));
    EXPECT_DEATH(AppInfo(AppInfo::Component::companion, Bundle(bundle.path())),
                 "Fatal error: The bundle has no information dictionary");
}

TEST(AppInfoDeathTest, MissingNameStopsTheProcess)
{
    test::TemporaryBundle bundle;
    bundle.write(QStringLiteral("Info.json"), R"({"CFBundleIdentifier": "com.lexmira.companion"})");
    EXPECT_DEATH(AppInfo(AppInfo::Component::companion, Bundle(bundle.path())),
                 "Fatal error: The bundle's information dictionary has no name");
}

TEST(AppInfoDeathTest, NameThatIsNotAStringStopsTheProcess)
{
    test::TemporaryBundle bundle;
    bundle.write(QStringLiteral("Info.json"),
                 R"({"CFBundleName": 7, "CFBundleIdentifier": "com.lexmira.companion"})");
    EXPECT_DEATH(AppInfo(AppInfo::Component::companion, Bundle(bundle.path())),
                 "Fatal error: The bundle's name is not a string");
}

TEST(AppInfoDeathTest, MissingIdentifierStopsTheProcess)
{
    test::TemporaryBundle bundle;
    bundle.write(QStringLiteral("Info.json"), R"({"CFBundleName": "Lexmira"})");
    EXPECT_DEATH(AppInfo(AppInfo::Component::companion, Bundle(bundle.path())),
                 "Fatal error: The bundle has no identifier");
}

} // namespace

} // namespace lexmira
