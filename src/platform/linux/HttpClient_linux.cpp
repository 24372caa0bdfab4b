// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/HttpClient.h"

#include "platform/linux/TlsTrust.h"
#include "util/ThreadHandOff.h"

#include <QMutex>
#include <QMutexLocker>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSslConfiguration>
#include <QThread>
#include <QTimer>

#include <future>
#include <optional>

namespace lexmira {

namespace {

// Errors by which Qt reports the status of a response that did arrive; the server answered, so
// for the caller they are a response, not a failure.
bool describesArrivedStatus(QNetworkReply::NetworkError error)
{
    const int code = error;
    return code == QNetworkReply::NoError ||
           (code >= QNetworkReply::ContentAccessDenied &&
            code <= QNetworkReply::UnknownContentError) ||
           code == QNetworkReply::ProtocolInvalidOperationError ||
           code == QNetworkReply::ProxyAuthenticationRequiredError ||
           (code >= QNetworkReply::InternalServerError &&
            code <= QNetworkReply::UnknownServerError);
}

QNetworkRequest networkRequest(const HttpRequest& request, const QSslConfiguration& tls,
                               const QByteArray& userAgent)
{
    QNetworkRequest result(request.url);
    if (!userAgent.isEmpty())
        result.setRawHeader("User-Agent", userAgent);
    for (const auto& [name, value] : request.headerFields)
        result.setRawHeader(name, value);
    result.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    result.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    result.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    result.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    result.setTransferTimeout(int(request.timeout.count()));
    result.setSslConfiguration(tls);
    return result;
}

HttpResponse responseOf(const QNetworkReply& reply)
{
    HttpResponse response;
    response.statusCode = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    for (const auto& [name, value] : reply.rawHeaderPairs())
        response.headerFields.emplace_back(name, value);
    response.url = reply.url();
    return response;
}

// One request in flight, on the worker thread: watches its size and its time, and calls the
// completion exactly once. Deletes itself with its reply.
class Exchange final : public QObject {
public:
    Exchange(QNetworkReply* reply, const HttpRequest& request, HttpClient::Completion completion)
        : QObject(reply)
        , reply_(reply)
        , maxBodyBytes_(request.maxBodyBytes)
        , completion_(std::move(completion))
    {
        connect(reply, &QNetworkReply::finished, this, &Exchange::finished);
        connect(reply, &QNetworkReply::metaDataChanged, this, &Exchange::headerArrived);
        connect(reply, &QNetworkReply::downloadProgress, this, &Exchange::progressed);
        auto* deadline = new QTimer(this);
        deadline->setSingleShot(true);
        connect(deadline, &QTimer::timeout, this,
                [this] { fail(QStringLiteral("The request took longer than allowed")); });
        deadline->start(request.transferTime);
    }

private:
    void headerArrived()
    {
        // A caller that ignores the body has all it needs once the status is known, unless the
        // status is a redirect that is still to be followed.
        const QVariant status = reply_->attribute(QNetworkRequest::HttpStatusCodeAttribute);
        const bool redirect = status.toInt() / 100 == 3 && reply_->hasRawHeader("Location");
        if (maxBodyBytes_ == 0 && status.isValid() && !redirect)
            succeed(QByteArray());
    }

    void progressed(qint64 received, qint64 total)
    {
        if (maxBodyBytes_ > 0 && (received > maxBodyBytes_ || total > maxBodyBytes_))
            fail(QStringLiteral("The response is larger than allowed"));
    }

    void finished()
    {
        const QVariant status = reply_->attribute(QNetworkRequest::HttpStatusCodeAttribute);
        if (!status.isValid() || !describesArrivedStatus(reply_->error())) {
            fail(reply_->errorString());
            return;
        }
        const QByteArray body = reply_->readAll();
        if (body.size() > maxBodyBytes_ && maxBodyBytes_ > 0) {
            fail(QStringLiteral("The response is larger than allowed"));
            return;
        }
        succeed(maxBodyBytes_ == 0 ? QByteArray() : body);
    }

    void succeed(const QByteArray& body)
    {
        if (!completion_)
            return;
        const auto completion = std::exchange(completion_, nullptr);
        end();
        completion(body, responseOf(*reply_), std::nullopt);
    }

    void fail(const QString& reason)
    {
        if (!completion_)
            return;
        const auto completion = std::exchange(completion_, nullptr);
        end();
        completion(std::nullopt, std::nullopt, HttpError{reason});
    }

    // Stops whatever is still coming; the reply, and this with it, go on the next turn.
    void end()
    {
        disconnect(reply_, nullptr, this, nullptr);
        if (reply_->isRunning())
            reply_->abort();
        reply_->deleteLater();
    }

    QNetworkReply* reply_;
    const qsizetype maxBodyBytes_;
    HttpClient::Completion completion_;
};

// The worker thread and its QNetworkAccessManager, which is created, used and destroyed on it.
class NetworkThread final : public QThread {
public:
    NetworkThread()
    {
        setObjectName(QStringLiteral("HttpClient"));
        auto ready = managerReady_.get_future();
        start();
        manager_ = ready.get();
    }

    ~NetworkThread() override
    {
        quit();
        wait();
        ThreadHandOff::acquire(this);
    }

    // Lives on this thread; valid until the thread ends.
    QNetworkAccessManager* manager() const { return manager_; }

protected:
    void run() override
    {
        {
            QNetworkAccessManager manager;
            managerReady_.set_value(&manager);
            exec();
            // Leaving scope destroys the replies still running, without a finished signal.
        }
        // Everything the thread did happens before the destructor's wait() returns.
        ThreadHandOff::release(this);
    }

private:
    std::promise<QNetworkAccessManager*> managerReady_;
    QNetworkAccessManager* manager_ = nullptr;
};

class QtHttpClient final : public HttpClient {
public:
    explicit QtHttpClient(QByteArray userAgent)
        : userAgent_(std::move(userAgent))
    {
    }

    void send(HttpRequest request, Completion completion) override
    {
        auto* manager = thread_.manager();
        ThreadHandOff::queue(manager, [manager, tls = tls(), userAgent = userAgent_,
                                       request = std::move(request),
                                       completion = std::move(completion)]() mutable {
            QNetworkReply* reply = manager->sendCustomRequest(networkRequest(request, tls, userAgent),
                                                              request.method, request.body);
            new Exchange(reply, request, std::move(completion));
        });
    }

private:
    // The TLS settings of every request, made at the first one rather than with the client:
    // setting up TLS loads the TLS libraries and reads their configuration, and the window does
    // not wait for that. They are made on the thread that sends, never on the worker: a process
    // that ends right after its start would otherwise tear down what the worker is still loading.
    QSslConfiguration tls()
    {
        const QMutexLocker lock(&tlsMutex_);
        if (!tls_)
            tls_ = verifyingTlsConfiguration();
        return *tls_;
    }

    QMutex tlsMutex_;
    std::optional<QSslConfiguration> tls_;
    const QByteArray userAgent_;
    NetworkThread thread_;
};

} // namespace

std::unique_ptr<HttpClient> HttpClient::create(const QByteArray& userAgent)
{
    return std::make_unique<QtHttpClient>(userAgent.isEmpty() ? userAgentFor(QString())
                                                              : userAgent);
}

} // namespace lexmira
