// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "services/NorvClient.h"

#include "fakes/CountingHttpClient.h"
#include "fakes/MemoryUserDefaults.h"
#include "support/HttpsTestServer.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QProcess>
#include <QRegularExpression>
#include <QThread>
#include <QTimeZone>

#include <ctime>
#include <mutex>

namespace lexmira {

namespace {

using test::HttpsTestServer;
using Json = nlohmann::ordered_json;

const UserInfo userU{"U", false, false, "K"};

class NorvClientTest : public ::testing::Test {
protected:
    NorvClientTest()
    {
        qputenv("LEXMIRA_EXTRA_CA_FILE", HttpsTestServer::caFile().toUtf8());
        transport = std::make_shared<CountingHttpClient>(HttpClient::create());
    }

    std::unique_ptr<NorvClient> makeClient(bool forceIsTest = false, bool isPingDisabled = true)
    {
        NorvClient::Platform platform;
        platform.httpClient = transport;
        platform.userDefaults = &userDefaults;
        platform.now = [this] { return now; };
        platform.randomMinute = [this] { return minute; };
        return std::make_unique<NorvClient>("https://www.lexmira.test", server.url(),
                                            "lexmiraCompanionLinux", "1.0.0", forceIsTest,
                                            isPingDisabled, platform);
    }

    // The single event of each request received, with its batch number.
    std::map<std::int64_t, Json> eventsByBatch() const
    {
        std::map<std::int64_t, Json> events;
        for (const auto& request : server.requests()) {
            const auto body = request.json();
            EXPECT_TRUE(body);
            EXPECT_EQ(body->at("events").size(), 1u);
            events[body->at("batchId").get<std::int64_t>()] = body->at("events").at(0);
        }
        return events;
    }

    std::optional<QDateTime> storedNextPingDate() const
    {
        const QVariant stored = userDefaults.object(QStringLiteral("norv.nextPingDate"));
        if (stored.typeId() != QMetaType::QDateTime)
            return std::nullopt;
        return stored.toDateTime();
    }

