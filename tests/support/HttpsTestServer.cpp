// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "support/HttpsTestServer.h"

#include "support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QSslSocket>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <cstdlib>

namespace lexmira {

namespace test {

namespace {

struct Authority {
    QString caFile;
    QSslCertificate serverCertificate;
    QSslKey serverKey;
};

void runOpenssl(const QString& workDir, const QStringList& arguments)
{
    QProcess openssl;
    openssl.setWorkingDirectory(workDir);
    openssl.setProcessChannelMode(QProcess::MergedChannels);
    openssl.start(QStringLiteral("openssl"), arguments);
    if (!openssl.waitForFinished(60000) || openssl.exitStatus() != QProcess::NormalExit ||
        openssl.exitCode() != 0) {
        std::fprintf(stderr, "openssl %s failed: %s\n", qUtf8Printable(arguments.join(u' ')),
                     openssl.readAll().constData());
        std::abort();
    }
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read %s\n", qUtf8Printable(path));
        std::abort();
    }
    return file.readAll();
}

// A certificate authority and a server certificate for 127.0.0.1 and localhost, made with the
// openssl command line in a directory that lives as long as the process.
Authority makeAuthority()
{
    static QTemporaryDir dir;
    const QString d = dir.path();
    QFile extensions(QDir(d).filePath(QStringLiteral("server.ext")));
    extensions.open(QIODevice::WriteOnly);
    extensions.write("subjectAltName=IP:127.0.0.1,DNS:localhost\n"
                     "basicConstraints=critical,CA:FALSE\n"
                     "keyUsage=critical,digitalSignature,keyEncipherment\n"
                     "extendedKeyUsage=serverAuth\n");
    extensions.close();

    const QString ecKey = QStringLiteral("ec");
    const QString curve = QStringLiteral("ec_paramgen_curve:prime256v1");
    runOpenssl(d, {QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-newkey"), ecKey,
                   QStringLiteral("-pkeyopt"), curve, QStringLiteral("-nodes"),
                   QStringLiteral("-keyout"), QStringLiteral("ca.key"), QStringLiteral("-out"),
                   QStringLiteral("ca.pem"), QStringLiteral("-days"), QStringLiteral("2"),
                   QStringLiteral("-subj"), QStringLiteral("/CN=Lexmira Test Authority"),
                   QStringLiteral("-addext"), QStringLiteral("basicConstraints=critical,CA:TRUE"),
                   QStringLiteral("-addext"),
                   QStringLiteral("keyUsage=critical,keyCertSign,cRLSign")});
    runOpenssl(d,
               {QStringLiteral("req"), QStringLiteral("-newkey"), ecKey, QStringLiteral("-pkeyopt"),
                curve, QStringLiteral("-nodes"), QStringLiteral("-keyout"),
                QStringLiteral("server.key"), QStringLiteral("-out"), QStringLiteral("server.csr"),
                QStringLiteral("-subj"), QStringLiteral("/CN=localhost")});
    runOpenssl(d, {QStringLiteral("x509"), QStringLiteral("-req"), QStringLiteral("-in"),
                   QStringLiteral("server.csr"), QStringLiteral("-CA"), QStringLiteral("ca.pem"),
                   QStringLiteral("-CAkey"), QStringLiteral("ca.key"),
                   QStringLiteral("-CAcreateserial"), QStringLiteral("-out"),
                   QStringLiteral("server.pem"), QStringLiteral("-days"), QStringLiteral("2"),
                   QStringLiteral("-extfile"), QStringLiteral("server.ext")});

    Authority authority;
    authority.caFile = QDir(d).filePath(QStringLiteral("ca.pem"));
    authority.serverCertificate =
        QSslCertificate(readFile(QDir(d).filePath(QStringLiteral("server.pem"))), QSsl::Pem);
    authority.serverKey =
        QSslKey(readFile(QDir(d).filePath(QStringLiteral("server.key"))), QSsl::Ec, QSsl::Pem);
    if (authority.serverCertificate.isNull() || authority.serverKey.isNull()) {
        std::fprintf(stderr, "the test server certificate could not be loaded\n");
        std::abort();
    }
    return authority;
}

const Authority& authority()
{
    static const Authority instance = makeAuthority();
    return instance;
}

QByteArray reasonPhrase(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 204:
        return "No Content";
    case 400:
        return "Bad Request";
    case 404:
        return "Not Found";
    case 500:
        return "Internal Server Error";
    case 503:
        return "Service Unavailable";
    default:
        return "Status";
    }
}

bool hasNoBody(int status)
{
    return status == 204 || status == 304 || (status >= 100 && status < 200);
}

} // namespace

std::optional<QByteArray> HttpsTestServer::Request::header(const QByteArray& name) const
{
    for (const auto& [key, value] : headers)
        if (key.compare(name, Qt::CaseInsensitive) == 0)
            return value;
    return std::nullopt;
}

std::optional<nlohmann::ordered_json> HttpsTestServer::Request::json() const
{
    auto value = nlohmann::ordered_json::parse(body.begin(), body.end(), nullptr, false);
    if (value.is_discarded())
        return std::nullopt;
    return value;
}

// One client connection: bytes not yet parsed into a request.
struct HttpsTestServer::Connection {
    QPointer<QSslSocket> socket;
    QByteArray buffer;
};

HttpsTestServer::HttpsTestServer(QObject* parent)
    : QObject(parent)
    , server_(std::make_unique<QSslServer>())
    , handler_([](const Request&) { return std::optional<Response>(Response{}); })
{
    auto configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificate(authority().serverCertificate);
    configuration.setPrivateKey(authority().serverKey);
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    server_->setSslConfiguration(configuration);
    connect(server_.get(), &QTcpServer::pendingConnectionAvailable, this, &HttpsTestServer::accept);
    if (!server_->listen(QHostAddress::LocalHost, 0)) {
        std::fprintf(stderr, "the test server cannot listen: %s\n",
                     qUtf8Printable(server_->errorString()));
        std::abort();
    }
}

