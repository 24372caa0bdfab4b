// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "EnableExtensionView/EnableExtensionNotification.h"
#include "EnableExtensionView/ExtensionPreferences.h"
#include "EnableExtensionView/ViewTestSupport.h"
#include "fakes/QueuedExtensionBridge.h"
#include "fakes/RecordingAlertPresenter.h"
#include "fakes/RecordingUserNotifications.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

namespace lexmira {

namespace {

using namespace std::chrono_literals;

class Reminder : public ::testing::Test {
protected:
    std::unique_ptr<EnableExtensionNotification> start(std::chrono::milliseconds delay = 50ms)
    {
        return std::make_unique<EnableExtensionNotification>(
            bridge, QStringLiteral("com.lexmira.companion.ext"), notifications, preferences, delay);
    }

    test::HttpsTestServer server;
    std::unique_ptr<SharedData> sharedData =
        makeMemorySharedData(std::make_shared<MemoryDataContainer>());
    QueuedExtensionBridge bridge;
    RecordingAlertPresenter alerts;
    RecordingUserNotifications notifications;
    ExtensionPreferences preferences{bridge, QStringLiteral("com.lexmira.companion.ext"), alerts,
                                     test::makeLoopbackSkrivo(server, *sharedData)};
};

TEST_F(Reminder, ApplicationWaitsOneMinute)
{
    EXPECT_EQ(EnableExtensionNotification::defaultDelay, 60s);
}

TEST_F(Reminder, DisabledExtensionAtTheMarkGetsOneReminder)
{
    bridge.enabled = false;
    const auto reminder = start();
    test::spin(20ms);
    EXPECT_TRUE(bridge.stateQueries.empty()) << "the check waits for its delay";
    ASSERT_TRUE(test::waitUntil([&] { return notifications.delivered.size() == 1; }));
    const auto& shown = notifications.delivered.front();
    EXPECT_EQ(shown.title, QStringLiteral("Lexmira is disabled"));
    EXPECT_EQ(shown.informativeText, QStringLiteral("Click Open to enable it in Safari settings"));
    EXPECT_EQ(shown.actionButtonTitle, QStringLiteral("Open"));
    EXPECT_TRUE(shown.defaultSound);
    EXPECT_EQ(bridge.stateQueries,
              std::vector<QString>{QStringLiteral("com.lexmira.companion.ext")});
}

TEST_F(Reminder, TheReminderNamesTheBrowserTheExtensionRunsIn)
{
    bridge.enabled = false;
    bridge.browserName = QStringLiteral("Firefox");
    const auto reminder = start(10ms);
    ASSERT_TRUE(test::waitUntil([&] { return notifications.delivered.size() == 1; }));
    const auto& shown = notifications.delivered.front();
    EXPECT_EQ(shown.title, QStringLiteral("Lexmira is disabled"));
    EXPECT_EQ(shown.informativeText, QStringLiteral("Click Open to enable it in Firefox settings"));
    EXPECT_EQ(shown.actionButtonTitle, QStringLiteral("Open"));
    EXPECT_EQ(bridge.browserNameQueries,
              std::vector<QString>{QStringLiteral("com.lexmira.companion.ext")});
}

TEST_F(Reminder, AnEnabledExtensionIsNotAskedForItsBrowser)
{
    const auto reminder = start(10ms);
    ASSERT_TRUE(test::waitUntil([&] { return bridge.stateQueries.size() == 1; }));
    test::spin(100ms);
    EXPECT_TRUE(bridge.browserNameQueries.empty());
    EXPECT_TRUE(notifications.delivered.empty());
}

TEST_F(Reminder, ChecksOnlyOnce)
{
    bridge.enabled = false;
    const auto reminder = start(10ms);
    ASSERT_TRUE(test::waitUntil([&] { return notifications.delivered.size() == 1; }));
    test::spin(200ms);
    EXPECT_EQ(bridge.stateQueries.size(), 1u);
    EXPECT_EQ(notifications.delivered.size(), 1u);
}

TEST_F(Reminder, EnabledExtensionAtTheMarkGetsNoReminder)
{
    bridge.enabled = true;
    const auto reminder = start();
    ASSERT_TRUE(test::waitUntil([&] { return bridge.stateQueries.size() == 1; }));
    test::spin(100ms);
    EXPECT_TRUE(notifications.delivered.empty());
}

TEST_F(Reminder, StateErrorGetsNoReminder)
{
    bridge.stateErrors.push_back(
        {QStringLiteral("org.freedesktop.DBus.Error.ServiceUnknown"), QStringLiteral("not there")});
    const auto reminder = start();
    ASSERT_TRUE(test::waitUntil([&] { return bridge.stateQueries.size() == 1; }));
    test::spin(100ms);
    EXPECT_TRUE(notifications.delivered.empty());
}

TEST_F(Reminder, NoStateGetsNoReminder)
{
    bridge.enabled = std::nullopt;
    const auto reminder = start();
    ASSERT_TRUE(test::waitUntil([&] { return bridge.stateQueries.size() == 1; }));
    test::spin(100ms);
    EXPECT_TRUE(notifications.delivered.empty());
}

TEST_F(Reminder, ActivatingTheReminderOpensTheExtensionSettings)
{
    bridge.enabled = false;
    const auto reminder = start(10ms);
    ASSERT_TRUE(test::waitUntil([&] { return notifications.delivered.size() == 1; }));
    notifications.activate();
    ASSERT_TRUE(test::waitUntil([&] { return bridge.preferencesShown.size() == 1; }));
    EXPECT_TRUE(alerts.alerts.empty());
}

TEST_F(Reminder, SettingsThatCannotBeOpenedShowTheAlertAndLog)
{
    bridge.enabled = false;
    bridge.preferencesErrors.push_back(
        {QStringLiteral("org.example.Failed"), QStringLiteral("Nope")});
    const auto reminder = start(10ms);
    ASSERT_TRUE(test::waitUntil([&] { return notifications.delivered.size() == 1; }));
    notifications.activate();
    ASSERT_TRUE(test::waitUntil([&] { return alerts.alerts.size() == 1; }));
    EXPECT_EQ(alerts.alerts.front().messageText,
              QStringLiteral("Could not open extensions settings"));
    EXPECT_EQ(alerts.alerts.front().informativeText, QStringLiteral("Nope"));
    ASSERT_TRUE(server.waitForRequests(1));
    EXPECT_EQ(test::logRecords(server).front().first, "companion.openExtensionsSettings");
}

} // namespace

} // namespace lexmira
