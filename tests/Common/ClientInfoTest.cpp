// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "Common/EnvCommon.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

namespace lexmira {

namespace {

TEST(ClientInfo, DecodesTheBundleResource)
{
    test::TemporaryBundle bundle;
    bundle.write(QStringLiteral("clientInfo.json"),
                 R"({"clientType": "t", "clientVersion": "1.2", "norvClientType": "n"})");
    EXPECT_EQ(loadClientInfo(Bundle(bundle.path())), (ClientInfo{"t", "1.2", "n"}));
}

TEST(ClientInfo, ExtraKeyStillDecodes)
{
    test::TemporaryBundle bundle;
    bundle.write(QStringLiteral("clientInfo.json"),
                 R"({"clientType": "t", "clientVersion": "1", "norvClientType": "n", "x": [1]})");
    EXPECT_EQ(loadClientInfo(Bundle(bundle.path())).norvClientType, "n");
}

TEST(ClientInfo, EncodesKeysInFieldOrder)
{
    const nlohmann::json json = ClientInfo{"t", "1", "n"};
    EXPECT_EQ(json.dump(), R"({"clientType":"t","clientVersion":"1","norvClientType":"n"})");
}

TEST(ClientInfoDeathTest, MissingNorvClientTypeStopsTheProcessNamingEnvCommon)
{
    test::TemporaryBundle bundle;
    bundle.write(QStringLiteral("clientInfo.json"), R"({"clientType": "t", "clientVersion": "1"})");
    EXPECT_DEATH(loadClientInfo(Bundle(bundle.path())),
                 "Fatal error: Could not decode clientInfo.json.*file Common/EnvCommon.cpp");
}

TEST(ClientInfoDeathTest, WrongTypeStopsTheProcess)
{
    test::TemporaryBundle bundle;
    bundle.write(QStringLiteral("clientInfo.json"),
                 R"({"clientType": 1, "clientVersion": "1", "norvClientType": "n"})");
    EXPECT_DEATH(loadClientInfo(Bundle(bundle.path())), "file Common/EnvCommon.cpp");
}

TEST(ClientInfoDeathTest, MissingResourceStopsTheProcessNamingEnvCommon)
{
    test::TemporaryBundle bundle;
    bundle.remove(QStringLiteral("clientInfo.json"));
    EXPECT_DEATH(loadClientInfo(Bundle(bundle.path())),
                 "Fatal error: Could not find resource clientInfo.json.*file Common/EnvCommon.cpp");
}

TEST(ClientInfoDeathTest, TextThatIsNotJsonStopsTheProcess)
{
    test::TemporaryBundle bundle;
    bundle.write(QStringLiteral("clientInfo.json"), "\xff\xfe not json");
    EXPECT_DEATH(loadClientInfo(Bundle(bundle.path())), "file Common/EnvCommon.cpp");
}

} // namespace

} // namespace lexmira