HttpsTestServer::~HttpsTestServer()
{
    for (const auto& connection : connections_)
        if (connection->socket)
            connection->socket->abort();
}

quint16 HttpsTestServer::port() const
{
    return server_->serverPort();
}

QString HttpsTestServer::hostAndPort() const
{
    return QStringLiteral("127.0.0.1:%1").arg(port());
}

QUrl HttpsTestServer::url(const QString& path) const
{
    return QUrl(QStringLiteral("https://127.0.0.1:%1%2").arg(port()).arg(path));
}

void HttpsTestServer::setHandler(Handler handler)
{
    handler_ = std::move(handler);
}

void HttpsTestServer::respondWith(Response response)
{
    handler_ = [response = std::move(response)](const Request&) {
        return std::optional<Response>(response);
    };
}

void HttpsTestServer::holdRequests()
{
    handler_ = [](const Request&) { return std::optional<Response>(); };
}

bool HttpsTestServer::waitForRequests(std::size_t count, std::chrono::milliseconds timeout)
{
    return waitUntil([this, count] { return requests_.size() >= count; }, timeout);
}

bool HttpsTestServer::trickle(std::chrono::milliseconds interval)
{
    while (!held_.empty()) {
        const QPointer<QSslSocket> socket = held_.front();
        held_.pop_front();
        if (!socket)
            continue;
        socket->write("HTTP/1.1 200 OK\r\nContent-Length: 1000000\r\n\r\n");
        auto* timer = new QTimer(socket);
        connect(timer, &QTimer::timeout, socket, [socket] {
            if (socket)
                socket->write("x");
        });
        timer->start(interval);
        return true;
    }
    return false;
}

bool HttpsTestServer::release(const Response& response)
{
    while (!held_.empty()) {
        const QPointer<QSslSocket> socket = held_.front();
        held_.pop_front();
        if (socket) {
            answer(socket, response);
            return true;
        }
    }
    return false;
}

QString HttpsTestServer::caFile()
{
    return authority().caFile;
}

quint16 HttpsTestServer::closedPort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    const quint16 port = probe.serverPort();
    probe.close();
    return port;
}

void HttpsTestServer::accept()
{
    while (server_->hasPendingConnections()) {
        auto* socket = qobject_cast<QSslSocket*>(server_->nextPendingConnection());
        if (!socket)
            continue;
        socket->setParent(this);
        auto connection = std::make_shared<Connection>();
        connection->socket = socket;
        connections_.push_back(connection);
        connect(socket, &QSslSocket::readyRead, this, [this, connection] { readFrom(connection); });
        connect(socket, &QSslSocket::disconnected, socket, &QObject::deleteLater);
        readFrom(connection);
    }
}

void HttpsTestServer::readFrom(const std::shared_ptr<Connection>& connection)
{
    if (!connection->socket)
        return;
    connection->buffer += connection->socket->readAll();
    for (;;) {
        const auto headerEnd = connection->buffer.indexOf("\r\n\r\n");
        if (headerEnd < 0)
            return;
        const QList<QByteArray> lines = connection->buffer.left(headerEnd).split('\n');
        Request request;
        const QList<QByteArray> requestLine = lines.value(0).trimmed().split(' ');
        request.method = requestLine.value(0);
        request.target = requestLine.value(1);
        qsizetype contentLength = 0;
        for (qsizetype i = 1; i < lines.size(); ++i) {
            const QByteArray line = lines[i].trimmed();
            const auto colon = line.indexOf(':');
            if (colon <= 0)
                continue;
            const QByteArray name = line.left(colon);
            const QByteArray value = line.mid(colon + 1).trimmed();
            if (name.compare("content-length", Qt::CaseInsensitive) == 0)
                contentLength = value.toLongLong();
            request.headers.emplace_back(name, value);
        }
        const qsizetype total = headerEnd + 4 + contentLength;
        if (connection->buffer.size() < total)
            return;
        request.body = connection->buffer.mid(headerEnd + 4, contentLength);
        connection->buffer.remove(0, total);

        requests_.push_back(request);
        if (const auto response = handler_(request))
            answer(connection->socket, *response);
        else
            held_.push_back(connection->socket);
    }
}

void HttpsTestServer::answer(QSslSocket* socket, const Response& response)
{
    if (!socket)
        return;
    if (response.raw) {
        socket->write(*response.raw);
        socket->flush();
        socket->disconnectFromHost();
        return;
    }
    QByteArray bytes = "HTTP/1.1 " + QByteArray::number(response.status) + ' ' +
                       reasonPhrase(response.status) + "\r\n";
    for (const auto& [name, value] : response.headers)
        bytes += name + ": " + value + "\r\n";
    if (!hasNoBody(response.status))
        bytes += "Content-Length: " + QByteArray::number(response.body.size()) + "\r\n";
    bytes += "\r\n";
    if (!hasNoBody(response.status))
        bytes += response.body;
    socket->write(bytes);
    socket->flush();
}

HttpsTestServer::Response httpStatus(int status, QByteArray body)
{
    HttpsTestServer::Response response;
    response.status = status;
    response.body = std::move(body);
    return response;
}

HttpsTestServer::Response httpJson(int status, const nlohmann::ordered_json& body,
                                   HttpsTestServer::Fields headers)
{
    HttpsTestServer::Response response;
    response.status = status;
    response.headers = std::move(headers);
    response.headers.emplace_back("Content-Type", "application/json");
    response.body = QByteArray::fromStdString(body.dump());
    return response;
}

} // namespace test

} // namespace lexmira
