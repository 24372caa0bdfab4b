// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "services/Auth.h"

#include "platform/HttpCookieParser.h"
#include "util/Json.h"

#include "support/HttpsTestServer.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QThread>

#include <mutex>

namespace lexmira {

namespace {

using test::HttpsTestServer;
using Tokens = Auth::Tokens;
using User = Auth::User;

const nlohmann::ordered_json userBody{{"id", "u-1"},        {"email", "u@lexmira.test"},
                                      {"groups", {"beta"}}, {"name", "Una"},
                                      {"anonymous", false}, {"isTest", true}};

HttpsTestServer::Response userAnswer(HttpsTestServer::Fields cookies,
                                     const nlohmann::ordered_json& body = userBody,
                                     int status = 200)
{
    return test::httpJson(status, body, std::move(cookies));
}

class AuthTest : public ::testing::Test {
protected:
    AuthTest()
    {
        qputenv("LEXMIRA_EXTRA_CA_FILE", HttpsTestServer::caFile().toUtf8());
        http = HttpClient::create();
    }

    QUrl userUrl() const { return server.url(QStringLiteral("/v3/user/oranonymous")); }

    // Sends the user request through the real transport and waits for the completion.
    std::optional<User> fetch(const std::optional<Tokens>& tokens = {},
                              const std::optional<std::string>& containerId = {})
    {
        struct Result {
            std::mutex mutex;
            bool done = false;
            std::optional<User> user;
            QThread* thread = nullptr;
        };
        auto result = std::make_shared<Result>();
        const QUrl url = userUrl();
        http->send(auth.makeUserRequest("POST", url, tokens, containerId),
                   [this, url, tokens, containerId, result](std::optional<QByteArray> data,
                                                            std::optional<HttpResponse> response,
                                                            std::optional<HttpError> error) {
                       auth.handleUserResponse(data, response, error, url, tokens, containerId,
                                               [result](std::optional<User> user) {
                                                   const std::lock_guard lock(result->mutex);
                                                   EXPECT_FALSE(result->done) << "called twice";
                                                   result->user = std::move(user);
                                                   result->thread = QThread::currentThread();
                                                   result->done = true;
                                               });
                   });
        EXPECT_TRUE(test::waitUntil([result] {
            const std::lock_guard lock(result->mutex);
            return result->done;
        }));
        const std::lock_guard lock(result->mutex);
        completionThread = result->thread;
        return result->user;
    }

    HttpsTestServer server;
    std::unique_ptr<HttpClient> http;
    const Auth auth{"companion-linux", "1.0.0", HttpCookieParser::create()};
    QThread* completionThread = nullptr;
};

TEST_F(AuthTest, WithoutTokensOrContainerTheRequestHasTheClientHeadersOnly)
{
    const auto request = auth.makeUserRequest("POST", userUrl(), std::nullopt, std::nullopt);
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.url, userUrl());
    EXPECT_EQ(request.timeout, std::chrono::seconds(60));
    EXPECT_TRUE(request.body.isEmpty());
    EXPECT_EQ(request.headerFields, (HttpHeaderFields{{"X-Client-Type", "companion-linux"},
                                                      {"X-Client-Version", "1.0.0"}}));

