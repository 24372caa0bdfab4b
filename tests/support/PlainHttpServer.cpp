// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "support/PlainHttpServer.h"

#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>

#include <algorithm>

namespace lexmira {

namespace test {

namespace {

constexpr qsizetype longestHead = 64 * 1024;

const QByteArray page = QByteArrayLiteral(
    "<!doctype html><html><head><title>Sign in</title></head><body>Sign in</body></html>");

} // namespace

PlainHttpServer::PlainHttpServer(QObject* parent)
    : QObject(parent)
    , server_(new QTcpServer(this))
{
    server_->listen(QHostAddress::LocalHost);
    connect(server_, &QTcpServer::newConnection, this, &PlainHttpServer::accept);
}

PlainHttpServer::~PlainHttpServer() = default;

quint16 PlainHttpServer::port() const
{
    return server_->serverPort();
}

QString PlainHttpServer::url(const QString& path) const
{
    return QStringLiteral("http://127.0.0.1:%1%2").arg(port()).arg(path);
}

std::size_t PlainHttpServer::count(const QByteArray& target) const
{
    return std::size_t(std::count(targets_.begin(), targets_.end(), target));
}

void PlainHttpServer::accept()
{
    while (QTcpSocket* socket = server_->nextPendingConnection()) {
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        // One request per connection: read the head, answer, close.
        connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
            QByteArray head = socket->property("head").toByteArray() + socket->readAll();
            if (!head.contains("\r\n\r\n") && head.size() < longestHead) {
                socket->setProperty("head", head);
                return;
            }
            const QList<QByteArray> requestLine = head.left(head.indexOf("\r\n")).split(' ');
            targets_.push_back(requestLine.value(1));
            const QByteArray body = requestLine.value(0) == "GET" ? page : QByteArray();
            socket->write("HTTP/1.1 200 OK\r\nContent-Type: text/html; charset=utf-8\r\n"
                          "Connection: close\r\nContent-Length: " +
                          QByteArray::number(body.size()) + "\r\n\r\n" + body);
            socket->disconnectFromHost();
        });
    }
}

} // namespace test

} // namespace lexmira
