// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "diagnostics/HealthChecks.h"

#include <gtest/gtest.h>

namespace lexmira {

namespace {

using namespace std::chrono_literals;

const Check* find(const std::vector<Check>& checks, const char* id)
{
    for (const Check& check : checks)
        if (check.id == QString::fromLatin1(id))
            return &check;
    return nullptr;
}

Verdict verdictOf(const std::vector<Check>& checks, const char* id)
{
    const Check* check = find(checks, id);
    EXPECT_NE(check, nullptr) << id;
    return check ? check->verdict : Verdict::ok;
}

SuiteHealth suite(uint mode)
{
    SuiteHealth health;
    health.path = QStringLiteral("/home/u/.config/group-containers/suite");
    health.exists = true;
    health.isDirectory = true;
    health.ownerUid = 1000;
    health.userUid = 1000;
    health.mode = mode;
    return health;
}

TEST(HealthChecksTest, ASuiteOnlyItsOwnerCanUseIsOk)
{
    const auto checks = HealthChecks::sharedSuite(suite(0700));
    for (const char* id :
         {"suite.path", "suite.owner", "suite.mode", "suite.writable", "suite.watchable"})
        EXPECT_EQ(verdictOf(checks, id), Verdict::ok) << id;
}

TEST(HealthChecksTest, TheSuitesModeIsJudgedByWhoMayDoWhat)
{
    EXPECT_EQ(verdictOf(HealthChecks::sharedSuite(suite(0750)), "suite.mode"), Verdict::warning);
    EXPECT_EQ(verdictOf(HealthChecks::sharedSuite(suite(0704)), "suite.mode"), Verdict::warning);
    EXPECT_EQ(verdictOf(HealthChecks::sharedSuite(suite(0770)), "suite.mode"), Verdict::fail);
    EXPECT_EQ(verdictOf(HealthChecks::sharedSuite(suite(0702)), "suite.mode"), Verdict::fail);
    EXPECT_EQ(verdictOf(HealthChecks::sharedSuite(suite(0500)), "suite.mode"), Verdict::fail);
    const auto checks = HealthChecks::sharedSuite(suite(0777));
    EXPECT_EQ(find(checks, "suite.mode")->detail.left(4), QStringLiteral("0777"));
    EXPECT_TRUE(find(checks, "suite.mode")->remedy.contains(QStringLiteral("chmod 700")));
}

TEST(HealthChecksTest, ASuiteOfAnotherUserFails)
{
    SuiteHealth health = suite(0700);
    health.ownerUid = 0;
    const auto checks = HealthChecks::sharedSuite(health);
    EXPECT_EQ(verdictOf(checks, "suite.owner"), Verdict::fail);
    EXPECT_TRUE(find(checks, "suite.owner")->remedy.contains(QStringLiteral("chown -R 1000")));
}

TEST(HealthChecksTest, AnUnwritableOrUnwatchableSuiteFails)
{
    SuiteHealth health = suite(0700);
    health.writeError = QStringLiteral("Read-only file system");
    health.watchError = QStringLiteral("Too many open files");
    const auto checks = HealthChecks::sharedSuite(health);
    EXPECT_EQ(verdictOf(checks, "suite.writable"), Verdict::fail);
    EXPECT_EQ(verdictOf(checks, "suite.watchable"), Verdict::fail);
    EXPECT_TRUE(find(checks, "suite.watchable")->detail.contains(QStringLiteral("Too many")));
}

TEST(HealthChecksTest, AFileInPlaceOfTheSuiteFails)
{
    SuiteHealth health = suite(0600);
    health.isDirectory = false;
    const auto checks = HealthChecks::sharedSuite(health);
    ASSERT_EQ(checks.size(), 1u);
    EXPECT_EQ(verdictOf(checks, "suite.path"), Verdict::fail);
}

TEST(HealthChecksTest, TheSecretServiceNeedsAnUnlockedDefaultCollection)
{
    SecretServiceHealth health;
    health.error = QStringLiteral("The name is not activatable");
    auto checks = HealthChecks::secretService(health);
    ASSERT_EQ(checks.size(), 1u);
    EXPECT_EQ(verdictOf(checks, "secrets.reachable"), Verdict::fail);

    health.error.reset();
    EXPECT_EQ(verdictOf(HealthChecks::secretService(health), "secrets.default"), Verdict::fail);
    health.defaultCollection = QStringLiteral("/org/freedesktop/secrets/collection/login");
    EXPECT_EQ(verdictOf(HealthChecks::secretService(health), "secrets.unlocked"), Verdict::fail);
    health.locked = true;
    EXPECT_EQ(verdictOf(HealthChecks::secretService(health), "secrets.unlocked"), Verdict::fail);
    health.locked = false;
    checks = HealthChecks::secretService(health);
    EXPECT_EQ(verdictOf(checks, "secrets.unlocked"), Verdict::ok);
    EXPECT_EQ(verdictOf(checks, "secrets.default"), Verdict::ok);
}

NetworkServiceHealth answeredAfter(std::chrono::milliseconds firstByte)
{
    NetworkServiceHealth health;
    health.addresses = {QStringLiteral("127.0.0.1")};
    health.handshake = 5ms;
    health.firstByte = firstByte;
    health.statusLine = "HTTP/1.1 204 No Content";
    return health;
}

TEST(HealthChecksTest, AFirstByteLaterThanTheBoundIsAWarning)
{
    const QUrl url(QStringLiteral("https://account.example"));
    const auto onTime = HealthChecks::service(HealthChecks::Service::account, {}, url,
                                              answeredAfter(HealthChecks::slowFirstByte));
    EXPECT_EQ(verdictOf(onTime, "service.account.first-byte"), Verdict::ok);
    EXPECT_TRUE(find(onTime, "service.account.first-byte")
                    ->detail.contains(QStringLiteral("HTTP/1.1 204 No Content")));
    const auto late = HealthChecks::service(HealthChecks::Service::account, {}, url,
                                            answeredAfter(HealthChecks::slowFirstByte + 1ms));
    EXPECT_EQ(verdictOf(late, "service.account.first-byte"), Verdict::warning);
}

TEST(HealthChecksTest, AServiceStopsBeingCheckedAtItsFirstFailure)
{
    const QUrl url(QStringLiteral("https://log.example:8443"));
    NetworkServiceHealth health;
    health.resolveError = QStringLiteral("Host not found");
    auto checks = HealthChecks::service(HealthChecks::Service::log, {}, url, health);
    ASSERT_EQ(checks.size(), 1u);
    EXPECT_EQ(verdictOf(checks, "service.log.resolves"), Verdict::fail);
    EXPECT_TRUE(checks.front().remedy.contains(QStringLiteral("LEXMIRA_LOG_HOST")));

    health = answeredAfter(1ms);
    health.connectError = QStringLiteral("Connection refused");
    checks = HealthChecks::service(HealthChecks::Service::log, {}, url, health);
    ASSERT_EQ(checks.size(), 2u);
    EXPECT_EQ(verdictOf(checks, "service.log.connects"), Verdict::fail);
    EXPECT_TRUE(checks.back().remedy.contains(QStringLiteral("port 8443")));

    health.connectError.reset();
    health.tlsError = QStringLiteral("The issuer certificate of a locally looked up certificate "
                                     "could not be found");
    checks = HealthChecks::service(HealthChecks::Service::log, {}, url, health);
    ASSERT_EQ(checks.size(), 3u);
    EXPECT_EQ(verdictOf(checks, "service.log.connects"), Verdict::ok);
    EXPECT_EQ(verdictOf(checks, "service.log.tls"), Verdict::fail);
    EXPECT_TRUE(checks.back().detail.startsWith(QStringLiteral("log.example:8443: ")));

    health.tlsError.reset();
    health.requestError = QStringLiteral("no answer within 5000 ms");
    checks = HealthChecks::service(HealthChecks::Service::log, {}, url, health);
    EXPECT_EQ(verdictOf(checks, "service.log.first-byte"), Verdict::fail);
}

TEST(HealthChecksTest, AServiceWithoutAUsableAddressFails)
{
    const auto checks = HealthChecks::service(HealthChecks::Service::analytics,
                                              QStringLiteral("ftp://x"), std::nullopt, {});
    ASSERT_EQ(checks.size(), 1u);
    EXPECT_EQ(verdictOf(checks, "service.analytics.address"), Verdict::fail);
    EXPECT_TRUE(checks.front().remedy.contains(QStringLiteral("LEXMIRA_ANALYTICS_URL")));
}

TEST(HealthChecksTest, AnUnreachableBusFailsAndNamesItsAddress)
{
    BusHealth health;
    health.address = QStringLiteral("unix:path=/nowhere");
    health.error = QStringLiteral("Failed to connect");
    const auto checks = HealthChecks::sessionBus(health);
    ASSERT_EQ(checks.size(), 1u);
    EXPECT_EQ(verdictOf(checks, "bus.reachable"), Verdict::fail);
    EXPECT_TRUE(checks.front().detail.contains(QStringLiteral("unix:path=/nowhere")));
}

TEST(HealthChecksTest, ARunningCompanionIsNamedWithoutComplaint)
{
    BusHealth health;
    health.companionPid = 4242;
    const auto checks = HealthChecks::sessionBus(health);
    EXPECT_EQ(verdictOf(checks, "bus.companion"), Verdict::ok);
    EXPECT_TRUE(find(checks, "bus.companion")->detail.contains(QStringLiteral("4242")));
}

} // namespace

} // namespace lexmira
