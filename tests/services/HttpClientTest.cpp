// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/HttpClient.h"

#include "platform/HttpCookieParser.h"
#include "support/HttpsTestServer.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QThread>

#include <atomic>
#include <mutex>
#include <thread>

namespace lexmira {

namespace {

using test::HttpsTestServer;

// What one completion delivered, and on which thread.
struct Outcome {
    std::optional<QByteArray> data;
    std::optional<HttpResponse> response;
    std::optional<HttpError> error;
    QThread* thread = nullptr;
};

class Recorder {
public:
    HttpClient::Completion completion()
    {
        return [this](std::optional<QByteArray> data, std::optional<HttpResponse> response,
                      std::optional<HttpError> error) {
            const std::lock_guard lock(mutex_);
            outcomes_.push_back(
                {std::move(data), std::move(response), std::move(error), QThread::currentThread()});
        };
    }

    bool waitFor(std::size_t count)
    {
        return test::waitUntil([this, count] { return size() >= count; });
    }

    std::size_t size() const
    {
        const std::lock_guard lock(mutex_);
        return outcomes_.size();
    }

    Outcome at(std::size_t index) const
    {
        const std::lock_guard lock(mutex_);
        return outcomes_.at(index);
    }

private:
    mutable std::mutex mutex_;
    std::vector<Outcome> outcomes_;
};

class HttpClientTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        qputenv("LEXMIRA_EXTRA_CA_FILE", HttpsTestServer::caFile().toUtf8());
        client = HttpClient::create();
    }

    HttpRequest get(const QString& path = QStringLiteral("/")) const
    {
        HttpRequest request;
        request.url = server.url(path);
        return request;
    }

    HttpsTestServer server;
    // Outlives the client, whose worker thread may still complete into it until the client goes.
    Recorder recorder;
    std::unique_ptr<HttpClient> client;
};

TEST_F(HttpClientTest, SendsMethodHeaderFieldsInOrderAndBody)
{
    HttpRequest request = get(QStringLiteral("/logv2"));
    request.method = "POST";
    request.headerFields = {
        {"Origin", "https://web.test"}, {"Content-Type", "application/json"}, {"X-Second", "2"}};
    request.body = R"({"a":1})";
    client->send(request, recorder.completion());

    ASSERT_TRUE(server.waitForRequests(1));
    const auto& received = server.requests().front();
    EXPECT_EQ(received.method, "POST");
    EXPECT_EQ(received.target, "/logv2");
    EXPECT_EQ(received.body, R"({"a":1})");
    EXPECT_EQ(received.header("Origin"), "https://web.test");
    EXPECT_EQ(received.header("Content-Type"), "application/json");
    std::vector<QByteArray> names;
    for (const auto& [name, value] : received.headers)
        if (name == "Origin" || name == "Content-Type" || name == "X-Second")
            names.push_back(name);
    EXPECT_EQ(names, (std::vector<QByteArray>{"Origin", "Content-Type", "X-Second"}));
    ASSERT_TRUE(recorder.waitFor(1));
}

TEST_F(HttpClientTest, HeaderNamesKeepTheirSpelling)
{
    HttpRequest request = get();
    request.headerFields = {{"cookie", "a=1; b=2"}, {"X-Client-Type", "t"}};
    client->send(request, recorder.completion());

    ASSERT_TRUE(server.waitForRequests(1));
    const auto& headers = server.requests().front().headers;
    const auto has = [&headers](const QByteArray& name, const QByteArray& value) {
        return std::find(headers.begin(), headers.end(), std::pair{name, value}) != headers.end();
    };
    EXPECT_TRUE(has("cookie", "a=1; b=2"));
    EXPECT_TRUE(has("X-Client-Type", "t"));
}

TEST_F(HttpClientTest, PostWithoutBodySendsNoContentTypeOfItsOwn)
{
    HttpRequest request = get();
    request.method = "POST";
    client->send(request, recorder.completion());

    ASSERT_TRUE(server.waitForRequests(1));
    EXPECT_EQ(server.requests().front().header("Content-Type"), std::nullopt);
    EXPECT_EQ(server.requests().front().body, QByteArray());
}

