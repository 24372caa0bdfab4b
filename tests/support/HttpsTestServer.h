// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <nlohmann/json.hpp>

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

class QSslServer;
class QSslSocket;

namespace lexmira {

namespace test {

// A real HTTPS/1.1 server on 127.0.0.1 with a certificate issued, at test time, by a throwaway
// certificate authority (caFile()). Clients trust it through LEXMIRA_EXTRA_CA_FILE. It records
// every request and answers from a handler. Lives on the thread that created it, which must run
// its event loop (test::waitUntil, test::spin); every member is for that thread only.
class HttpsTestServer final : public QObject {
    Q_OBJECT

public:
    using Fields = std::vector<std::pair<QByteArray, QByteArray>>;

    struct Request {
        QByteArray method;
        QByteArray target; // path and query, as on the request line
        Fields headers;    // in the order received, names as spelled by the client
        QByteArray body;

        // The first header of that name (case-insensitive), if any.
        std::optional<QByteArray> header(const QByteArray& name) const;
        // The body as JSON; none when it is not one JSON document.
        std::optional<nlohmann::ordered_json> json() const;
    };

    struct Response {
        int status = 200;
        Fields headers; // sent in order; Content-Length is added unless the status has no body
        QByteArray body;
        // When set, these bytes are sent instead of a well-formed answer, then the connection is
        // closed: a malformed or truncated HTTP answer.
        std::optional<QByteArray> raw;
    };

    // Answers a request; none holds it unanswered until release().
    using Handler = std::function<std::optional<Response>(const Request&)>;

    // Listens on an ephemeral port of 127.0.0.1. Answers 200 with an empty body until told
    // otherwise.
    explicit HttpsTestServer(QObject* parent = nullptr);
    ~HttpsTestServer() override;

    quint16 port() const;
    // "127.0.0.1:<port>", as a host override takes it.
    QString hostAndPort() const;
    // "https://127.0.0.1:<port>" followed by path.
    QUrl url(const QString& path = QStringLiteral("/")) const;

    void setHandler(Handler handler);
    // Answers every request the same way.
    void respondWith(Response response);
    // Holds every request unanswered until release().
    void holdRequests();

    const std::vector<Request>& requests() const { return requests_; }
    // Runs the event loop until at least count requests arrived or timeout passed.
    bool waitForRequests(std::size_t count,
                         std::chrono::milliseconds timeout = std::chrono::seconds(10));
    std::size_t heldCount() const { return held_.size(); }
    // Answers the oldest held request with response. Returns false when none was held.
    bool release(const Response& response);
    // Starts answering the oldest held request with a status line and a header announcing a
    // large body, then sends one byte of it every interval, for as long as the client listens.
    // Returns false when none was held.
    bool trickle(std::chrono::milliseconds interval);

    // The PEM file of the test certificate authority, generated once per process.
    static QString caFile();
    // A loopback port on which nothing listens: connections to it are refused.
    static quint16 closedPort();

private:
    struct Connection;

    void accept();
    void readFrom(const std::shared_ptr<Connection>& connection);
    static void answer(QSslSocket* socket, const Response& response);

    std::unique_ptr<QSslServer> server_;
    Handler handler_;
    std::vector<Request> requests_;
    std::deque<QPointer<QSslSocket>> held_;
    std::vector<std::shared_ptr<Connection>> connections_;
};

// Common answers.
HttpsTestServer::Response httpStatus(int status, QByteArray body = {});
HttpsTestServer::Response httpJson(int status, const nlohmann::ordered_json& body,
                                   HttpsTestServer::Fields headers = {});

} // namespace test

} // namespace lexmira
