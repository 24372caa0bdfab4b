// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "support/ChildProcess.h"
#include "support/DevExtensionPeer.h"
#include "support/HttpsTestServer.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

namespace lexmira {

namespace {

using namespace std::chrono_literals;
using test::DevExtensionPeer;

bool instanceRunning()
{
    return QDBusConnection::sessionBus().interface()->isServiceRegistered(
        QStringLiteral("com.lexmira.companion"));
}

std::vector<std::string> dispatched(const DevExtensionPeer& peer)
{
    std::vector<std::string> names;
    for (const auto& call : peer.calls())
        if (call.value("method", "") == "DispatchMessage")
            names.push_back(call.value("name", ""));
    return names;
}

std::size_t callsOf(const DevExtensionPeer& peer, const std::string& method)
{
    std::size_t count = 0;
    for (const auto& call : peer.calls())
        count += call.value("method", "") == method;
    return count;
}

QString dunstctl(const QStringList& arguments)
{
    QProcess process;
    process.start(QStringLiteral("dunstctl"), arguments);
    process.waitForFinished(10000);
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

// The companion and the development peer as two processes on the test's session bus, sharing a
// configuration directory (so the shared suite) of the test's own.
class FirstRun : public ::testing::Test {
protected:
    FirstRun()
    {
        environment = test::childEnvironment();
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), config.path());
        environment.insert(QStringLiteral("LEXMIRA_LOG_HOST"), logServer.hostAndPort());
        environment.insert(QStringLiteral("LEXMIRA_EXTRA_CA_FILE"),
                           test::HttpsTestServer::caFile());
    }

    ~FirstRun() override
    {
        companion.reset();
        test::waitUntil([] { return !instanceRunning(); });
    }

    void startCompanion()
    {
        ASSERT_TRUE(test::waitUntil([] { return !instanceRunning(); }));
        companion = std::make_unique<test::ChildProcess>(test::companionBinary(), QStringList{},
                                                         environment);
        started.start();
        ASSERT_TRUE(companion->running());
    }

    QTemporaryDir config;
    test::HttpsTestServer logServer;
    QProcessEnvironment environment;
    std::unique_ptr<test::ChildProcess> companion;
    QElapsedTimer started;
};

TEST_F(FirstRun, PollsTheExtensionAndAsksForTheLoginTabOnceItIsEnabled)
{
    DevExtensionPeer peer({QStringLiteral("--disabled")}, DevExtensionPeer::defaultName(),
                          environment);
    ASSERT_TRUE(peer.isServing());
    startCompanion();

    // Disabled: polled about once a second, nothing asked of the extension.
    ASSERT_TRUE(test::waitUntil([&] { return callsOf(peer, "GetState") >= 3; }, 20s));
    EXPECT_TRUE(dispatched(peer).empty());

    // Enabled, with no user shared: the enabled panel's sign-in check asks for the login tab,
    // within about a second, and only once.
    ASSERT_TRUE(peer.control({QStringLiteral("enable")}));
    QElapsedTimer sinceEnabled;
    sinceEnabled.start();
    ASSERT_TRUE(test::waitUntil([&] { return !dispatched(peer).empty(); }, 5s));
    EXPECT_LT(sinceEnabled.elapsed(), 2500);
    const auto polled = callsOf(peer, "GetState");
    test::spin(3s);
    EXPECT_GE(callsOf(peer, "GetState"), polled + 2) << "polling goes on";
    EXPECT_EQ(dispatched(peer), std::vector<std::string>{"oauthOpenLoginTab"});
    for (const auto& call : peer.calls())
        if (call.value("method", "") == "DispatchMessage") {
            EXPECT_EQ(call.value("userInfo", "x"), "");
            EXPECT_EQ(call.value("storedRecord", ""), "[true]");
        }
    EXPECT_TRUE(companion->running());
}

TEST_F(FirstRun, ExtensionThatCannotBeReachedIsLoggedOnce)
{
    // No peer at all: every state query fails; one log record, the application keeps running.
    ASSERT_FALSE(DevExtensionPeer::isOwned(DevExtensionPeer::defaultName()));
    startCompanion();
    ASSERT_TRUE(logServer.waitForRequests(1, 20s));
    test::spin(3s);
    ASSERT_EQ(logServer.requests().size(), 1u);
    const auto record = logServer.requests().front().json();
    ASSERT_TRUE(record);
    EXPECT_EQ(record->value("logger", ""), "companion.getExtensionState");
    EXPECT_EQ(record->value("message", "").rfind("Could not get extension state: ", 0), 0u);
    EXPECT_TRUE(companion->running());
}

// The reminder, as a desktop shows it: the notification server of the test display.
TEST_F(FirstRun, DisabledExtensionIsRemindedOnceAtOneMinuteAndOpenOpensTheSettings)
{
    DevExtensionPeer peer({QStringLiteral("--disabled")}, DevExtensionPeer::defaultName(),
                          environment);
    ASSERT_TRUE(peer.isServing());
    dunstctl({QStringLiteral("close-all")});
    dunstctl({QStringLiteral("history-clear")});
    startCompanion();

    qint64 shownAfter = -1;
    ASSERT_TRUE(test::waitUntil(
        [&] {
            if (dunstctl({QStringLiteral("count"), QStringLiteral("displayed")}) !=
                QStringLiteral("1"))
                return false;
            shownAfter = started.elapsed();
            return true;
        },
        90s));
    EXPECT_GE(shownAfter, 59'000) << "the reminder waits a minute";
    EXPECT_EQ(callsOf(peer, "ShowPreferences"), 0u);

    dunstctl({QStringLiteral("action"), QStringLiteral("0")});
    ASSERT_TRUE(test::waitUntil([&] { return callsOf(peer, "ShowPreferences") == 1; }, 10s));

    test::spin(3s);
    // One reminder per launch: the one shown, and no other waiting or in the history.
    EXPECT_EQ(dunstctl({QStringLiteral("count"), QStringLiteral("displayed")}),
              QStringLiteral("1"));
    EXPECT_EQ(dunstctl({QStringLiteral("count"), QStringLiteral("waiting")}), QStringLiteral("0"));
    EXPECT_EQ(dunstctl({QStringLiteral("count"), QStringLiteral("history")}), QStringLiteral("0"));
    EXPECT_TRUE(companion->running());
}

} // namespace

} // namespace lexmira
