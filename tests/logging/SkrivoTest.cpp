// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "logging/Skrivo.h"

#include "fakes/CountingHttpClient.h"
#include "fakes/MemorySharedData.h"
#include "fakes/RecordingSystemLog.h"
#include "shared/SharedUserInfoProvider.h"
#include "support/HttpsTestServer.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <thread>

namespace lexmira {

namespace {

using test::HttpsTestServer;

const ClientInfo clientInfo{"companion-linux", "1.0.0", "lexmiraCompanionLinux"};
const std::string sessionId = "7A1C5E0B-2D3F-4E6A-9B8C-0D1E2F3A4B5C";

class SkrivoTest : public ::testing::Test {
protected:
    SkrivoTest()
    {
        qputenv("LEXMIRA_EXTRA_CA_FILE", HttpsTestServer::caFile().toUtf8());
        transport = std::make_shared<CountingHttpClient>(HttpClient::create());
    }

    Skrivo makeSkrivo(std::string domain, std::optional<quint16> port,
                      AppInfo::Component component = AppInfo::Component::companion,
                      EnvType envType = EnvType::prod) const
    {
        return Skrivo(std::move(domain), port, "/logv2", "https://www.lexmira.test", envType,
                      component, clientInfo, std::make_shared<SharedUserInfoProvider>(*sharedData),
                      sessionId, transport, systemLog);
    }

    Skrivo skrivo() const { return makeSkrivo("127.0.0.1", server.port()); }

    void waitForCompletions(int count) const
    {
        ASSERT_TRUE(test::waitUntil([&] { return transport->completed() >= count; }));
    }