    HttpsTestServer server;
    std::shared_ptr<CountingHttpClient> transport;
    MemoryUserDefaults userDefaults;
    QDateTime now = QDateTime(QDate(2024, 5, 14), QTime(12, 0), QTimeZone("Europe/Berlin"));
    int minute = 17;
};

// Collects completions and the thread each ran on.
class Completions {
public:
    NorvClient::Completion make()
    {
        return [this](bool accepted) {
            const std::lock_guard lock(mutex_);
            results_.emplace_back(accepted, QThread::currentThread());
        };
    }
    std::size_t size() const
    {
        const std::lock_guard lock(mutex_);
        return results_.size();
    }
    std::pair<bool, QThread*> at(std::size_t i) const
    {
        const std::lock_guard lock(mutex_);
        return results_.at(i);
    }
    bool waitFor(std::size_t count)
    {
        return test::waitUntil([this, count] { return size() >= count; });
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::pair<bool, QThread*>> results_;
};

TEST_F(NorvClientTest, AnEventIsPostedAsABatchOfOneWithTheClientsIdentity)
{
    auto client = makeClient();
    client->setUserInfo(userU);
    client->track("companion/app-start", Json{{"object", "app"}});

    ASSERT_TRUE(server.waitForRequests(1));
    const auto& request = server.requests().front();
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.target, "/");
    EXPECT_EQ(request.header("Origin"), "https://www.lexmira.test");
    EXPECT_EQ(request.header("Content-Type"), "application/json");
    EXPECT_EQ(request.header("Cookie"), std::nullopt);
    EXPECT_EQ(request.body, "{\"client\":\"lexmiraCompanionLinux\",\"clientVersion\":\"1.0.0\","
                            "\"containerId\":\"K\",\"instanceId\":\"" +
                                QByteArray::fromStdString(client->instanceId()) +
                                "\",\"batchId\":1,\"events\":[{\"object\":\"app\","
                                "\"eventName\":\"lexmiraCompanionLinux\\/companion\\/app-start\","
                                "\"userId\":\"U\",\"isTest\":false}]}");
}

TEST_F(NorvClientTest, BatchNumbersStartAtOneAndIncrease)
{
    auto client = makeClient();
    client->setUserInfo(userU);
    client->track("first", std::nullopt);
    client->track("second", std::nullopt);
    client->track("third", std::nullopt);
    EXPECT_EQ(client->batchId(), 3);

    ASSERT_TRUE(server.waitForRequests(3));
    const auto events = eventsByBatch();
    ASSERT_EQ(events.size(), 3u);
    EXPECT_EQ(events.at(1).at("eventName"), "lexmiraCompanionLinux/first");
    EXPECT_EQ(events.at(2).at("eventName"), "lexmiraCompanionLinux/second");
    EXPECT_EQ(events.at(3).at("eventName"), "lexmiraCompanionLinux/third");
}

TEST_F(NorvClientTest, AFlushOfThreeQueuedEventsUsesThreeConsecutiveNumbersInQueueOrder)
{
    auto client = makeClient();
    client->track("a", std::nullopt);
    client->track("b", std::nullopt);
    client->track("c", std::nullopt);
    EXPECT_EQ(client->queue().size(), 3u);
    EXPECT_EQ(transport->sent(), 0);

    client->setUserInfo(userU);
    EXPECT_TRUE(client->queue().empty());
    ASSERT_TRUE(server.waitForRequests(3));
    const auto events = eventsByBatch();
    EXPECT_EQ(events.at(1).at("eventName"), "lexmiraCompanionLinux/a");
    EXPECT_EQ(events.at(2).at("eventName"), "lexmiraCompanionLinux/b");
    EXPECT_EQ(events.at(3).at("eventName"), "lexmiraCompanionLinux/c");
}

TEST_F(NorvClientTest, WithoutAUserThe51stEventIsDroppedAndTheFirst50AreSentInOrder)
{
    auto client = makeClient();
    for (int i = 0; i < 51; ++i)
        client->track("e" + std::to_string(i), Json{{"n", i}});
    ASSERT_EQ(client->queue().size(), 50u);
    EXPECT_EQ(client->queue().back().name, "e49");

    client->setUserInfo(userU);
    ASSERT_TRUE(server.waitForRequests(50));
    EXPECT_EQ(transport->sent(), 50);
    test::spin(std::chrono::milliseconds(200));
    EXPECT_EQ(server.requests().size(), 50u);
    const auto events = eventsByBatch();
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(events.at(i + 1).at("eventName"), "lexmiraCompanionLinux/e" + std::to_string(i));
        EXPECT_EQ(events.at(i + 1).at("n"), i);
    }
}

TEST_F(NorvClientTest, TrackWithACompletionAndNoUserReportsFalseAtOnceAndQueuesNothing)
{
    auto client = makeClient();
    std::optional<bool> accepted;
    client->track("x", std::nullopt, [&accepted](bool result) { accepted = result; });

    EXPECT_EQ(accepted, false);
    EXPECT_TRUE(client->queue().empty());
    EXPECT_EQ(transport->sent(), 0);
}

TEST_F(NorvClientTest, ForgettingTheUserKeepsTheQueueAndSendsNothing)
{
    auto client = makeClient();
    client->track("a", std::nullopt);
    client->setUserInfo(std::nullopt);
    EXPECT_EQ(client->queue().size(), 1u);
    client->send("b", std::nullopt, [](bool) { ADD_FAILURE() << "no completion without a user"; });
    EXPECT_EQ(transport->sent(), 0);
    EXPECT_EQ(client->batchId(), 0);
}

TEST_F(NorvClientTest, PropsNamedEventNameUserIdOrIsTestAreOverwritten)
{
    auto client = makeClient();
    client->setUserInfo(userU);
    client->track(
        "x", Json{{"eventName", "mine"}, {"userId", "me"}, {"isTest", "perhaps"}, {"keep", 1}});

    ASSERT_TRUE(server.waitForRequests(1));
    const auto event = server.requests().front().json()->at("events").at(0);
    EXPECT_EQ(event, (Json{{"eventName", "lexmiraCompanionLinux/x"},
                           {"userId", "U"},
                           {"isTest", false},
                           {"keep", 1}}));
}

TEST_F(NorvClientTest, ForceIsTestMarksEventsOfANonTestUserAsTest)
{
    auto client = makeClient(true);
    client->setUserInfo(userU);
    EXPECT_EQ(client->makeEventObject("x", std::nullopt).at("isTest"), true);

    auto plain = makeClient(false);
    plain->setUserInfo(userU);
    EXPECT_EQ(plain->makeEventObject("x", std::nullopt).at("isTest"), false);
    plain->setUserInfo(UserInfo{"T", true, false, "K"});
    EXPECT_EQ(plain->makeEventObject("x", std::nullopt).at("isTest"), true);
}

TEST_F(NorvClientTest, OkAnswerReportsTrueOnTheWorkerThread)
{
    auto client = makeClient();
    client->setUserInfo(userU);
    Completions completions;
    client->track("x", std::nullopt, completions.make());

    ASSERT_TRUE(completions.waitFor(1));
    EXPECT_TRUE(completions.at(0).first);
    EXPECT_NE(completions.at(0).second, QCoreApplication::instance()->thread());
}

TEST_F(NorvClientTest, NoContentAnswerReportsFalse)
{
    server.respondWith(test::httpStatus(204));
    auto client = makeClient();
    client->setUserInfo(userU);
    Completions completions;
    client->track("x", std::nullopt, completions.make());

    ASSERT_TRUE(completions.waitFor(1));
    EXPECT_FALSE(completions.at(0).first);
}

TEST_F(NorvClientTest, ErrorStatusesAndTransportFailuresReportFalse)
{
    auto client = makeClient();
    client->setUserInfo(userU);
    Completions completions;
    server.respondWith(test::httpStatus(201));
    client->track("x", std::nullopt, completions.make());
    ASSERT_TRUE(completions.waitFor(1));
    server.respondWith(test::httpStatus(500));
    client->track("x", std::nullopt, completions.make());
    ASSERT_TRUE(completions.waitFor(2));
    HttpsTestServer::Response garbage;
    garbage.raw = "garbage\r\n\r\n";
    server.respondWith(garbage);
    client->track("x", std::nullopt, completions.make());
    ASSERT_TRUE(completions.waitFor(3));

    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_FALSE(completions.at(i).first) << i;
}

TEST_F(NorvClientTest, AnEventThatCannotBeEncodedReportsFalseLaterOnTheMainThread)
{
    auto client = makeClient();
    client->setUserInfo(userU);
    Completions completions;
    client->track("x", Json{{"broken", std::string("\xff")}}, completions.make());

    EXPECT_EQ(completions.size(), 0u);
    ASSERT_TRUE(completions.waitFor(1));
    EXPECT_FALSE(completions.at(0).first);
    EXPECT_EQ(completions.at(0).second, QCoreApplication::instance()->thread());
    EXPECT_EQ(transport->sent(), 0);
    EXPECT_EQ(client->batchId(), 1);
}

TEST_F(NorvClientTest, WithThePingDisabledNothingIsQueuedOrSentAutomatically)
{
    auto client = makeClient(false, true);
    EXPECT_TRUE(client->queue().empty());
    client->ping(false);
    client->ping(true);
    EXPECT_TRUE(client->queue().empty());
    client->setUserInfo(userU);
    client->setUserInfo(UserInfo{"V", false, false, "K"});
    client->track("x", std::nullopt);

    EXPECT_EQ(transport->sent(), 1);
    ASSERT_TRUE(server.waitForRequests(1));
    EXPECT_EQ(client->nextPingDate(), std::nullopt);
}

TEST_F(NorvClientTest, AnEventNamedPingStillMovesTheNextPingDateWhenThePingIsDisabled)
{
    auto client = makeClient(false, true);
    client->setUserInfo(userU);
    client->track("ping", Json{{"action", "ping"}});

    const QDateTime expected(QDate(2024, 5, 15), QTime(3, 17), QTimeZone("Europe/Berlin"));
    EXPECT_EQ(client->nextPingDate(), expected);
    EXPECT_EQ(storedNextPingDate(), expected);
    ASSERT_TRUE(server.waitForRequests(1));
    EXPECT_EQ(server.requests().front().json()->at("events").at(0).at("eventName"),
              "lexmiraCompanionLinux/ping");
}

TEST_F(NorvClientTest, ADuePingWaitsInTheQueueUntilAUserIsKnown)
{
    auto client = makeClient(false, false);
    ASSERT_EQ(client->queue().size(), 1u);
    EXPECT_EQ(client->queue().front(), (NorvClient::Event{"ping", Json{{"action", "ping"}}}));
    EXPECT_EQ(client->nextPingDate(), std::nullopt);

    client->setUserInfo(userU);
    ASSERT_TRUE(server.waitForRequests(1));
    EXPECT_EQ(server.requests().front().json()->at("events").at(0),
              (Json{{"action", "ping"},
                    {"eventName", "lexmiraCompanionLinux/ping"},
                    {"userId", "U"},
                    {"isTest", false}}));
    EXPECT_EQ(storedNextPingDate(),
              QDateTime(QDate(2024, 5, 15), QTime(3, 17), QTimeZone("Europe/Berlin")));
}

TEST_F(NorvClientTest, TrackCatchesUpOnADuePingFirst)
{
    userDefaults.setObject(QVariant(now.addSecs(-60)), QStringLiteral("norv.nextPingDate"));
    auto client = makeClient(false, false);
    ASSERT_EQ(client->queue().size(), 1u);
    client->setUserInfo(userU);
    ASSERT_TRUE(server.waitForRequests(1));

    now = now.addDays(1);
    client->track("x", std::nullopt);
    ASSERT_TRUE(server.waitForRequests(3));
    const auto events = eventsByBatch();
    EXPECT_EQ(events.at(2).at("eventName"), "lexmiraCompanionLinux/ping");
    EXPECT_EQ(events.at(3).at("eventName"), "lexmiraCompanionLinux/x");
}

TEST_F(NorvClientTest, ChangingFromOneUserToAnotherForcesAPing)
{
    userDefaults.setObject(QVariant(now.addSecs(3600)), QStringLiteral("norv.nextPingDate"));
    auto client = makeClient(false, false);
    EXPECT_TRUE(client->queue().empty());
    client->setUserInfo(UserInfo{"A", false, true, "K"});
    client->setUserInfo(UserInfo{"B", false, false, "K"});

    EXPECT_EQ(transport->sent(), 1);
    ASSERT_TRUE(server.waitForRequests(1));
    EXPECT_EQ(server.requests().front().json()->at("events").at(0).at("userId"), "B");
    EXPECT_EQ(server.requests().front().json()->at("events").at(0).at("action"), "ping");
}

TEST_F(NorvClientTest, NoForcedPingBetweenTwoAnonymousUsersNorFromNoUserNorForTheSameUser)
{
    userDefaults.setObject(QVariant(now.addSecs(3600)), QStringLiteral("norv.nextPingDate"));
    auto client = makeClient(false, false);
    client->setUserInfo(UserInfo{"A", false, true, "K"});
    client->setUserInfo(UserInfo{"B", false, true, "K"});
    client->setUserInfo(UserInfo{"B", false, false, "K"});
    client->setUserInfo(std::nullopt);
    client->setUserInfo(UserInfo{"C", false, false, "K"});

    test::spin(std::chrono::milliseconds(300));
    EXPECT_EQ(transport->sent(), 0);
}

TEST_F(NorvClientTest, AStoredValueThatIsNotADateCountsAsNone)
{
    userDefaults.setObject(QVariant(QStringLiteral("2030-01-01T00:00:00Z")),
                           QStringLiteral("norv.nextPingDate"));
    auto client = makeClient(false, false);
    EXPECT_EQ(client->nextPingDate(), std::nullopt);
    EXPECT_EQ(client->queue().size(), 1u);
}

TEST_F(NorvClientTest, AStoredDateIsReadAtConstruction)
{
    const QDateTime stored = now.addSecs(5 * 3600);
    userDefaults.setObject(QVariant(stored), QStringLiteral("norv.nextPingDate"));
    auto client = makeClient(false, false);
    EXPECT_EQ(client->nextPingDate(), stored);
    EXPECT_TRUE(client->queue().empty());
}

TEST_F(NorvClientTest, TheNextPingDateSurvivesARestartInTheRealSettings)
{
    const auto settings = UserDefaults::standard(QStringLiteral("com.lexmira.companion.test"));
    NorvClient::Platform platform;
    platform.httpClient = transport;
    platform.userDefaults = settings.get();
    platform.now = [this] { return now; };
    platform.randomMinute = [] { return 42; };
    {
        NorvClient client("https://www.lexmira.test", server.url(), "t", "1", false, true,
                          platform);
        client.setUserInfo(userU);
        client.send("ping", std::nullopt, {});
    }
    const auto reopened = UserDefaults::standard(QStringLiteral("com.lexmira.companion.test"));
    platform.userDefaults = reopened.get();
    NorvClient restarted("https://www.lexmira.test", server.url(), "t", "1", false, true, platform);
    EXPECT_EQ(restarted.nextPingDate(),
              QDateTime(QDate(2024, 5, 15), QTime(3, 42), QTimeZone("Europe/Berlin")));
    EXPECT_EQ(reopened->object(QStringLiteral("norv.nextPingDate")).typeId(), QMetaType::QDateTime);
}

TEST_F(NorvClientTest, TheNextPingDateIsReadBackByAnotherProcess)
{
    const QString bundleId = QStringLiteral("com.lexmira.companion.test2");
    const auto settings = UserDefaults::standard(bundleId);
    NorvClient::Platform platform;
    platform.httpClient = transport;
    platform.userDefaults = settings.get();
    platform.now = [this] { return now; };
    platform.randomMinute = [] { return 42; };
    {
        NorvClient client("https://www.lexmira.test", server.url(), "t", "1", false, true,
                          platform);
        client.setUserInfo(userU);
        client.send("ping", std::nullopt, {});
    }
    QProcess probe;
    probe.start(test::toolBinary(QStringLiteral("lexmira-settings-probe")),
                {bundleId, QStringLiteral("norv.nextPingDate")});
    ASSERT_TRUE(probe.waitForFinished(20'000));
    ASSERT_EQ(probe.exitCode(), 0);
    const QByteArray printed = probe.readAllStandardOutput().trimmed();
    ASSERT_TRUE(printed.startsWith("QDateTime ")) << printed.toStdString();
    EXPECT_EQ(QDateTime::fromString(QString::fromUtf8(printed.mid(10)), Qt::ISODateWithMs),
              QDateTime(QDate(2024, 5, 15), QTime(3, 42), QTimeZone("Europe/Berlin")))
        << printed.toStdString();
}

TEST_F(NorvClientTest, InstanceIdentifiersAreEightAlphanumericsNewPerClient)
{
    const auto first = makeClient();
    const auto second = makeClient();
    const QRegularExpression pattern(QStringLiteral("^[A-Za-z0-9]{8}$"));
    EXPECT_TRUE(pattern.match(QString::fromStdString(first->instanceId())).hasMatch());
    EXPECT_NE(first->instanceId(), second->instanceId());
    EXPECT_EQ(first->maxQueueSize, 50);
}

// --- when the next ping is due ---

TEST(NorvClientPingDue, NoDateOrAPastDateIsDue)
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    EXPECT_TRUE(NorvClient::isPingDue(now, std::nullopt));
    EXPECT_TRUE(NorvClient::isPingDue(now, now.addSecs(-1)));
    EXPECT_TRUE(NorvClient::isPingDue(now, now));
}

TEST(NorvClientPingDue, ADateFiveDaysAheadIsDueAndOneThirtyHoursAheadIsNot)
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    EXPECT_TRUE(NorvClient::isPingDue(now, now.addDays(5)));
    EXPECT_FALSE(NorvClient::isPingDue(now, now.addSecs(30 * 3600)));
}

TEST(NorvClientPingDue, TwoDaysAheadIsTheLimit)
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    EXPECT_TRUE(NorvClient::isPingDue(now, now.addSecs(2 * 86400)));
    EXPECT_FALSE(NorvClient::isPingDue(now, now.addSecs(2 * 86400 - 1)));
}

