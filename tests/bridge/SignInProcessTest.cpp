// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "QtPrinters.h"
#include "support/ChildProcess.h"
#include "support/DevExtensionPeer.h"
#include "support/HttpsTestServer.h"
#include "support/TestSupport.h"
#include "util/Json.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

namespace lexmira {

namespace {

using namespace std::chrono_literals;
using test::DevExtensionPeer;
using test::HttpsTestServer;

const QString instanceName = QStringLiteral("com.lexmira.companion");
const QString suiteName = QStringLiteral("Q7R2M5K8T1.group.com.lexmira.safari.extension");
const QString callback = QStringLiteral(
    "lexmira.extension://"
    "oauth?code=4%2FP7q-xZ&code_challenge=E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM");
const std::string callbackCode = "4/P7q-xZ";
const std::string callbackChallenge = "E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM";

bool instanceRunning()
{
    return QDBusConnection::sessionBus().interface()->isServiceRegistered(instanceName).value();
}

std::vector<nlohmann::ordered_json> jsonLines(const QString& path)
{
    std::vector<nlohmann::ordered_json> lines;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return lines;
    const QList<QByteArray> texts = file.readAll().split('\n');
    for (const QByteArray& text : texts)
        if (const auto line = Json::decode(text); line && !text.isEmpty())
            lines.push_back(*line);
    return lines;
}

// Each test has its own configuration directory (so its own shared suite), its own alert record
// and a loopback log service; the peer and the companion share the test's session bus.
class SignInProcess : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(test::waitUntil([] { return !instanceRunning(); }, 20s));
        ASSERT_FALSE(DevExtensionPeer::isOwned(DevExtensionPeer::defaultName()));
    }

    void TearDown() override
    {
        EXPECT_TRUE(test::waitUntil([] { return !instanceRunning(); }, 20s));
    }

    QProcessEnvironment environment() const
    {
        auto environment = test::childEnvironment();
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), config.path());
        environment.insert(QStringLiteral("LEXMIRA_ALERT_RECORD_FILE"), alertFile());
        environment.insert(QStringLiteral("LEXMIRA_LOG_HOST"), log.hostAndPort());
        environment.insert(QStringLiteral("LEXMIRA_ACCOUNT_HOST"),
                           QStringLiteral("127.0.0.1:%1").arg(HttpsTestServer::closedPort()));
        environment.insert(
            QStringLiteral("LEXMIRA_ANALYTICS_URL"),
            QStringLiteral("https://127.0.0.1:%1/").arg(HttpsTestServer::closedPort()));
        environment.insert(QStringLiteral("LEXMIRA_WEB_ORIGIN"),
                           QStringLiteral("https://www.lexmira.test"));
        environment.insert(QStringLiteral("LEXMIRA_EXTRA_CA_FILE"), HttpsTestServer::caFile());
        if (!language.isEmpty()) {
            environment.insert(QStringLiteral("LANGUAGE"), language);
            environment.insert(QStringLiteral("LANG"), language + QStringLiteral(".UTF-8"));
            environment.remove(QStringLiteral("LC_ALL"));
            environment.remove(QStringLiteral("LC_MESSAGES"));
        }
        return environment;
    }

    // Every alert recorded so far, as the application wrote it.
    std::vector<nlohmann::ordered_json> allAlerts() const { return jsonLines(alertFile()); }

    // The user's language for the application ("de_DE"); empty keeps the test session's.
    QString language;

    std::unique_ptr<DevExtensionPeer> startPeer(const QStringList& options = {}) const
    {
        auto peer = std::make_unique<DevExtensionPeer>(options, DevExtensionPeer::defaultName(),
                                                       environment());
        EXPECT_TRUE(peer->isServing());
        return peer;
    }

    // A running instance, ready for a second launch.
    std::unique_ptr<test::ChildProcess> startInstance() const
    {
        auto instance = std::make_unique<test::ChildProcess>(test::companionBinary(), QStringList{},
                                                             environment());
        EXPECT_TRUE(test::waitUntil(instanceRunning, 20s));
        return instance;
    }

    // A second launch with url: hands it to the instance and exits 0.
    void launchWith(const QString& url) const
    {
        QProcess launch;
        launch.setProcessEnvironment(environment());
        launch.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        launch.start(test::companionBinary(), {url});
        ASSERT_TRUE(launch.waitForFinished(30000));
        EXPECT_EQ(launch.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(launch.exitCode(), 0);
    }

    QString suiteFile(const QString& key) const
    {
        return QDir(config.path())
            .filePath(QStringLiteral("group-containers/") + suiteName + QLatin1Char('/') + key);
    }
    std::optional<QByteArray> stored(const QString& key) const
    {
        QFile file(suiteFile(key));
        if (!file.open(QIODevice::ReadOnly))
            return std::nullopt;
        return file.readAll();
    }

    QString alertFile() const
    {
        return QDir(config.path()).filePath(QStringLiteral("alerts.jsonl"));
    }
    std::vector<nlohmann::ordered_json> failureAlerts() const
    {
        std::vector<nlohmann::ordered_json> alerts;
        for (const auto& alert : jsonLines(alertFile()))
            if (alert.value("messageText", "") == "Lexmira encountered a problem")
                alerts.push_back(alert);
        return alerts;
    }

    // The remote log records of the sign-in hand-off received so far.
    std::vector<nlohmann::ordered_json> handOffLogRecords() const
    {
        std::vector<nlohmann::ordered_json> records;
        for (const auto& request : log.requests())
            if (const auto body = request.json();
                request.target == "/logv2" && body &&
                body->value("logger", "") == "companion.oauth.handleUrl")
                records.push_back(*body);
        return records;
    }

    // Exactly one alert and one log record, and nothing more for a while after.
    void expectOneAlertAndOneLogRecord(const std::string& messagePrefix) const
    {
        ASSERT_TRUE(test::waitUntil(
            [&] { return !failureAlerts().empty() && !handOffLogRecords().empty(); }, 20s));
        test::spin(1500ms);

        const auto alerts = failureAlerts();
        ASSERT_EQ(alerts.size(), 1u);
        EXPECT_EQ(Json::encode(alerts[0]),
                  QByteArray(R"({"messageText":"Lexmira encountered a problem",)"
                             R"("informativeText":"Please open Safari to continue using Lexmira.",)"
                             R"("style":"critical","buttons":["OK"]})"));

        const auto records = handOffLogRecords();
        ASSERT_EQ(records.size(), 1u);
        EXPECT_EQ(records[0]["level"], "ERROR");
        EXPECT_EQ(records[0]["application"], "extensionSafari");
        const std::string message = records[0].value("message", "");
        EXPECT_EQ(message.rfind(messagePrefix, 0), 0u) << message;
    }

    QTemporaryDir config;
    HttpsTestServer log;
};

