// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace lexmira {

// Header fields in the order they are set or were received. Names keep their spelling.
using HttpHeaderFields = std::vector<std::pair<QByteArray, QByteArray>>;

// One request. The client keeps no cookie store and no cache: a request carries exactly the
// header fields given here (plus the transport's own, such as Host and Content-Length), no
// cookie is ever added or remembered, and every request goes to the server.
struct HttpRequest {
    // The body a caller reads when it names no bound of its own.
    static constexpr qsizetype defaultMaxBodyBytes = 1024 * 1024;
    // How long a whole exchange may take however steadily bytes keep coming, so that a server
    // that trickles its answer cannot hold a request for ever.
    static constexpr std::chrono::seconds maxTransferTime{120};

    QUrl url;
    QByteArray method = QByteArrayLiteral("GET");
    HttpHeaderFields headerFields;
    QByteArray body;
    // How long the request may stay idle (no bytes moving) before it fails.
    std::chrono::milliseconds timeout = std::chrono::seconds(60);
    // How long the whole exchange may take, connection and body included.
    std::chrono::milliseconds transferTime = maxTransferTime;
    // The most body bytes the caller reads. A longer body fails the request; 0 means the caller
    // ignores the body: the response completes, with an empty body, once its header has come.
    qsizetype maxBodyBytes = defaultMaxBodyBytes;

    // The value of the first field named name (case-insensitively), if any.
    std::optional<QByteArray> value(const QByteArray& name) const;
    // Appends a field; an existing field of the same name (case-insensitively) is replaced in
    // place.
    void setValue(const QByteArray& value, const QByteArray& name);
};

// What the server answered: any status, 4xx and 5xx included, is a response, not an error.
struct HttpResponse {
    int statusCode = 0;
    // As received. Repeated Set-Cookie fields arrive as one field, the values separated by "\n".
    HttpHeaderFields headerFields;
    // The URL that answered, after any redirect.
    QUrl url;

    std::optional<QByteArray> value(const QByteArray& name) const;
};

// Why no response came: no connection, a TLS failure, a time-out, a broken answer.
struct HttpError {
    QString localizedDescription;
};

// Sends HTTPS requests on a worker thread of its own (the session's queue). TLS peers are always
// verified; the only certificates trusted besides the system's are those of the PEM file named
// by LEXMIRA_EXTRA_CA_FILE. Every request names the client in its User-Agent field, unless the
// request sets that field itself.
class HttpClient {
public:
    // Called exactly once per request, on the client's worker thread — never the main thread —
    // unless the client is destroyed first, in which case requests still running are dropped
    // without a call. The thread is fixed rather than chosen by a context: the clients of the
    // account, analytics and log services complete and write the system log there. A caller that
    // needs the answer elsewhere binds what it does next to a context there
    // (ThreadHandOff::bind). When a response came, data holds its body (present, possibly empty)
    // and error is none; otherwise error is set and data and response are none.
    using Completion =
        std::function<void(std::optional<QByteArray> data, std::optional<HttpResponse> response,
                           std::optional<HttpError> error)>;

    virtual ~HttpClient() = default;

    // Starts the request and returns at once. Callable from any thread.
    virtual void send(HttpRequest request, Completion completion) = 0;

    // userAgent: the User-Agent field sent with every request, "Lexmira Companion/<version>".
    static std::unique_ptr<HttpClient> create(const QByteArray& userAgent = {});

    // "Lexmira Companion/<version> (Linux; Qt <version>)".
    static QByteArray userAgentFor(const QString& applicationVersion);
};

} // namespace lexmira