// --- the next ping date, in several time zones ---

struct ZoneCase {
    const char* zone;
};

class NorvClientNextPing : public ::testing::TestWithParam<ZoneCase> {
protected:
    QTimeZone zone() const { return QTimeZone(GetParam().zone); }
    QDateTime at(int y, int m, int d, int h, int min, int s = 0, int ms = 0) const
    {
        return QDateTime(QDate(y, m, d), QTime(h, min, s, ms), zone());
    }
};

TEST_P(NorvClientNextPing, At0210TheNextPingIsToday)
{
    ASSERT_TRUE(zone().isValid());
    for (const int minute : {0, 9, 10, 11, 59}) {
        const auto next = NorvClient::nextPingDate(at(2024, 5, 14, 2, 10, 42, 123), minute);
        EXPECT_EQ(next, at(2024, 5, 14, 3, minute, 42, 123)) << minute;
    }
}

TEST_P(NorvClientNextPing, At0300OrLaterTheNextPingIsTomorrow)
{
    EXPECT_EQ(NorvClient::nextPingDate(at(2024, 5, 14, 3, 0), 0), at(2024, 5, 15, 3, 0));
    EXPECT_EQ(NorvClient::nextPingDate(at(2024, 5, 14, 3, 59, 59), 5), at(2024, 5, 15, 3, 5, 59));
    EXPECT_EQ(NorvClient::nextPingDate(at(2024, 5, 14, 14, 30), 59), at(2024, 5, 15, 3, 59));
    EXPECT_EQ(NorvClient::nextPingDate(at(2024, 12, 31, 23, 59, 1), 30), at(2025, 1, 1, 3, 30, 1));
    EXPECT_EQ(NorvClient::nextPingDate(at(2024, 2, 28, 12, 0), 1), at(2024, 2, 29, 3, 1));
}

