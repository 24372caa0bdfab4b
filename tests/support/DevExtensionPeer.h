// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <nlohmann/json.hpp>

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <chrono>
#include <string>
#include <vector>

namespace lexmira {

namespace test {

// The development peer (lexmira-dev-extension) as a second process on the test's session bus,
// recording into a file of its own. Started by the constructor, which waits until the peer owns
// its name; stopped, and its name released, by the destructor.
class DevExtensionPeer {
public:
    // The extension's identifier, which the peer owns unless told otherwise.
    static QString defaultName() { return QStringLiteral("com.lexmira.companion.ext"); }

    // environment is the peer's: its session bus and where it finds the shared suite.
    explicit DevExtensionPeer(
        const QStringList& options = {}, const QString& name = defaultName(),
        const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment());
    ~DevExtensionPeer();
    DevExtensionPeer(const DevExtensionPeer&) = delete;
    DevExtensionPeer& operator=(const DevExtensionPeer&) = delete;

    bool isServing() const { return serving_; }
    const QString& name() const { return name_; }
    QString recordFile() const;

    // Every call recorded so far, oldest first, one JSON object each.
    std::vector<nlohmann::ordered_json> calls() const;
    // Waits until at least count calls were recorded.
    bool waitForCalls(std::size_t count) const;
    // The recorded DispatchMessage calls of the message called name, oldest first.
    std::vector<nlohmann::ordered_json> dispatches(const std::string& name) const;
    // Waits until a message called name was dispatched.
    bool waitForDispatch(const std::string& name, std::chrono::milliseconds timeout) const;

    // Runs "lexmira-dev-extension ctl <command…>" against this peer; true when it succeeded.
    bool control(const QStringList& command) const;

    // Whether any process owns name on the session bus.
    static bool isOwned(const QString& name);

private:
    QString name_;
    QTemporaryDir dir_;
    QProcess process_;
    bool serving_ = false;
};

} // namespace test

} // namespace lexmira