    server.respondWith(userAnswer({}));
    fetch();
    ASSERT_EQ(server.requests().size(), 1u);
    const auto& received = server.requests().front();
    EXPECT_EQ(received.method, "POST");
    EXPECT_EQ(received.target, "/v3/user/oranonymous");
    EXPECT_EQ(received.header("X-Client-Type"), "companion-linux");
    EXPECT_EQ(received.header("X-Client-Version"), "1.0.0");
    EXPECT_EQ(received.header("cookie"), std::nullopt);
    EXPECT_EQ(received.header("X-CSRF-Token"), std::nullopt);
    EXPECT_EQ(received.header("X-Container-Id"), std::nullopt);
}

TEST_F(AuthTest, TokensAndContainerGoAsHeadersAndAsThreeCookiesInMapOrder)
{
    const auto request = auth.makeUserRequest("POST", userUrl(), Tokens{"A", "C"}, "K");
    EXPECT_EQ(request.headerFields, (HttpHeaderFields{
                                        {"X-Client-Type", "companion-linux"},
                                        {"X-Client-Version", "1.0.0"},
                                        {"X-CSRF-Token", "C"},
                                        {"X-Container-Id", "K"},
                                        {"cookie", "lxauth=A; csrf-token=C; norv_containerId=K"},
                                    }));

    server.respondWith(userAnswer({}));
    fetch(Tokens{"A", "C"}, "K");
    ASSERT_EQ(server.requests().size(), 1u);
    const auto& received = server.requests().front();
    EXPECT_EQ(received.header("X-CSRF-Token"), "C");
    EXPECT_EQ(received.header("X-Container-Id"), "K");
    const auto& headers = received.headers;
    EXPECT_NE(std::find(headers.begin(), headers.end(),
                        std::pair<QByteArray, QByteArray>{
                            "cookie", "lxauth=A; csrf-token=C; norv_containerId=K"}),
              headers.end());
}

TEST_F(AuthTest, CookieValuesAreNeitherQuotedNorEscaped)
{
    const auto request = auth.makeUserRequest("POST", userUrl(), Tokens{"a b;c", "\"q\""}, "k=1");
    EXPECT_EQ(request.value("cookie"), "lxauth=a b;c; csrf-token=\"q\"; norv_containerId=k=1");
}

TEST_F(AuthTest, OnlyAContainerSendsOneCookie)
{
    const auto request = auth.makeUserRequest("POST", userUrl(), std::nullopt, "K");
    EXPECT_EQ(request.value("cookie"), "norv_containerId=K");
    EXPECT_EQ(request.value("X-CSRF-Token"), std::nullopt);
}

TEST_F(AuthTest, OnlyTokensSendTwoCookies)
{
    const auto request = auth.makeUserRequest("POST", userUrl(), Tokens{"A", "C"}, std::nullopt);
    EXPECT_EQ(request.value("cookie"), "lxauth=A; csrf-token=C");
    EXPECT_EQ(request.value("X-Container-Id"), std::nullopt);
}

TEST_F(AuthTest, AUserArrivesOnTheTransportsWorkerThread)
{
    server.respondWith(userAnswer({}));
    const auto user = fetch();
    ASSERT_TRUE(user);
    EXPECT_EQ(user->id, "u-1");
    EXPECT_EQ(user->email, "u@lexmira.test");
    EXPECT_EQ(user->groups, std::vector<std::string>{"beta"});
    EXPECT_EQ(user->name, "Una");
    EXPECT_FALSE(user->isAnonymous);
    EXPECT_TRUE(user->isTest);
    EXPECT_NE(completionThread, QCoreApplication::instance()->thread());
}

TEST_F(AuthTest, NoContentWithAnEmptyBodyYieldsNoUser)
{
    server.respondWith(test::httpStatus(204));
    EXPECT_EQ(fetch(), std::nullopt);
}

TEST_F(AuthTest, NoContentIsAnAcceptedStatusWhenABodyCameWithIt)
{
    std::optional<User> user;
    auth.handleUserResponse(QByteArray::fromStdString(userBody.dump()),
                            HttpResponse{204, {{"Set-Cookie", "norv_containerId=K"}}, userUrl()},
                            std::nullopt, userUrl(), std::nullopt, std::nullopt,
                            [&user](std::optional<User> result) { user = std::move(result); });
    ASSERT_TRUE(user);
    EXPECT_EQ(user->id, "u-1");
    EXPECT_EQ(user->containerId, "K");
}

TEST_F(AuthTest, AnonymousKeyMapsToIsAnonymous)
{
    auto body = userBody;
    body["anonymous"] = true;
    server.respondWith(userAnswer({}, body));
    const auto user = fetch();
    ASSERT_TRUE(user);
    EXPECT_TRUE(user->isAnonymous);
}

TEST_F(AuthTest, IsAnonymousInsteadOfAnonymousFailsToDecode)
{
    auto body = userBody;
    body.erase("anonymous");
    body["isAnonymous"] = true;
    server.respondWith(userAnswer({}, body));
    EXPECT_EQ(fetch(), std::nullopt);
}

TEST_F(AuthTest, CsrfCookieWithoutLxauthKeepsTheCallersTokens)
{
    server.respondWith(userAnswer({{"Set-Cookie", "csrf-token=NEW-C; Path=/"}}));
    const auto user = fetch(Tokens{"OLD-A", "OLD-C"});
    ASSERT_TRUE(user);
    EXPECT_EQ(user->tokens, (Tokens{"OLD-A", "OLD-C"}));
}

TEST_F(AuthTest, CsrfCookieWithoutLxauthAndNoCallerTokensLeavesNone)
{
    server.respondWith(userAnswer({{"Set-Cookie", "csrf-token=NEW-C"}}));
    const auto user = fetch();
    ASSERT_TRUE(user);
    EXPECT_EQ(user->tokens, std::nullopt);
}

TEST_F(AuthTest, BothTokenCookiesReplaceTheCallersTokens)
{
    server.respondWith(userAnswer(
        {{"Set-Cookie", "lxauth=NEW-A; Secure; HttpOnly"}, {"Set-Cookie", "csrf-token=NEW-C"}}));
    const auto user = fetch(Tokens{"OLD-A", "OLD-C"});
    ASSERT_TRUE(user);
    EXPECT_EQ(user->tokens, (Tokens{"NEW-A", "NEW-C"}));
}

TEST_F(AuthTest, ContainerCookieReplacesTheContainerEvenWhenTheBodyCarriesAnother)
{
    auto body = userBody;
    body["containerId"] = "from-body";
    server.respondWith(userAnswer({{"Set-Cookie", "norv_containerId=from-cookie"}}, body));
    const auto user = fetch(std::nullopt, "from-caller");
    ASSERT_TRUE(user);
    EXPECT_EQ(user->containerId, "from-cookie");
}

TEST_F(AuthTest, WithoutCookiesTheCallersValuesWinOverTheBodys)
{
    auto body = userBody;
    body["containerId"] = "from-body";
    body["tokens"] = {{"auth", "body-A"}, {"csrf", "body-C"}};
    server.respondWith(userAnswer({}, body));

    const auto withCallerValues = fetch(Tokens{"A", "C"}, "K");
    ASSERT_TRUE(withCallerValues);
    EXPECT_EQ(withCallerValues->tokens, (Tokens{"A", "C"}));
    EXPECT_EQ(withCallerValues->containerId, "K");

    const auto withNone = fetch();
    ASSERT_TRUE(withNone);
    EXPECT_EQ(withNone->tokens, std::nullopt);
    EXPECT_EQ(withNone->containerId, std::nullopt);
}

TEST_F(AuthTest, CookieNamesAreMatchedCaseSensitively)
{
    server.respondWith(userAnswer({{"Set-Cookie", "CSRF-Token=X"},
                                   {"Set-Cookie", "LXAUTH=Y"},
                                   {"Set-Cookie", "Norv_ContainerId=Z"}}));
    const auto user = fetch(Tokens{"A", "C"}, "K");
    ASSERT_TRUE(user);
    EXPECT_EQ(user->tokens, (Tokens{"A", "C"}));
    EXPECT_EQ(user->containerId, "K");
}

TEST_F(AuthTest, ALaterCookieOfTheSameNameWins)
{
    server.respondWith(userAnswer(
        {{"Set-Cookie", "norv_containerId=first"}, {"Set-Cookie", "norv_containerId=second"}}));
    const auto user = fetch();
    ASSERT_TRUE(user);
    EXPECT_EQ(user->containerId, "second");
}

TEST_F(AuthTest, CookiesJoinedInOneFieldWithCommasAreEachRead)
{
    server.respondWith(userAnswer(
        {{"Set-Cookie", "lxauth=A2; Path=/, csrf-token=C2; Expires=Wed, 21 Oct 2099 07:28:00 GMT; "
                        "Secure, norv_containerId=K2"}}));
    const auto user = fetch(Tokens{"A", "C"}, "K");
    ASSERT_TRUE(user);
    EXPECT_EQ(user->tokens, (Tokens{"A2", "C2"}));
    EXPECT_EQ(user->containerId, "K2");
}

TEST_F(AuthTest, CookieValueThatIsNotUtf8IsIgnoredAndTheCallersValueKept)
{
    server.respondWith(userAnswer({{"Set-Cookie", "norv_containerId=\xff\xfe"}}));
    const auto user = fetch(std::nullopt, "K");
    ASSERT_TRUE(user);
    EXPECT_EQ(user->containerId, "K");
    EXPECT_TRUE(Json::encode(nlohmann::ordered_json(*user)).has_value())
        << "the user must stay encodable";
}

TEST_F(AuthTest, ErrorStatusesYieldNoUserEvenWithAUserBody)
{
    for (const int status : {201, 301, 400, 401, 404, 500, 503}) {
        server.respondWith(userAnswer({{"Set-Cookie", "norv_containerId=K"}}, userBody, status));
        EXPECT_EQ(fetch(), std::nullopt) << status;
    }
}

TEST_F(AuthTest, UndecodableBodiesYieldNoUser)
{
    const std::vector<QByteArray> bodies{
        "",
        "not json",
        "[]",
        "null",
        R"({"id":"u"})",
        R"({"id":1,"email":"e","groups":[],"name":"n","anonymous":false,"isTest":false})",
        R"({"id":"u","email":"e","groups":"g","name":"n","anonymous":false,"isTest":false})",
        R"({"id":"u","email":"e","groups":[],"name":"n","anonymous":"no","isTest":false})",
        R"({"id":"u","email":"e","groups":[],"name":"n","anonymous":false,"isTest":false,"containerId":7})",
        R"({"id":"u","email":"e","groups":[],"name":"n","anonymous":false,"isTest":false,"tokens":{"auth":"a"}})",
        "\xff\xfe"};
    for (const auto& body : bodies) {
        server.respondWith(test::httpStatus(200, body));
        EXPECT_EQ(fetch(), std::nullopt) << body.toStdString();
    }
}

TEST_F(AuthTest, TransportFailuresYieldNoUser)
{
    HttpsTestServer::Response garbage;
    garbage.raw = "HTTP/1.1 ???\r\n\r\n";
    server.respondWith(garbage);
    EXPECT_EQ(fetch(), std::nullopt);

    std::optional<User> user = User{};
    auth.handleUserResponse(std::nullopt, std::nullopt, HttpError{QStringLiteral("offline")},
                            userUrl(), Tokens{"A", "C"}, "K",
                            [&user](std::optional<User> result) { user = std::move(result); });
    EXPECT_EQ(user, std::nullopt);
}

TEST_F(AuthTest, PresentDataWithoutAResponseYieldsNoUser)
{
    std::optional<User> user = User{};
    auth.handleUserResponse(QByteArray::fromStdString(userBody.dump()), std::nullopt, std::nullopt,
                            userUrl(), std::nullopt, std::nullopt,
                            [&user](std::optional<User> result) { user = std::move(result); });
    EXPECT_EQ(user, std::nullopt);
}

TEST_F(AuthTest, AResponseWithoutDataYieldsNoUser)
{
    std::optional<User> user = User{};
    auth.handleUserResponse(std::nullopt, HttpResponse{200, {}, userUrl()}, std::nullopt, userUrl(),
                            std::nullopt, std::nullopt,
                            [&user](std::optional<User> result) { user = std::move(result); });
    EXPECT_EQ(user, std::nullopt);
}

TEST(AuthUser, NullOptionalsDecodeAsNone)
{
    const auto user = nlohmann::ordered_json::parse(
                          R"({"id":"u","email":"e","groups":[],"name":"n","anonymous":true,)"
                          R"("isTest":false,"containerId":null,"tokens":null,"extra":1})")
                          .get<User>();
    EXPECT_EQ(user.containerId, std::nullopt);
    EXPECT_EQ(user.tokens, std::nullopt);
    EXPECT_TRUE(user.isAnonymous);
}

TEST(AuthUser, EncodesInFieldOrderWithTheAnonymousKeyAndOptionalsOnlyWhenPresent)
{
    User user{"u", "e", {"g1", "g2"}, "n", true, false, std::nullopt, std::nullopt};
    EXPECT_EQ(
        nlohmann::ordered_json(user).dump(),
        R"({"id":"u","email":"e","groups":["g1","g2"],"name":"n","anonymous":true,"isTest":false})");
    user.containerId = "K";
    user.tokens = Tokens{"A", "C"};
    EXPECT_EQ(nlohmann::ordered_json(user).dump(),
              R"({"id":"u","email":"e","groups":["g1","g2"],"name":"n","anonymous":true,)"
              R"("isTest":false,"containerId":"K","tokens":{"auth":"A","csrf":"C"}})");
    EXPECT_EQ(nlohmann::ordered_json(user).get<User>(), user);
}

TEST(AuthUserUrl, IsHttpsOnTheAccountHostWithTheUserPath)
{
    EXPECT_EQ(Auth::userUrl({"account.lexmira.test", std::nullopt}),
              QUrl(QStringLiteral("https://account.lexmira.test/v3/user/oranonymous")));
    EXPECT_EQ(Auth::userUrl({"127.0.0.1", 8443}),
              QUrl(QStringLiteral("https://127.0.0.1:8443/v3/user/oranonymous")));
    EXPECT_EQ(Auth::userUrl({"no such host!", std::nullopt}), std::nullopt);
    EXPECT_EQ(Auth::userUrl({"", std::nullopt}), std::nullopt);
}

TEST(SetCookieField, SplitsAtCommasThatStartACookieOnly)
{
    using Cookies = std::vector<QByteArray>;
    EXPECT_EQ(HttpCookieFields::split("a=1, b=2"), (Cookies{"a=1", "b=2"}));
    EXPECT_EQ(HttpCookieFields::split("a=1; Expires=Wed, 21 Oct 2099 07:28:00 GMT, b=2"),
              (Cookies{"a=1; Expires=Wed, 21 Oct 2099 07:28:00 GMT", "b=2"}));
    EXPECT_EQ(HttpCookieFields::split("a=1; expires=Wednesday, 21-Oct-99 07:28:00 GMT"),
              (Cookies{"a=1; expires=Wednesday, 21-Oct-99 07:28:00 GMT"}));
    EXPECT_EQ(HttpCookieFields::split("a=x,y"), (Cookies{"a=x,y"}));
    EXPECT_EQ(HttpCookieFields::split("a=1\nb=2"), (Cookies{"a=1", "b=2"}));
    EXPECT_EQ(HttpCookieFields::split(""), Cookies{});
    EXPECT_EQ(HttpCookieFields::split("a=1,\n\nb=2"), (Cookies{"a=1,", "b=2"}));
}

} // namespace

} // namespace lexmira