TEST_P(NorvClientNextPing, JustAfterMidnightTheNextPingIsTheSameDay)
{
    EXPECT_EQ(NorvClient::nextPingDate(at(2024, 5, 14, 0, 0), 44), at(2024, 5, 14, 3, 44));
}

TEST_P(NorvClientNextPing, TheRandomMinuteIsAlwaysBetween0And59)
{
    MemoryUserDefaults settings;
    NorvClient::Platform platform;
    platform.userDefaults = &settings;
    const NorvClient client("o", QUrl(), "t", "1", false, true, platform);
    for (int i = 0; i < 300; ++i) {
        const auto next = client.nextPingDate(at(2024, 5, 14, 2, 10));
        EXPECT_EQ(next.toTimeZone(zone()).date(), QDate(2024, 5, 14));
        EXPECT_EQ(next.toTimeZone(zone()).time().hour(), 3);
    }
}

INSTANTIATE_TEST_SUITE_P(Zones, NorvClientNextPing,
                         ::testing::Values(ZoneCase{"UTC"}, ZoneCase{"Europe/Berlin"},
                                           ZoneCase{"America/New_York"}, ZoneCase{"Asia/Kolkata"},
                                           ZoneCase{"Pacific/Chatham"},
                                           ZoneCase{"America/St_Johns"}),
                         [](const auto& info) {
                             std::string name = info.param.zone;
                             std::replace(name.begin(), name.end(), '/', '_');
                             return name;
                         });