TEST_F(SignInProcess,
       ASecondLaunchWithTheCallbackHandsCodeAndChallengeToTheExtensionAfterStoringThem)
{
    const auto peer = startPeer();
    const auto instance = startInstance();
    launchWith(callback);

    ASSERT_TRUE(peer->waitForDispatch("oauthExchange", 20s));
    const QByteArray expectedRecord = QByteArray(R"([{"code":"4\/P7q-xZ","codeChallenge":")") +
                                      callbackChallenge.c_str() + "\"}]";
    EXPECT_EQ(stored(QStringLiteral("message.oauthExchangeMessage")), expectedRecord);

    const auto exchanges = peer->dispatches("oauthExchange");
    ASSERT_EQ(exchanges.size(), 1u);
    const auto userInfo = Json::decode(QByteArray::fromStdString(exchanges[0]["userInfo"]));
    ASSERT_TRUE(userInfo);
    EXPECT_EQ(*userInfo, (nlohmann::ordered_json{{"code", callbackCode},
                                                 {"codeChallenge", callbackChallenge}}));
    EXPECT_EQ(exchanges[0]["storedRecord"], expectedRecord.toStdString())
        << "the record was in the shared suite when the message arrived";
    EXPECT_FALSE(exchanges[0].contains("failedWith"));

    test::spin(500ms);
    EXPECT_TRUE(failureAlerts().empty());
    EXPECT_TRUE(handOffLogRecords().empty());
}

TEST_F(SignInProcess, AnInvalidCallbackSendsNullsAndStoresNoMessage)
{
    const auto peer = startPeer();
    const auto instance = startInstance();
    launchWith(QStringLiteral("lexmira.extension://oauth/elsewhere?code=a&code_challenge=b"));

    ASSERT_TRUE(peer->waitForDispatch("oauthExchange", 20s));
    EXPECT_EQ(stored(QStringLiteral("message.oauthExchangeMessage")), QByteArray("[null]"));
    const auto exchanges = peer->dispatches("oauthExchange");
    ASSERT_FALSE(exchanges.empty());
    const auto exchange = exchanges.begin();
    EXPECT_EQ((*exchange)["userInfo"], R"({"code":null,"codeChallenge":null})");
    EXPECT_EQ((*exchange)["storedRecord"], "[null]");
}

TEST_F(SignInProcess, ACallbackThatStartsTheApplicationIsDeliveredToo)
{
    const auto peer = startPeer();
    test::ChildProcess first(test::companionBinary(), {callback}, environment());
    ASSERT_TRUE(peer->waitForDispatch("oauthExchange", 20s));
    EXPECT_TRUE(first.running()) << "the launch became the instance and keeps running";
    const auto exchanges = peer->dispatches("oauthExchange");
    ASSERT_FALSE(exchanges.empty());
    const auto exchange = exchanges.begin();
    const auto userInfo = Json::decode(QByteArray::fromStdString((*exchange)["userInfo"]));
    ASSERT_TRUE(userInfo);
    EXPECT_EQ((*userInfo)["code"], callbackCode);
    EXPECT_EQ((*userInfo)["codeChallenge"], callbackChallenge);
}