TEST_F(HttpClientTest, CompletesOnTheWorkerThreadWithStatusFieldsAndBody)
{
    server.respondWith(test::httpJson(200, {{"ok", true}}, {{"X-Answer", "42"}}));
    client->send(get(QStringLiteral("/a")), recorder.completion());

    ASSERT_TRUE(recorder.waitFor(1));
    const auto outcome = recorder.at(0);
    EXPECT_NE(outcome.thread, QCoreApplication::instance()->thread());
    EXPECT_FALSE(outcome.error);
    ASSERT_TRUE(outcome.response);
    EXPECT_EQ(outcome.response->statusCode, 200);
    EXPECT_EQ(outcome.response->value("x-answer"), "42");
    EXPECT_EQ(outcome.response->url, server.url(QStringLiteral("/a")));
    EXPECT_EQ(outcome.data, R"({"ok":true})");
}

TEST_F(HttpClientTest, ClientAndServerErrorStatusesAreResponsesNotErrors)
{
    int next = 0;
    const std::vector<int> statuses{400, 404, 500, 503};
    server.setHandler([&](const HttpsTestServer::Request&) {
        return std::optional(test::httpStatus(statuses.at(std::size_t(next++)), "body"));
    });
    for (std::size_t i = 0; i < statuses.size(); ++i) {
        client->send(get(), recorder.completion());
        ASSERT_TRUE(recorder.waitFor(i + 1));
        const auto outcome = recorder.at(i);
        EXPECT_FALSE(outcome.error) << statuses[i];
        ASSERT_TRUE(outcome.response) << statuses[i];
        EXPECT_EQ(outcome.response->statusCode, statuses[i]);
        EXPECT_EQ(outcome.data, "body");
    }
}

TEST_F(HttpClientTest, NoContentDeliversPresentEmptyData)
{
    server.respondWith(test::httpStatus(204));
    client->send(get(), recorder.completion());

    ASSERT_TRUE(recorder.waitFor(1));
    const auto outcome = recorder.at(0);
    ASSERT_TRUE(outcome.response);
    EXPECT_EQ(outcome.response->statusCode, 204);
    ASSERT_TRUE(outcome.data);
    EXPECT_TRUE(outcome.data->isEmpty());
}

TEST_F(HttpClientTest, RefusedConnectionIsAnErrorWithADescriptionAndNothingElse)
{
    HttpRequest request;
    request.url = QUrl(QStringLiteral("https://127.0.0.1:%1/").arg(HttpsTestServer::closedPort()));
    client->send(request, recorder.completion());

    ASSERT_TRUE(recorder.waitFor(1));
    const auto outcome = recorder.at(0);
    ASSERT_TRUE(outcome.error);
    EXPECT_FALSE(outcome.error->localizedDescription.isEmpty());
    EXPECT_FALSE(outcome.response);
    EXPECT_FALSE(outcome.data);
}

TEST_F(HttpClientTest, MalformedAnswerIsAnErrorNotACrash)
{
    HttpsTestServer::Response garbage;
    garbage.raw = QByteArray("NOT HTTP AT ALL\r\n\r\n\x01\x02", 21);
    server.respondWith(garbage);
    client->send(get(), recorder.completion());

    ASSERT_TRUE(recorder.waitFor(1));
    EXPECT_TRUE(recorder.at(0).error);
    EXPECT_FALSE(recorder.at(0).response);
}

TEST_F(HttpClientTest, TruncatedBodyIsAnError)
{
    HttpsTestServer::Response truncated;
    truncated.raw = "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nshort";
    server.respondWith(truncated);
    client->send(get(), recorder.completion());

    ASSERT_TRUE(recorder.waitFor(1));
    EXPECT_TRUE(recorder.at(0).error);
}