    HttpsTestServer server;
    std::shared_ptr<MemoryDataContainer> container = std::make_shared<MemoryDataContainer>();
    std::unique_ptr<SharedData> sharedData = makeMemorySharedData(container);
    std::shared_ptr<CountingHttpClient> transport;
    std::shared_ptr<RecordingSystemLog> systemLog = std::make_shared<RecordingSystemLog>();
};

using Lines = std::vector<std::string>;

TEST_F(SkrivoTest, OpenSafariErrorIsPostedAsOneJsonObjectInFieldOrder)
{
    skrivo().log(CompanionLogger::openSafari, LogLevel::error, "Could not open Safari");

    ASSERT_TRUE(server.waitForRequests(1));
    const auto& request = server.requests().front();
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.target, "/logv2");
    EXPECT_EQ(request.body, "{\"application\":\"extensionSafari\",\"version\":\"1.0.0\","
                            "\"env\":\"prod\",\"sessionId\":\"" +
                                QByteArray::fromStdString(sessionId) +
                                "\",\"logger\":\"companion.openSafari\",\"level\":\"ERROR\","
                                "\"message\":\"Could not open Safari\"}");
    EXPECT_EQ(request.header("Origin"), "https://www.lexmira.test");
    EXPECT_EQ(request.header("Content-Type"), "application/json");
    EXPECT_EQ(request.header("Cookie"), std::nullopt);
    waitForCompletions(1);
    EXPECT_EQ(systemLog->lines(), Lines{});
}

TEST_F(SkrivoTest, WithNoUserStoredTheBodyHasNoUserIdAndNoContainerId)
{
    skrivo().log(CompanionLogger::getExtensionState, LogLevel::error, "x");

    ASSERT_TRUE(server.waitForRequests(1));
    const auto body = server.requests().front().json();
    ASSERT_TRUE(body);
    EXPECT_FALSE(body->contains("userId"));
    EXPECT_FALSE(body->contains("containerId"));
    EXPECT_EQ(body->at("logger"), "companion.getExtensionState");
}

TEST_F(SkrivoTest, WithOnlyTheCompanionContainerIdTheBodyHasContainerIdButNoUserId)
{
    sharedData->companionContainerId.setValue("c-7");
    skrivo().log(CompanionLogger::openSafari, LogLevel::error, "x");

    ASSERT_TRUE(server.waitForRequests(1));
    const auto& body = server.requests().front().body;
    EXPECT_TRUE(body.contains(R"("sessionId":")" + QByteArray::fromStdString(sessionId) +
                              R"(","containerId":"c-7","logger":)"))
        << body.toStdString();
    EXPECT_FALSE(body.contains("userId"));
}

TEST_F(SkrivoTest, AStoredUserSuppliesBothIdentifiersReadAtTheTimeOfTheCall)
{
    const Skrivo client = skrivo();
    client.log(CompanionLogger::openSafari, LogLevel::error, "before");
    sharedData->companionContainerId.setValue("c-7");
    sharedData->userInfo.setValue(UserInfo{"u-1", false, true, "c-user"});
    client.log(CompanionLogger::openSafari, LogLevel::error, "after");

    ASSERT_TRUE(server.waitForRequests(2));
    for (const auto& request : server.requests()) {
        const auto body = request.json();
        ASSERT_TRUE(body);
        if (body->at("message") == "before") {
            EXPECT_FALSE(body->contains("userId"));
        } else {
            EXPECT_EQ(body->at("userId"), "u-1");
            EXPECT_EQ(body->at("containerId"), "c-user");
        }
    }
}

TEST_F(SkrivoTest, NotFoundWritesTheBadRequestLineWithTheDecimalStatus)
{
    server.respondWith(test::httpStatus(404));
    skrivo().log(CompanionLogger::openSafari, LogLevel::error, "x");

    waitForCompletions(1);
    EXPECT_EQ(systemLog->lines(), Lines{"Error: skrivo request bad request 404"});
}

TEST_F(SkrivoTest, EveryClientErrorStatusWritesTheBadRequestLine)
{
    server.respondWith(test::httpStatus(400));
    skrivo().log(CompanionLogger::openSafari, LogLevel::error, "x");
    waitForCompletions(1);
    server.respondWith(test::httpStatus(499));
    skrivo().log(CompanionLogger::openSafari, LogLevel::error, "x");
    waitForCompletions(2);

    EXPECT_EQ(systemLog->lines(), (Lines{"Error: skrivo request bad request 400",
                                         "Error: skrivo request bad request 499"}));
}

TEST_F(SkrivoTest, ServiceUnavailableWritesNothing)
{
    server.respondWith(test::httpStatus(503, "down"));
    skrivo().log(CompanionLogger::openSafari, LogLevel::error, "x");

    waitForCompletions(1);
    EXPECT_EQ(server.requests().size(), 1u);
    EXPECT_EQ(systemLog->lines(), Lines{});
}

TEST_F(SkrivoTest, InternalServerErrorWritesNothing)
{
    server.respondWith(test::httpStatus(500));
    skrivo().log(CompanionLogger::openSafari, LogLevel::error, "x");

    waitForCompletions(1);
    EXPECT_EQ(systemLog->lines(), Lines{});
}

TEST_F(SkrivoTest, NoContentWritesNothing)
{
    server.respondWith(test::httpStatus(204));
    skrivo().log(CompanionLogger::openSafari, LogLevel::error, "x");

    waitForCompletions(1);
    EXPECT_EQ(server.requests().size(), 1u);
    EXPECT_EQ(systemLog->lines(), Lines{});
}

TEST_F(SkrivoTest, NoNetworkWritesRequestFailedThenInvalidType)
{
    makeSkrivo("127.0.0.1", HttpsTestServer::closedPort())
        .log(CompanionLogger::openSafari, LogLevel::error, "x");

    waitForCompletions(1);
    EXPECT_EQ(systemLog->lines(), (Lines{"Error: skrivo request failed: Connection refused",
                                         "Error: skrivo response has invalid type"}));
}

TEST_F(SkrivoTest, AnUntrustedServerIsATransportFailure)
{
    qunsetenv("LEXMIRA_EXTRA_CA_FILE");
    transport = std::make_shared<CountingHttpClient>(HttpClient::create());
    skrivo().log(CompanionLogger::openSafari, LogLevel::error, "x");

    waitForCompletions(1);
    const auto lines = systemLog->lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_TRUE(lines[0].starts_with("Error: skrivo request failed: ")) << lines[0];
    EXPECT_EQ(lines[1], "Error: skrivo response has invalid type");
    EXPECT_TRUE(server.requests().empty());
}

TEST_F(SkrivoTest, AMalformedAnswerIsATransportFailure)
{
    HttpsTestServer::Response garbage;
    garbage.raw = "SPDY/9 what\r\n\r\n";
    server.respondWith(garbage);
    skrivo().log(CompanionLogger::openSafari, LogLevel::error, "x");

    waitForCompletions(1);
    const auto lines = systemLog->lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_TRUE(lines[0].starts_with("Error: skrivo request failed: ")) << lines[0];
    EXPECT_EQ(lines[1], "Error: skrivo response has invalid type");
}

TEST_F(SkrivoTest, ADomainThatMakesNoUrlWritesOneLineAndSendsNothing)
{
    makeSkrivo("not a host", std::nullopt).log(CompanionLogger::openSafari, LogLevel::error, "x");
    makeSkrivo("", std::nullopt).log(CompanionLogger::openSafari, LogLevel::error, "x");

    EXPECT_EQ(systemLog->lines(), (Lines{"Error: skrivo request failed to create url",
                                         "Error: skrivo request failed to create url"}));
    EXPECT_EQ(transport->sent(), 0);
}

TEST_F(SkrivoTest, AMessageThatCannotBeEncodedWritesTwoLinesAndSendsNothing)
{
    skrivo().log(CompanionLogger::openSafari, LogLevel::error, "\xff");

    EXPECT_EQ(systemLog->lines(),
              (Lines{"Error: skrivo request serialization error: [json.exception.type_error.316] "
                     "invalid UTF-8 byte at index 0: 0xFF",
                     "Error: skrivo request failed to serialize data"}));
    EXPECT_EQ(transport->sent(), 0);
}

TEST_F(SkrivoTest, TwoCallsAndACopyCarryTheSameSessionId)
{
    const Skrivo original = skrivo();
    const Skrivo copy = original; // NOLINT(performance-unnecessary-copy-initialization)
    original.log(CompanionLogger::openSafari, LogLevel::error, "one");
    original.log(CompanionLogger::openSafari, LogLevel::error, "two");
    copy.log(CompanionLogger::openSafari, LogLevel::error, "three");

    ASSERT_TRUE(server.waitForRequests(3));
    for (const auto& request : server.requests())
        EXPECT_EQ(request.json()->at("sessionId"), sessionId);
}

TEST_F(SkrivoTest, LogIsCallableFromAnyThread)
{
    const Skrivo client = skrivo();
    std::thread first([&] { client.log(CompanionLogger::openSafari, LogLevel::error, "a"); });
    std::thread second([&] { client.log(CompanionLogger::openSafari, LogLevel::error, "b"); });
    first.join();
    second.join();

    ASSERT_TRUE(server.waitForRequests(2));
}

TEST_F(SkrivoTest, LogReturnsWithoutWaitingForTheAnswer)
{
    server.holdRequests();
    skrivo().log(CompanionLogger::openSafari, LogLevel::error, "x");

    ASSERT_TRUE(server.waitForRequests(1));
    EXPECT_EQ(transport->completed(), 0);
    server.release(test::httpStatus(200));
    waitForCompletions(1);
}

TEST_F(SkrivoTest, TheNativeComponentPrefixesTheLoggerButKeepsTheApplication)
{
    makeSkrivo("127.0.0.1", server.port(), AppInfo::Component::native, EnvType::dev)
        .log(CompanionLogger::oauthHandleUrl, LogLevel::warn, "x");

    ASSERT_TRUE(server.waitForRequests(1));
    const auto body = server.requests().front().json();
    EXPECT_EQ(body->at("application"), "extensionSafari");
    EXPECT_EQ(body->at("logger"), "native.oauth.handleUrl");
    EXPECT_EQ(body->at("env"), "dev");
    EXPECT_EQ(body->at("level"), "WARN");
}

TEST_F(SkrivoTest, UrlIsHttpsOnTheDomainWithThePathAndNoPortUnlessConfigured)
{
    EXPECT_EQ(makeSkrivo("log.lexmira.test", std::nullopt).url(),
              QUrl(QStringLiteral("https://log.lexmira.test/logv2")));
    EXPECT_EQ(makeSkrivo("127.0.0.1", 8443).url(),
              QUrl(QStringLiteral("https://127.0.0.1:8443/logv2")));
}

TEST_F(SkrivoTest, LoggerNamesAreTheComponentAndTheRawName)
{
    const Skrivo client = skrivo();
    EXPECT_EQ(client.loggerName(CompanionLogger::oauthHandleUrl), "companion.oauth.handleUrl");
    EXPECT_EQ(client.loggerName(CompanionLogger::getExtensionState), "companion.getExtensionState");
    EXPECT_EQ(client.loggerName(CompanionLogger::openSafari), "companion.openSafari");
    EXPECT_EQ(client.loggerName(CompanionLogger::openExtensionsSettings),
              "companion.openExtensionsSettings");
}

TEST(LogLevel, RawValuesAreUpperCaseAndCaseSensitive)
{
    EXPECT_EQ(rawValue(LogLevel::info), "INFO");
    EXPECT_EQ(rawValue(LogLevel::warn), "WARN");
    EXPECT_EQ(rawValue(LogLevel::error), "ERROR");
    EXPECT_EQ(logLevelFromRawValue("ERROR"), LogLevel::error);
    EXPECT_EQ(logLevelFromRawValue("error"), std::nullopt);
}

TEST(CompanionLogger, RawValuesRoundTrip)
{
    for (const auto logger : {CompanionLogger::oauthHandleUrl, CompanionLogger::getExtensionState,
                              CompanionLogger::openSafari, CompanionLogger::openExtensionsSettings})
        EXPECT_EQ(companionLoggerFromRawValue(rawValue(logger)), logger);
    EXPECT_EQ(rawValue(CompanionLogger::oauthHandleUrl), "oauth.handleUrl");
}

TEST(LogMessage, OptionalFieldsThatAreNoneAreLeftOutNeverNull)
{
    LogMessage message;
    message.application = "extensionSafari";
    message.version = "1.0.0";
    message.sessionId = "S";
    message.logger = "companion.openSafari";
    EXPECT_EQ(nlohmann::ordered_json(message).dump(),
              R"({"application":"extensionSafari","version":"1.0.0","env":"prod","sessionId":"S",)"
              R"("logger":"companion.openSafari","level":"ERROR"})");
}

TEST(LogMessage, AllFieldsAreWrittenInFieldOrder)
{
    const LogMessage message{"extensionSafari",      "1.0.0",        EnvType::dev, "S", "u", "c",
                             "companion.openSafari", LogLevel::info, "m"};
    EXPECT_EQ(nlohmann::ordered_json(message).dump(),
              R"({"application":"extensionSafari","version":"1.0.0","env":"dev","sessionId":"S",)"
              R"("userId":"u","containerId":"c","logger":"companion.openSafari","level":"INFO",)"
              R"("message":"m"})");
}

} // namespace

} // namespace lexmira