TEST_F(SignInProcess, APeerThatFailsTheExchangeCausesExactlyOneAlertAndOneLogRecord)
{
    const auto peer = startPeer(
        {QStringLiteral("--fail-every-dispatch"), QStringLiteral("The extension is not ready")});
    const auto instance = startInstance();
    launchWith(callback);
    expectOneAlertAndOneLogRecord("Could not continue to extension: The extension is not ready");
    EXPECT_EQ(handOffLogRecords()[0]["message"],
              "Could not continue to extension: The extension is not ready");
}

TEST_F(SignInProcess, AnAbsentExtensionCausesExactlyOneAlertAndOneLogRecord)
{
    const auto instance = startInstance();
    launchWith(callback);
    expectOneAlertAndOneLogRecord("Could not continue to extension: ");
    const std::string message = handOffLogRecords().at(0).value("message", "");
    EXPECT_NE(message.find("com.lexmira.companion.ext"), std::string::npos)
        << "the bus's own description names the missing extension: " << message;
    // The record is stored all the same, and stays.
    EXPECT_EQ(stored(QStringLiteral("message.oauthExchangeMessage")),
              QByteArray(R"([{"code":"4\/P7q-xZ","codeChallenge":")") + callbackChallenge.c_str() +
                  "\"}]");
}

TEST_F(SignInProcess, ABurstOfCallbacksShowsOneAlertAtATimeAndLogsEveryFailure)
{
    // No extension: every hand-off fails. The first alert stays up, since nobody answers it.
    constexpr int burst = 50;
    const auto instance = startInstance();
    auto caller =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("burst"));
    for (int i = 0; i < burst; ++i) {
        auto open = QDBusMessage::createMethodCall(
            instanceName, QStringLiteral("/com/lexmira/companion"),
            QStringLiteral("org.freedesktop.Application"), QStringLiteral("Open"));
        open << QStringList{callback} << QVariantMap();
        caller.asyncCall(open);
    }
    ASSERT_TRUE(test::waitUntil([&] { return handOffLogRecords().size() == burst; }, 60s))
        << handOffLogRecords().size();
    test::spin(500ms);
    EXPECT_EQ(failureAlerts().size(), 1u);
    EXPECT_TRUE(instance->running());
    QDBusConnection::disconnectFromBus(QStringLiteral("burst"));
}

TEST_F(SignInProcess, TheFailureAlertNamesTheBrowserTheExtensionRunsIn)
{
    const auto peer =
        startPeer({QStringLiteral("--fail-every-dispatch"), QStringLiteral("Not ready"),
                   QStringLiteral("--browser-name"), QStringLiteral("Firefox")});
    const auto instance = startInstance();
    launchWith(callback);
    ASSERT_TRUE(test::waitUntil([&] { return !failureAlerts().empty(); }, 20s));
    EXPECT_EQ(Json::encode(failureAlerts().front()),
              QByteArray(R"({"messageText":"Lexmira encountered a problem",)"
                         R"("informativeText":"Please open Firefox to continue using Lexmira.",)"
                         R"("style":"critical","buttons":["OK"]})"));
}

TEST_F(SignInProcess, TheFailureAlertSpeaksTheUsersLanguage)
{
    language = QStringLiteral("de_DE");
    const auto peer =
        startPeer({QStringLiteral("--fail-every-dispatch"), QStringLiteral("Nicht bereit"),
                   QStringLiteral("--browser-name"), QStringLiteral("Chromium")});
    const auto instance = startInstance();
    launchWith(callback);
    ASSERT_TRUE(test::waitUntil([&] { return !allAlerts().empty(); }, 20s));
    test::spin(500ms);
    const auto alerts = allAlerts();
    ASSERT_EQ(alerts.size(), 1u);
    EXPECT_EQ(Json::encode(alerts.front()),
              QByteArray(R"({"messageText":"Bei Lexmira ist ein Problem aufgetreten",)"
                         R"("informativeText":"Bitte öffne Chromium, um Lexmira weiter zu )"
                         R"(verwenden.","style":"critical","buttons":["OK"]})"));
    // The log speaks the system's own words, whatever the user's language.
    ASSERT_TRUE(test::waitUntil([&] { return !handOffLogRecords().empty(); }, 20s));
    EXPECT_EQ(handOffLogRecords()[0]["message"], "Could not continue to extension: Nicht bereit");
}

TEST_F(SignInProcess, ThePeerCanCompleteTheSignInByStoringASignedInUser)
{
    const auto peer = startPeer({QStringLiteral("--sign-in-on-exchange"),
                                 QStringLiteral("--user-id"), QStringLiteral("u-42"),
                                 QStringLiteral("--container-id"), QStringLiteral("c-42")});
    const auto instance = startInstance();
    launchWith(callback);
    ASSERT_TRUE(
        test::waitUntil([&] { return stored(QStringLiteral("userInfo")).has_value(); }, 20s));
    EXPECT_EQ(
        stored(QStringLiteral("userInfo")),
        QByteArray(
            R"([{"userId":"u-42","isTestUser":false,"isAnonymous":false,"containerId":"c-42"}])"));
}

} // namespace

} // namespace lexmira