TEST_F(HttpClientTest, IdleRequestTimesOut)
{
    server.holdRequests();
    HttpRequest request = get();
    request.timeout = std::chrono::milliseconds(300);
    client->send(request, recorder.completion());

    ASSERT_TRUE(recorder.waitFor(1));
    EXPECT_TRUE(recorder.at(0).error);
}

TEST_F(HttpClientTest, TricklingServerCannotHoldARequestPastItsTransferTime)
{
    server.holdRequests();
    HttpRequest request = get();
    request.timeout = std::chrono::seconds(30);
    request.transferTime = std::chrono::seconds(1);
    client->send(request, recorder.completion());
    ASSERT_TRUE(server.waitForRequests(1));
    ASSERT_TRUE(server.trickle(std::chrono::milliseconds(100)));

    ASSERT_TRUE(recorder.waitFor(1));
    EXPECT_TRUE(recorder.at(0).error);
    EXPECT_FALSE(recorder.at(0).response);
}

TEST_F(HttpClientTest, RequestsAreBoundByTheTransferTimeUnlessTheyNameTheirOwn)
{
    EXPECT_EQ(HttpRequest().transferTime, HttpRequest::maxTransferTime);
    EXPECT_EQ(HttpRequest().maxBodyBytes, HttpRequest::defaultMaxBodyBytes);
}

TEST_F(HttpClientTest, BodyAtItsBoundIsDeliveredAndOneByteMoreIsAnError)
{
    HttpRequest request = get();
    request.maxBodyBytes = 1000;
    server.respondWith(test::httpStatus(200, QByteArray(1000, 'a')));
    client->send(request, recorder.completion());
    ASSERT_TRUE(recorder.waitFor(1));
    EXPECT_EQ(recorder.at(0).data, QByteArray(1000, 'a'));

    server.respondWith(test::httpStatus(200, QByteArray(1001, 'a')));
    client->send(request, recorder.completion());
    ASSERT_TRUE(recorder.waitFor(2));
    EXPECT_TRUE(recorder.at(1).error);
    EXPECT_FALSE(recorder.at(1).data);
}

TEST_F(HttpClientTest, IgnoredBodyIsNotReadAndTheResponseStillArrives)
{
    // Ten megabytes the caller has no use for.
    HttpRequest request = get();
    request.maxBodyBytes = 0;
    server.respondWith(test::httpStatus(201, QByteArray(10 * 1024 * 1024, 'a')));
    client->send(request, recorder.completion());
    ASSERT_TRUE(recorder.waitFor(1));
    ASSERT_TRUE(recorder.at(0).response);
    EXPECT_EQ(recorder.at(0).response->statusCode, 201);
    EXPECT_EQ(recorder.at(0).data, QByteArray());
}

TEST_F(HttpClientTest, UserAgentNamesTheCompanionAndItsVersion)
{
    client = HttpClient::create(HttpClient::userAgentFor(QStringLiteral("9.8.7")));
    client->send(get(), recorder.completion());
    ASSERT_TRUE(recorder.waitFor(1));
    ASSERT_EQ(server.requests().size(), 1u);
    const auto agent = server.requests().front().header("User-Agent");
    ASSERT_TRUE(agent);
    EXPECT_TRUE(agent->startsWith("Lexmira Companion/9.8.7 (Linux; Qt ")) << agent->constData();
}

TEST_F(HttpClientTest, ServerNotSignedByATrustedAuthorityIsRejected)
{
    qunsetenv("LEXMIRA_EXTRA_CA_FILE");
    const auto untrusting = HttpClient::create();
    untrusting->send(get(), recorder.completion());

    ASSERT_TRUE(recorder.waitFor(1));
    const auto outcome = recorder.at(0);
    ASSERT_TRUE(outcome.error);
    EXPECT_FALSE(outcome.response);
    // The handshake fails before any request is made.
    EXPECT_TRUE(server.requests().empty());
}

