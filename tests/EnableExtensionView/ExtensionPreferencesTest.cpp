// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "EnableExtensionView/ExtensionPreferences.h"
#include "EnableExtensionView/ViewTestSupport.h"
#include "fakes/QueuedExtensionBridge.h"
#include "fakes/RecordingAlertPresenter.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

namespace lexmira {

namespace {

using Records = std::vector<std::pair<std::string, std::string>>;

class ExtensionPreferencesTest : public ::testing::Test {
protected:
    test::HttpsTestServer server;
    std::unique_ptr<SharedData> sharedData =
        makeMemorySharedData(std::make_shared<MemoryDataContainer>());
    QueuedExtensionBridge bridge;
    RecordingAlertPresenter alerts;
    ExtensionPreferences preferences{bridge, QStringLiteral("com.lexmira.companion.ext"), alerts,
                                     test::makeLoopbackSkrivo(server, *sharedData)};
};

TEST_F(ExtensionPreferencesTest, AsksTheExtensionToShowItsSettingsPage)
{
    bool completed = false;
    preferences.open([&] { completed = true; });
    ASSERT_TRUE(test::waitUntil([&] { return completed; }));
    EXPECT_EQ(bridge.preferencesShown,
              std::vector<QString>{QStringLiteral("com.lexmira.companion.ext")});
    EXPECT_TRUE(alerts.alerts.empty());
    test::spin(std::chrono::milliseconds(200));
    EXPECT_TRUE(server.requests().empty());
}

TEST_F(ExtensionPreferencesTest, FailureShowsTheAlertThenLogsThenCompletes)
{
    bridge.preferencesErrors.push_back(
        {QStringLiteral("org.example.Error"), QStringLiteral("No browser")});
    bool completedAfterAlert = false;
    preferences.open([&] { completedAfterAlert = alerts.alerts.size() == 1; });
    ASSERT_TRUE(test::waitUntil([&] { return completedAfterAlert; }));
    ASSERT_EQ(alerts.alerts.size(), 1u);
    EXPECT_EQ(alerts.alerts.front(), (Alert{QStringLiteral("Could not open extensions settings"),
                                            QStringLiteral("No browser"),
                                            Alert::Style::critical,
                                            {QStringLiteral("OK")}}));
    ASSERT_TRUE(server.waitForRequests(1));
    test::spin(std::chrono::milliseconds(200));
    EXPECT_EQ(test::logRecords(server),
              (Records{{"companion.openExtensionsSettings",
                        "Could not open extensions settings: No browser"}}));
}

TEST_F(ExtensionPreferencesTest, CompletionRunsOnTheMainThreadAfterTheCallReturns)
{
    bool completed = false;
    preferences.open([&] { completed = true; });
    EXPECT_FALSE(completed);
    ASSERT_TRUE(test::waitUntil([&] { return completed; }));
}

} // namespace

} // namespace lexmira
