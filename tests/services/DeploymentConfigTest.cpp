// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "Common/DeploymentConfig.h"

#include "support/TestSupport.h"

#include <gtest/gtest.h>

namespace lexmira {

namespace {

TEST(ServiceHost, AHostAloneHasNoPort)
{
    EXPECT_EQ(ServiceHost::parse("account.lexmira.example"),
              (ServiceHost{"account.lexmira.example", std::nullopt}));
}

TEST(ServiceHost, AHostMayCarryAPort)
{
    EXPECT_EQ(ServiceHost::parse("127.0.0.1:8443"), (ServiceHost{"127.0.0.1", 8443}));
    EXPECT_EQ(ServiceHost::parse("localhost:1"), (ServiceHost{"localhost", 1}));
    EXPECT_EQ(ServiceHost::parse("[::1]:65535"), (ServiceHost{"::1", 65535}));
    EXPECT_EQ(ServiceHost::parse("[::1]"), (ServiceHost{"::1", std::nullopt}));
}

TEST(ServiceHost, TextWithoutAValidPortIsAllHost)
{
    for (const std::string_view text :
         {"host:", "host:0", "host:65536", "host:8x", "host:-1", "::1", "[::1]:x", "[::1"})
        EXPECT_EQ(ServiceHost::parse(text), (ServiceHost{std::string(text), std::nullopt})) << text;
}

TEST(DeploymentConfig, TheShippedBundleNamesPlaceholderServices)
{
    const auto config =
        DeploymentConfig::load(Bundle(test::builtBundleDir()), QProcessEnvironment());
    EXPECT_EQ(config.accountHost, (ServiceHost{"account.lexmira.example", std::nullopt}));
    EXPECT_EQ(config.analyticsUrl, "https://norv.lexmira.example");
    EXPECT_EQ(config.logHost, (ServiceHost{"log.lexmira.example", std::nullopt}));
    EXPECT_EQ(config.webOrigin, "https://www.lexmira.example");
}

TEST(DeploymentConfig, EnvironmentOverridesWinAndHostsMayCarryPorts)
{
    QProcessEnvironment environment;
    environment.insert(QStringLiteral("LEXMIRA_ACCOUNT_HOST"), QStringLiteral("127.0.0.1:4431"));
    environment.insert(QStringLiteral("LEXMIRA_ANALYTICS_URL"),
                       QStringLiteral("https://127.0.0.1:4432"));
    environment.insert(QStringLiteral("LEXMIRA_LOG_HOST"), QStringLiteral("localhost:4433"));
    environment.insert(QStringLiteral("LEXMIRA_WEB_ORIGIN"), QStringLiteral("https://web.test"));
    const auto config = DeploymentConfig::load(Bundle(test::builtBundleDir()), environment);
    EXPECT_EQ(config.accountHost, (ServiceHost{"127.0.0.1", 4431}));
    EXPECT_EQ(config.analyticsUrl, "https://127.0.0.1:4432");
    EXPECT_EQ(config.logHost, (ServiceHost{"localhost", 4433}));
    EXPECT_EQ(config.webOrigin, "https://web.test");
}

TEST(DeploymentConfig, AnEmptyOverrideIsNoOverride)
{
    QProcessEnvironment environment;
    environment.insert(QStringLiteral("LEXMIRA_LOG_HOST"), QString());
    const auto config = DeploymentConfig::load(Bundle(test::builtBundleDir()), environment);
    EXPECT_EQ(config.logHost, (ServiceHost{"log.lexmira.example", std::nullopt}));
}

TEST(DeploymentConfig, ABundleWithoutServicesStopsTheProcess)
{
    test::TemporaryBundle bundle;
    bundle.remove(QStringLiteral("services.json"));
    EXPECT_DEATH(DeploymentConfig::load(Bundle(bundle.path()), QProcessEnvironment()),
                 "Fatal error: Could not find resource services.json");
}

TEST(DeploymentConfig, AnUndecodableFileStopsTheProcess)
{
    test::TemporaryBundle bundle;
    bundle.write(QStringLiteral("services.json"), "{\"accountHost\": ");
    EXPECT_DEATH(DeploymentConfig::load(Bundle(bundle.path()), QProcessEnvironment()),
                 "Fatal error: Could not decode services.json");
}

TEST(DeploymentConfig, AMissingValueStopsTheProcessUnlessItIsOverridden)
{
    test::TemporaryBundle bundle;
    bundle.write(
        QStringLiteral("services.json"),
        R"({"accountHost":"a.test","analyticsUrl":"https://n.test","webOrigin":"https://w.test"})");
    EXPECT_DEATH(DeploymentConfig::load(Bundle(bundle.path()), QProcessEnvironment()),
                 "Fatal error: Could not decode services.json");

    QProcessEnvironment environment;
    environment.insert(QStringLiteral("LEXMIRA_LOG_HOST"), QStringLiteral("l.test"));
    EXPECT_EQ(DeploymentConfig::load(Bundle(bundle.path()), environment).logHost.host, "l.test");
}

} // namespace

} // namespace lexmira
