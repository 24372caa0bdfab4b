// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "extensionhost/ExtensionHealth.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace lexmira {

namespace {

Verdict verdictOf(const std::vector<Check>& checks, const char* id)
{
    for (const Check& check : checks)
        if (check.id == QString::fromLatin1(id))
            return check.verdict;
    ADD_FAILURE() << "no check " << id;
    return Verdict::ok;
}

bool has(const std::vector<Check>& checks, const char* id)
{
    for (const Check& check : checks)
        if (check.id == QString::fromLatin1(id))
            return true;
    return false;
}

class ExtensionHealthTest : public ::testing::Test {
protected:
    Installation installation(bool manifestPresent) const
    {
        Installation result;
        result.browser = QStringLiteral("chromium");
        result.extensionId = QStringLiteral("abcdefghijklmnopabcdefghijklmnop");
        result.manifestPath = QDir(dir_.path()).filePath(QStringLiteral("manifest.json"));
        if (manifestPresent) {
            QFile manifest(result.manifestPath);
            EXPECT_TRUE(manifest.open(QIODevice::WriteOnly));
        }
        return result;
    }

    static BrokerHealth running(std::optional<bool> enabled)
    {
        BrokerHealth broker;
        broker.activatable = true;
        broker.pid = 77;
        broker.connections = std::vector<HostPeer>{};
        broker.enabled = enabled;
        return broker;
    }

    QTemporaryDir dir_;
};

TEST_F(ExtensionHealthTest, NoRegistrationFails)
{
    EXPECT_EQ(verdictOf(ExtensionHealth::checks({}, {}), "extension.installed"), Verdict::fail);
}

TEST_F(ExtensionHealthTest, ARegistrationWithoutItsManifestFails)
{
    EXPECT_EQ(verdictOf(ExtensionHealth::checks({installation(false)}, {}), "extension.installed"),
              Verdict::fail);
    const auto checks = ExtensionHealth::checks({installation(true)}, {});
    EXPECT_EQ(verdictOf(checks, "extension.installed"), Verdict::ok);
    EXPECT_EQ(checks.front().detail, QStringLiteral("Chromium"));
}

TEST_F(ExtensionHealthTest, ABrokerTheBusCannotStartFails)
{
    BrokerHealth broker;
    EXPECT_EQ(verdictOf(ExtensionHealth::checks({}, broker), "extension.activatable"),
              Verdict::fail);
    broker.serviceFiles = {QStringLiteral("/usr/share/dbus-1/services/x.service")};
    EXPECT_EQ(verdictOf(ExtensionHealth::checks({}, broker), "extension.activatable"),
              Verdict::warning);
    broker.activatable = true;
    EXPECT_EQ(verdictOf(ExtensionHealth::checks({}, broker), "extension.activatable"), Verdict::ok);
}

TEST_F(ExtensionHealthTest, WithoutABusOnlyTheRegistrationAndTheBusAreJudged)
{
    BrokerHealth broker;
    broker.busError = QStringLiteral("no bus");
    const auto checks = ExtensionHealth::checks({installation(true)}, broker);
    EXPECT_EQ(verdictOf(checks, "extension.activatable"), Verdict::fail);
    EXPECT_FALSE(has(checks, "extension.connected"));
    EXPECT_FALSE(has(checks, "extension.state"));
}

TEST_F(ExtensionHealthTest, TheExtensionsStateIsReadFromTheBroker)
{
    EXPECT_EQ(verdictOf(ExtensionHealth::checks({}, {}), "extension.state"), Verdict::warning);
    EXPECT_EQ(verdictOf(ExtensionHealth::checks({}, running(false)), "extension.state"),
              Verdict::warning);
    EXPECT_EQ(verdictOf(ExtensionHealth::checks({}, running(true)), "extension.state"),
              Verdict::ok);
    // Running, but not answering.
    EXPECT_EQ(verdictOf(ExtensionHealth::checks({}, running(std::nullopt)), "extension.state"),
              Verdict::fail);
}

TEST_F(ExtensionHealthTest, ConnectedBrowsersAreListed)
{
    BrokerHealth broker = running(true);
    EXPECT_EQ(verdictOf(ExtensionHealth::checks({}, broker), "extension.connected"),
              Verdict::warning);
    broker.connections->push_back({QStringLiteral(":1.5"), QStringLiteral("firefox"),
                                   QStringLiteral("Firefox"), QStringLiteral("ext@lexmira.com"),
                                   1795400000000});
    const auto checks = ExtensionHealth::checks({}, broker);
    EXPECT_EQ(verdictOf(checks, "extension.connected"), Verdict::ok);
    for (const Check& check : checks) {
        if (check.id == QStringLiteral("extension.connected")) {
            EXPECT_TRUE(
                check.detail.startsWith(QStringLiteral("Firefox (extension ext@lexmira.com")))
                << check.detail.toStdString();
        }
    }
    broker.connections.reset();
    EXPECT_EQ(verdictOf(ExtensionHealth::checks({}, broker), "extension.connected"),
              Verdict::warning);
}

} // namespace

} // namespace lexmira
