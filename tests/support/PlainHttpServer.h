// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

#include <vector>

class QTcpServer;

namespace lexmira {

namespace test {

// A plain HTTP/1.1 server on 127.0.0.1 that answers every GET with a small HTML page and
// records the request targets it saw, in order. It stands for a web page a browser opens (the
// login page the extension opens in a tab). Lives on the thread that created it, which must run
// its event loop (test::waitUntil, test::spin).
class PlainHttpServer final : public QObject {
    Q_OBJECT

public:
    explicit PlainHttpServer(QObject* parent = nullptr);
    ~PlainHttpServer() override;

    quint16 port() const;
    // http://127.0.0.1:<port><path>
    QString url(const QString& path) const;
    // Path and query of each request, as on its request line.
    const std::vector<QByteArray>& targets() const { return targets_; }
    // How many requests asked for exactly target.
    std::size_t count(const QByteArray& target) const;

private:
    void accept();

    QTcpServer* server_;
    std::vector<QByteArray> targets_;
};

} // namespace test

} // namespace lexmira
