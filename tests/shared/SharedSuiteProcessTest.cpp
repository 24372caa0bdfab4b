// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "SuiteTestSupport.h"
#include "platform/SharedSuite.h"
#include "shared/SharedData.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <QRegularExpression>

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;

class SharedSuiteProcessTest : public ::testing::Test {
protected:
    ScopedConfigHome config;
    SharedData shared{
        std::shared_ptr<SharedSuite>(SharedSuite::open(QString::fromUtf8(appGroupSuiteName))),
        std::shared_ptr<KeychainItems>()};

    QProcessEnvironment peerEnvironment() const
    {
        auto environment = test::childEnvironment();
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), config.path());
        return environment;
    }

    void startPeer(QProcess& peer, const QStringList& arguments) const
    {
        peer.setProcessEnvironment(peerEnvironment());
        peer.start(test::toolBinary(QStringLiteral("shared-suite-peer")), arguments);
    }

    // Runs the peer to its end; its standard output, or a note of how it failed.
    QString runPeer(const QStringList& arguments) const
    {
        QProcess peer;
        startPeer(peer, arguments);
        if (!peer.waitForFinished(60000))
            return QStringLiteral("<peer did not finish>");
        if (peer.exitStatus() != QProcess::NormalExit || peer.exitCode() != 0)
            return QStringLiteral("<peer failed with %1>").arg(peer.exitCode());
        return QString::fromUtf8(peer.readAllStandardOutput()).trimmed();
    }

    // Changes the barrier key and waits for its notification; the suite delivers changes in
    // order, so every notification of an earlier change has arrived when this returns.
    void drain()
    {
        std::atomic<int> seen = 0;
        const auto subscription = shared.oauthOpenLoginTabMessage.subscribe([&](auto) { ++seen; });
        shared.oauthOpenLoginTabMessage.setValue(true);
        ASSERT_TRUE(test::waitUntil([&] { return seen.load() >= 1; }));
    }
};

TEST_F(SharedSuiteProcessTest, SubscriberIsCalledOnceWithTheUserInfoAnotherProcessWrote)
{
    ASSERT_NE(shared.userDefaults, nullptr);
    std::mutex mutex;
    std::vector<std::optional<UserInfo>> seen;
    const auto subscription = shared.userInfo.subscribe([&](auto info) {
        const std::lock_guard lock(mutex);
        seen.push_back(info);
    });

    ASSERT_EQ(runPeer({QStringLiteral("write-user-info"), QStringLiteral("u-peer"),
                       QStringLiteral("c-peer")}),
              QString());
    ASSERT_TRUE(test::waitUntil([&] {
        const std::lock_guard lock(mutex);
        return !seen.empty();
    }));
    drain();
    const std::lock_guard lock(mutex);
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen.front(), (UserInfo{"u-peer", false, false, "c-peer"}));
    EXPECT_EQ(shared.userInfo.value(), (UserInfo{"u-peer", false, false, "c-peer"}));
}

TEST_F(SharedSuiteProcessTest, ObserverInTheWritingProcessIsCalledToo)
{
    std::atomic<int> calls = 0;
    const auto subscription = shared.userInfo.subscribe([&](auto) { ++calls; });
    EXPECT_EQ(runPeer({QStringLiteral("write-user-info"), QStringLiteral("u-own"),
                       QStringLiteral("c-own"), QStringLiteral("observe")}),
              QStringLiteral("own-callbacks=1 userId=u-own"));
    EXPECT_TRUE(test::waitUntil([&] { return calls.load() == 1; }));
}

TEST_F(SharedSuiteProcessTest, NothingArrivesAfterUnsubscribe)
{
    std::atomic<int> calls = 0;
    const auto subscription = shared.userInfo.subscribe([&](auto) { ++calls; });
    subscription->unsubscribe();
    ASSERT_EQ(runPeer({QStringLiteral("write-user-info"), QStringLiteral("u-late"),
                       QStringLiteral("c-late")}),
              QString());
    drain();
    EXPECT_EQ(calls.load(), 0);
    EXPECT_EQ(shared.userInfo.value(), (UserInfo{"u-late", false, false, "c-late"}));
}

TEST_F(SharedSuiteProcessTest, ConcurrentWritersNeverShowATornValue)
{
    constexpr int writes = 1000;
    // Every read must find a complete value, so there is one before the reader starts.
    ASSERT_EQ(runPeer({QStringLiteral("hammer"), QStringLiteral("seed"), QStringLiteral("1")}),
              QString());
    const QString stopFile = config.path() + QStringLiteral("/stop-reading");

    QProcess reader;
    startPeer(reader, {QStringLiteral("read"), stopFile});
    ASSERT_TRUE(reader.waitForStarted());
    QProcess first;
    QProcess second;
    startPeer(first, {QStringLiteral("hammer"), QStringLiteral("A"), QString::number(writes)});
    startPeer(second, {QStringLiteral("hammer"), QStringLiteral("B"), QString::number(writes)});
    EXPECT_TRUE(first.waitForFinished(170000));
    EXPECT_TRUE(second.waitForFinished(170000));
    EXPECT_EQ(first.exitCode(), 0);
    EXPECT_EQ(second.exitCode(), 0);

    QFile stop(stopFile);
    ASSERT_TRUE(stop.open(QIODevice::WriteOnly));
    stop.close();
    ASSERT_TRUE(reader.waitForFinished(30000));
    const QString report = QString::fromUtf8(reader.readAllStandardOutput()).trimmed();
    const auto match =
        QRegularExpression(QStringLiteral("^reads=(\\d+) valid=(\\d+) invalid=(\\d+)$"))
            .match(report);
    ASSERT_TRUE(match.hasMatch()) << report.toStdString();
    EXPECT_GT(match.captured(1).toLong(), 0);
    EXPECT_EQ(match.captured(2), match.captured(1));
    EXPECT_EQ(match.captured(3).toLong(), 0);

    const auto last = shared.userInfo.value();
    ASSERT_TRUE(last);
    EXPECT_TRUE(last->userId == "A-999" || last->userId == "B-999") << last->userId;
}

} // namespace
