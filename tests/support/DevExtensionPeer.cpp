// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "support/DevExtensionPeer.h"

#include "support/TestSupport.h"
#include "util/Json.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QFile>

#include <sys/prctl.h>

#include <csignal>

namespace lexmira {

namespace test {

DevExtensionPeer::DevExtensionPeer(const QStringList& options, const QString& name,
                                   const QProcessEnvironment& environment)
    : name_(name)
{
    process_.setProcessEnvironment(environment);
    // A test that dies must not leave its peer holding the session (and its output) open.
    process_.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    QStringList arguments{QStringLiteral("--name"), name, QStringLiteral("--record"), recordFile()};
    arguments << options;
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process_.start(toolBinary(QStringLiteral("lexmira-dev-extension")), arguments);
    serving_ =
        process_.waitForStarted() &&
        waitUntil([this] { return isOwned(name_) || process_.state() == QProcess::NotRunning; }) &&
        isOwned(name_);
}

DevExtensionPeer::~DevExtensionPeer()
{
    if (process_.state() != QProcess::NotRunning) {
        process_.terminate();
        if (!process_.waitForFinished(5000))
            process_.kill();
        process_.waitForFinished();
    }
    waitUntil([this] { return !isOwned(name_); });
}

QString DevExtensionPeer::recordFile() const
{
    return dir_.filePath(QStringLiteral("calls.jsonl"));
}

std::vector<nlohmann::ordered_json> DevExtensionPeer::calls() const
{
    std::vector<nlohmann::ordered_json> calls;
    QFile file(recordFile());
    if (!file.open(QIODevice::ReadOnly))
        return calls;
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray& line : lines)
        if (const auto call = Json::decode(line); call && !line.isEmpty())
            calls.push_back(*call);
    return calls;
}

bool DevExtensionPeer::waitForCalls(std::size_t count) const
{
    return waitUntil([&] { return calls().size() >= count; });
}

std::vector<nlohmann::ordered_json> DevExtensionPeer::dispatches(const std::string& name) const
{
    std::vector<nlohmann::ordered_json> found;
    for (auto& call : calls())
        if (call.value("method", "") == "DispatchMessage" && call.value("name", "") == name)
            found.push_back(std::move(call));
    return found;
}

bool DevExtensionPeer::waitForDispatch(const std::string& name,
                                       std::chrono::milliseconds timeout) const
{
    return waitUntil([&] { return !dispatches(name).empty(); }, timeout);
}

bool DevExtensionPeer::control(const QStringList& command) const
{
    QProcess ctl;
    ctl.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    ctl.start(toolBinary(QStringLiteral("lexmira-dev-extension")),
              QStringList{QStringLiteral("ctl"), QStringLiteral("--name"), name_} + command);
    return ctl.waitForFinished(15000) && ctl.exitStatus() == QProcess::NormalExit &&
           ctl.exitCode() == 0;
}

bool DevExtensionPeer::isOwned(const QString& name)
{
    return QDBusConnection::sessionBus().interface()->isServiceRegistered(name).value();
}

} // namespace test

} // namespace lexmira
