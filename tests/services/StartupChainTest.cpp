// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "support/ChildProcess.h"
#include "support/HttpsTestServer.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

namespace lexmira {

namespace {

using test::HttpsTestServer;
using Json = nlohmann::ordered_json;

const QString instanceName = QStringLiteral("com.lexmira.companion");
const QString suiteName = QStringLiteral("Q7R2M5K8T1.group.com.lexmira.safari.extension");

bool instanceRunning()
{
    return QDBusConnection::sessionBus().interface()->isServiceRegistered(instanceName);
}

class StartupChain : public ::testing::Test {
protected:
    void SetUp() override
    {
        // The application claims the instance name on the bus; an instance left from another
        // test would take our launch over.
        ASSERT_TRUE(test::waitUntil([] { return !instanceRunning(); }, std::chrono::seconds(20)));
    }

    void TearDown() override
    {
        EXPECT_TRUE(test::waitUntil([] { return !instanceRunning(); }, std::chrono::seconds(20)));
    }

    // A fresh configuration directory (so no shared user, no settings) and every service on
    // the loopback servers, trusted through the test authority.
    QProcessEnvironment environment() const
    {
        auto environment = test::childEnvironment();
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), config.path());
        environment.insert(QStringLiteral("LEXMIRA_ACCOUNT_HOST"), account.hostAndPort());
        environment.insert(QStringLiteral("LEXMIRA_ANALYTICS_URL"),
                           analytics.url(QString()).toString());
        environment.insert(QStringLiteral("LEXMIRA_LOG_HOST"), log.hostAndPort());
        environment.insert(QStringLiteral("LEXMIRA_WEB_ORIGIN"),
                           QStringLiteral("https://www.lexmira.test"));
        environment.insert(QStringLiteral("LEXMIRA_EXTRA_CA_FILE"), HttpsTestServer::caFile());
        return environment;
    }

    QByteArray sharedValue(const QString& key) const
    {
        QFile file(QDir(config.path())
                       .filePath(QStringLiteral("group-containers/") + suiteName + u'/' + key));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir config;
    HttpsTestServer account;
    HttpsTestServer analytics;
    HttpsTestServer log;
};

TEST_F(StartupChain, OneAccountRequestThenAppStartGoesOutAsBatchOneWithTheCookiesContainer)
{
    account.holdRequests();
    test::ChildProcess companion(test::companionBinary(), {}, environment());

    ASSERT_TRUE(account.waitForRequests(1, std::chrono::seconds(30)));
    const auto& fetch = account.requests().front();
    EXPECT_EQ(fetch.method, "POST");
    EXPECT_EQ(fetch.target, "/v3/user/oranonymous");
    EXPECT_EQ(fetch.header("X-Client-Type"), "companion-linux");
    EXPECT_EQ(fetch.header("X-Client-Version"), "1.0.0");
    EXPECT_EQ(fetch.header("cookie"), std::nullopt);

    // The window is up and the app-start event recorded, but no user is known yet.
    test::spin(std::chrono::milliseconds(1500));
    EXPECT_TRUE(companion.running());
    EXPECT_EQ(account.requests().size(), 1u);
    EXPECT_TRUE(analytics.requests().empty());

    const Json user{{"id", "user-1"}, {"email", "u@lexmira.test"}, {"groups", Json::array()},
                    {"name", "U"},    {"anonymous", true},         {"isTest", false}};
    ASSERT_TRUE(account.release(test::httpJson(200, user,
                                               {{"Set-Cookie", "norv_containerId=cookie-K; Path=/"},
                                                {"Set-Cookie", "lxauth=A; Secure"},
                                                {"Set-Cookie", "csrf-token=C"}})));

    ASSERT_TRUE(analytics.waitForRequests(1, std::chrono::seconds(20)));
    const auto& request = analytics.requests().front();
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.header("Origin"), "https://www.lexmira.test");
    EXPECT_EQ(request.header("Content-Type"), "application/json");
    const auto body = request.json();
    ASSERT_TRUE(body);
    EXPECT_EQ(body->at("client"), "lexmiraCompanionLinux");
    EXPECT_EQ(body->at("clientVersion"), "1.0.0");
    EXPECT_EQ(body->at("containerId"), "cookie-K");
    EXPECT_EQ(body->at("batchId"), 1);
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^[A-Za-z0-9]{8}$"))
                    .match(QString::fromStdString(body->at("instanceId").get<std::string>()))
                    .hasMatch());
    EXPECT_EQ(body->at("events"),
              Json::array({Json{{"component", "companion"},
                                {"object", "app"},
                                {"action", "start"},
                                {"eventName", "lexmiraCompanionLinux/companion/app-start"},
                                {"userId", "user-1"},
                                {"isTest", false}}}));

    EXPECT_TRUE(test::waitUntil([this] {
        return sharedValue(QStringLiteral("companionContainerId")) == R"(["cookie-K"])";
    })) << sharedValue(QStringLiteral("companionContainerId")).toStdString();

    test::spin(std::chrono::milliseconds(1000));
    EXPECT_EQ(account.requests().size(), 1u);
    EXPECT_EQ(analytics.requests().size(), 1u);
}

TEST_F(StartupChain, EachProcessLogsUnderItsOwnSessionIdentifier)
{
    const QRegularExpression uuid(
        QStringLiteral("^[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}$"));
    std::vector<std::string> sessions;
    for (std::size_t run = 1; run <= 2; ++run) {
        test::ChildProcess probe(test::toolBinary(QStringLiteral("lexmira-env-log-probe")), {},
                                 environment());
        ASSERT_TRUE(log.waitForRequests(2 * run, std::chrono::seconds(30)));
        const auto first = log.requests()[2 * run - 2].json();
        const auto second = log.requests()[2 * run - 1].json();
        ASSERT_TRUE(first && second);
        EXPECT_EQ(first->at("sessionId"), second->at("sessionId"));
        const auto session = first->at("sessionId").get<std::string>();
        EXPECT_TRUE(uuid.match(QString::fromStdString(session)).hasMatch()) << session;
        sessions.push_back(session);
    }
    EXPECT_NE(sessions[0], sessions[1]);
    for (const auto& request : log.requests()) {
        EXPECT_EQ(request.target, "/logv2");
        EXPECT_EQ(request.header("Origin"), "https://www.lexmira.test");
        EXPECT_EQ(request.json()->at("version"), "1.0.0");
        EXPECT_EQ(request.json()->at("env"), "prod");
    }
}

} // namespace

} // namespace lexmira