TEST_F(HttpClientTest, CookiesSetByAResponseAreNeverSentBack)
{
    server.respondWith({200, {{"Set-Cookie", "lxauth=secret; Path=/"}}, {}, {}});
    client->send(get(), recorder.completion());
    ASSERT_TRUE(recorder.waitFor(1));
    client->send(get(), recorder.completion());
    ASSERT_TRUE(recorder.waitFor(2));

    ASSERT_EQ(server.requests().size(), 2u);
    EXPECT_EQ(server.requests()[1].header("Cookie"), std::nullopt);
}

TEST_F(HttpClientTest, NothingIsAnsweredFromACache)
{
    server.respondWith({200, {{"Cache-Control", "public, max-age=3600"}}, "cached?", {}});
    client->send(get(), recorder.completion());
    ASSERT_TRUE(recorder.waitFor(1));
    client->send(get(), recorder.completion());
    ASSERT_TRUE(recorder.waitFor(2));

    EXPECT_EQ(server.requests().size(), 2u);
}

TEST_F(HttpClientTest, SendIsCallableFromAnyThread)
{
    std::thread other([this] { client->send(get(), recorder.completion()); });
    other.join();
    client->send(get(), recorder.completion());

    ASSERT_TRUE(recorder.waitFor(2));
    EXPECT_EQ(server.requests().size(), 2u);
}

TEST_F(HttpClientTest, RepeatedSetCookieFieldsReachTheStandardParserInOrder)
{
    server.respondWith({200,
                        {{"Set-Cookie", "lxauth=A; Path=/; Secure; HttpOnly"},
                         {"Set-Cookie", "csrf-token=C"},
                         {"set-cookie", "norv_containerId=K; Max-Age=60"}},
                        {},
                        {}});
    client->send(get(), recorder.completion());

    ASSERT_TRUE(recorder.waitFor(1));
    const auto outcome = recorder.at(0);
    ASSERT_TRUE(outcome.response);
    const auto cookies =
        HttpCookieParser::create()->cookies(outcome.response->headerFields, server.url());
    EXPECT_EQ(cookies, (std::vector<HttpCookie>{
                           {"lxauth", "A"}, {"csrf-token", "C"}, {"norv_containerId", "K"}}));
}

TEST(HttpCookieParser, TakesNamesAndValuesVerbatimAndSkipsOtherFields)
{
    const auto parser = HttpCookieParser::create();
    const HttpHeaderFields fields{{"Content-Type", "text/plain"},
                                  {"SET-COOKIE", "CSRF-Token=x\nlxauth=a=b; Domain=other.test"},
                                  {"X-Set-Cookie", "ignored=1"}};
    EXPECT_EQ(parser->cookies(fields, QUrl(QStringLiteral("https://account.test/v3"))),
              (std::vector<HttpCookie>{{"CSRF-Token", "x"}, {"lxauth", "a=b"}}));
}

TEST(HttpCookieParser, ACookieWhoseValueHoldsANulIsNotTaken)
{
    // Found by the account response fuzz target: the value went back to the server in the next
    // request's X-Container-Id and cookie fields, NUL and all.
    const auto parser = HttpCookieParser::create();
    const HttpHeaderFields fields{
        {"Set-Cookie", QByteArray("norv_containerId=\"anonymous\"\0\0\0\"*lx<\x01", 37)},
        {"Set-Cookie", QByteArray("lxauth=a\0b; Path=/", 18)},
        {"Set-Cookie", "csrf-token=C"}};
    EXPECT_EQ(parser->cookies(fields, QUrl(QStringLiteral("https://account.test/v3"))),
              (std::vector<HttpCookie>{{"csrf-token", "C"}}));
}

TEST(HttpCookieParser, NoSetCookieMeansNoCookies)
{
    EXPECT_TRUE(HttpCookieParser::create()
                    ->cookies({{"Content-Length", "0"}}, QUrl(QStringLiteral("https://a.test/")))
                    .empty());
}

} // namespace

} // namespace lexmira
