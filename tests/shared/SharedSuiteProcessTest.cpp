// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "SuiteTestSupport.h"
#include "platform/SharedSuite.h"
#include "shared/SharedData.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>

#include <atomic>
#include <cstdio>
#include <ctime>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>

namespace lexmira {

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

    // What a peer started with "read STOPFILE" counted, once told to stop.
    struct ReadReport {
        QString text;
        long reads = 0;
        long valid = 0;
        long invalid = 0;
    };
    // Tells that reader to stop and waits for its report; none when it gave no report.
    static std::optional<ReadReport> stopReader(QProcess& reader, const QString& stopFile)
    {
        QFile stop(stopFile);
        if (!stop.open(QIODevice::WriteOnly))
            return std::nullopt;
        stop.close();
        if (!reader.waitForFinished(30000))
            return std::nullopt;
        ReadReport report;
        report.text = QString::fromUtf8(reader.readAllStandardOutput()).trimmed();
        const auto match =
            QRegularExpression(QStringLiteral("^reads=(\\d+) valid=(\\d+) invalid=(\\d+)$"))
                .match(report.text);
        if (!match.hasMatch())
            return std::nullopt;
        report.reads = match.captured(1).toLong();
        report.valid = match.captured(2).toLong();
        report.invalid = match.captured(3).toLong();
        return report;
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

    const auto report = stopReader(reader, stopFile);
    ASSERT_TRUE(report) << reader.readAllStandardError().toStdString();
    EXPECT_GT(report->reads, 0);
    EXPECT_EQ(report->valid, report->reads);
    EXPECT_EQ(report->invalid, 0);

    const auto last = shared.userInfo.value();
    ASSERT_TRUE(last);
    EXPECT_TRUE(last->userId == "A-999" || last->userId == "B-999") << last->userId;
}

// Two writers killed with SIGKILL at random points, again and again, while a third process reads:
// every read finds a complete value, the value left after each kill is a complete one, and the
// temporary files of the killed writers are cleared away once they are old.
TEST_F(SharedSuiteProcessTest, WritersKilledAtRandomPointsNeverLeaveATornValue)
{
    constexpr int totalWrites = 10'000;
    constexpr int writesPerRun = 400;
    ASSERT_EQ(runPeer({QStringLiteral("hammer"), QStringLiteral("seed"), QStringLiteral("1")}),
              QString());
    const QString stopFile = config.path() + QStringLiteral("/stop-reading");
    QProcess reader;
    startPeer(reader, {QStringLiteral("read"), stopFile});
    ASSERT_TRUE(reader.waitForStarted());

    const auto seed = std::random_device()();
    std::mt19937 random(seed);
    SCOPED_TRACE("seed " + std::to_string(seed));
    int completed = 0;
    int rounds = 0;
    int kills = 0;
    while (completed < totalWrites) {
        ++rounds;
        QProcess writers[2];
        int killAfter[2];
        for (int i = 0; i < 2; ++i) {
            killAfter[i] = std::uniform_int_distribution<int>(1, writesPerRun)(random);
            startPeer(writers[i],
                      {QStringLiteral("hammer"), QStringLiteral("R%1W%2").arg(rounds).arg(i),
                       QString::number(writesPerRun), QStringLiteral("progress")});
        }
        int written[2] = {0, 0};
        for (int i = 0; i < 2; ++i) {
            QProcess& writer = writers[i];
            ASSERT_TRUE(test::waitUntil(
                [&] {
                    written[i] += int(writer.readAllStandardOutput().count('w'));
                    return written[i] >= killAfter[i] || writer.state() == QProcess::NotRunning;
                },
                60s));
            if (writer.state() != QProcess::NotRunning) {
                ::kill(pid_t(writer.processId()), SIGKILL);
                ++kills;
            }
        }
        for (int i = 0; i < 2; ++i) {
            if (writers[i].state() != QProcess::NotRunning) {
                ASSERT_TRUE(writers[i].waitForFinished(30'000));
            }
            written[i] += int(writers[i].readAllStandardOutput().count('w'));
            completed += written[i];
        }
        const auto value = shared.userInfo.value();
        ASSERT_TRUE(value) << "round " << rounds;
        EXPECT_EQ(value->containerId.size(), 32u * 1024 + value->userId.size() + 3);
    }

    const auto report = stopReader(reader, stopFile);
    ASSERT_TRUE(report) << reader.readAllStandardError().toStdString();
    EXPECT_GT(report->reads, 0);
    EXPECT_EQ(report->invalid, 0);
    std::printf("[ figures  ] %d writes completed in %d rounds, %d writers killed, %ld reads all "
                "valid\n",
                completed, rounds, kills, report->reads);

    // What the killed writers left behind, made old, goes when the suite is next opened.
    QDir root(config.suiteRoot());
    const auto leftovers = root.entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot);
    for (const QString& name : leftovers) {
        if (!name.startsWith(QLatin1Char('.')))
            continue;
        const timespec old{std::time(nullptr) - 3600, 0};
        const timespec times[2] = {old, old};
        ::utimensat(AT_FDCWD, QFile::encodeName(root.filePath(name)).constData(), times, 0);
    }
    EXPECT_NE(SharedSuite::open(QString::fromUtf8(appGroupSuiteName)), nullptr);
    const auto remaining = root.entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot);
    for (const QString& name : remaining)
        EXPECT_FALSE(name.startsWith(QLatin1Char('.'))) << name.toStdString();
}

} // namespace

} // namespace lexmira