TEST(NorvClientNextPingDst, TheEveningBeforeSpringForwardPingsAt03LocalSummerTime)
{
    const QTimeZone berlin("Europe/Berlin");
    // 2024-03-31: 02:00 CET becomes 03:00 CEST.
    const QDateTime evening(QDate(2024, 3, 30), QTime(22, 0), berlin);
    const auto next = NorvClient::nextPingDate(evening, 17);
    EXPECT_EQ(next, QDateTime(QDate(2024, 3, 31), QTime(3, 17), berlin));
    EXPECT_EQ(next.toUTC(), QDateTime(QDate(2024, 3, 31), QTime(1, 17), Qt::UTC));
}

TEST(NorvClientNextPingDst, HoursAreElapsedTimeAcrossTheSpringForwardGap)
{
    const QTimeZone berlin("Europe/Berlin");
    // 01:30 CET plus two elapsed hours is 04:30 CEST: the hour from 02:00 to 03:00 never was.
    const QDateTime night(QDate(2024, 3, 31), QTime(1, 30), berlin);
    EXPECT_EQ(NorvClient::nextPingDate(night, 5),
              QDateTime(QDate(2024, 3, 31), QTime(4, 5), berlin));
}

TEST(NorvClientNextPingDst, TheEveningBeforeFallBackPingsAt03LocalWinterTime)
{
    const QTimeZone berlin("Europe/Berlin");
    // 2024-10-27: 03:00 CEST becomes 02:00 CET.
    const QDateTime evening(QDate(2024, 10, 26), QTime(22, 0), berlin);
    const auto next = NorvClient::nextPingDate(evening, 17);
    EXPECT_EQ(next.toUTC(), QDateTime(QDate(2024, 10, 27), QTime(2, 17), Qt::UTC));
    EXPECT_EQ(next.toTimeZone(berlin).time(), QTime(3, 17));
}

