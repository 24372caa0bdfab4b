// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/HttpClient.h"

#include "util/ThreadHandOff.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QThread>

#include <future>

namespace {

QList<QSslCertificate> extraCaCertificates()
{
    const QString path = qEnvironmentVariable("LEXMIRA_EXTRA_CA_FILE");
    if (path.isEmpty())
        return {};
    const auto certificates =
        QSslCertificate::fromPath(path, QSsl::Pem, QSslCertificate::PatternSyntax::FixedString);
    if (certificates.isEmpty())
        qWarning("LEXMIRA_EXTRA_CA_FILE names no readable PEM certificate: %s",
                 qUtf8Printable(path));
    return certificates;
}

QSslConfiguration tlsConfiguration()
{
    auto configuration = QSslConfiguration::defaultConfiguration();
    configuration.setPeerVerifyMode(QSslSocket::VerifyPeer);
    configuration.addCaCertificates(extraCaCertificates());
    return configuration;
}

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

QNetworkRequest networkRequest(const HttpRequest& request, const QSslConfiguration& tls)
{
    QNetworkRequest result(request.url);
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

void complete(QNetworkReply& reply, const HttpClient::Completion& completion)
{
    const QVariant status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (!status.isValid() || !describesArrivedStatus(reply.error())) {
        completion(std::nullopt, std::nullopt, HttpError{reply.errorString()});
        return;
    }
    HttpResponse response;
    response.statusCode = status.toInt();
    for (const auto& [name, value] : reply.rawHeaderPairs())
        response.headerFields.emplace_back(name, value);
    response.url = reply.url();
    completion(reply.readAll(), std::move(response), std::nullopt);
}

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
    }

    // Lives on this thread; valid until the thread ends.
    QNetworkAccessManager* manager() const { return manager_; }

protected:
    void run() override
    {
        QNetworkAccessManager manager;
        managerReady_.set_value(&manager);
        exec();
        // Leaving scope destroys the replies still running, without a finished signal.
    }

private:
    std::promise<QNetworkAccessManager*> managerReady_;
    QNetworkAccessManager* manager_ = nullptr;
};

class QtHttpClient final : public HttpClient {
public:
    QtHttpClient()
        : tls_(tlsConfiguration())
    {
    }

    void send(HttpRequest request, Completion completion) override
    {
        auto* manager = thread_.manager();
        ThreadHandOff::queue(manager, [manager, tls = tls_, request = std::move(request),
                                       completion = std::move(completion)] {
            QNetworkReply* reply = manager->sendCustomRequest(networkRequest(request, tls),
                                                              request.method, request.body);
            QObject::connect(reply, &QNetworkReply::finished, reply, [reply, completion] {
                reply->deleteLater();
                complete(*reply, completion);
            });
        });
    }

private:
    const QSslConfiguration tls_;
    NetworkThread thread_;
};

} // namespace

std::unique_ptr<HttpClient> HttpClient::create()
{
    return std::make_unique<QtHttpClient>();
}