TEST(NorvClientNextPingDst, HoursAreElapsedTimeAcrossTheRepeatedHour)
{
    const QTimeZone berlin("Europe/Berlin");
    // 01:30 CEST (23:30 UTC) plus two elapsed hours is 02:30 CET (01:30 UTC).
    const QDateTime night(QDate(2024, 10, 27), QTime(1, 30), berlin);
    const auto next = NorvClient::nextPingDate(night, 45);
    EXPECT_EQ(next.toUTC(), QDateTime(QDate(2024, 10, 27), QTime(1, 45), Qt::UTC));
}

TEST(NorvClientNextPingDst, UsHoursAcrossTheSpringForwardDay)
{
    const QTimeZone newYork("America/New_York");
    // 2024-03-10: 02:00 EST becomes 03:00 EDT.
    EXPECT_EQ(NorvClient::nextPingDate(QDateTime(QDate(2024, 3, 9), QTime(20, 15), newYork), 0),
              QDateTime(QDate(2024, 3, 10), QTime(3, 0), newYork));
    EXPECT_EQ(NorvClient::nextPingDate(QDateTime(QDate(2024, 3, 10), QTime(3, 30), newYork), 0),
              QDateTime(QDate(2024, 3, 11), QTime(3, 0), newYork));
}

// The user's time zone as the process sees it: local time under several TZ values.
class NorvClientLocalTime : public ::testing::TestWithParam<ZoneCase> {
protected:
    void SetUp() override
    {
        saved_ = qgetenv("TZ");
        hadTz_ = qEnvironmentVariableIsSet("TZ");
        qputenv("TZ", GetParam().zone);
        tzset();
    }
    void TearDown() override
    {
        if (hadTz_)
            qputenv("TZ", saved_);
        else
            qunsetenv("TZ");
        tzset();
    }

private:
    QByteArray saved_;
    bool hadTz_ = false;
};

TEST_P(NorvClientLocalTime, TheClientSchedulesInLocalTime)
{
    MemoryUserDefaults settings;
    NorvClient::Platform platform;
    platform.userDefaults = &settings;
    const QDateTime localEvening(QDate(2024, 7, 1), QTime(21, 5, 9), Qt::LocalTime);
    platform.now = [localEvening] { return localEvening; };
    platform.randomMinute = [] { return 33; };
    const NorvClient client("o", QUrl(), "t", "1", false, true, platform);

    const auto next = client.nextPingDate(localEvening);
    const auto local = next.toLocalTime();
    EXPECT_EQ(local.date(), QDate(2024, 7, 2));
    EXPECT_EQ(local.time(), QTime(3, 33, 9));
    EXPECT_EQ(next.toUTC(),
              QDateTime(QDate(2024, 7, 2), QTime(3, 33, 9), QTimeZone(GetParam().zone)).toUTC());
}

INSTANTIATE_TEST_SUITE_P(TzValues, NorvClientLocalTime,
                         ::testing::Values(ZoneCase{"UTC"}, ZoneCase{"Europe/Berlin"},
                                           ZoneCase{"America/Los_Angeles"}, ZoneCase{"Asia/Tokyo"},
                                           ZoneCase{"Australia/Adelaide"}),
                         [](const auto& info) {
                             std::string name = info.param.zone;
                             std::replace(name.begin(), name.end(), '/', '_');
                             return name;
                         });

} // namespace

} // namespace lexmira
