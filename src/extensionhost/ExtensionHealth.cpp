// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "extensionhost/ExtensionHealth.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>

namespace lexmira {

namespace {

const char* const context = "ExtensionHealth";

QString translated(const char* text)
{
    return QCoreApplication::translate(context, text);
}

const char* const hostArea = QT_TRANSLATE_NOOP("ExtensionHealth", "Extension host");
const char* const brokerArea = QT_TRANSLATE_NOOP("ExtensionHealth", "Extension broker");
const char* const extensionArea = QT_TRANSLATE_NOOP("ExtensionHealth", "Extension");

const char* const installedFor = QT_TRANSLATE_NOOP("ExtensionHealth", "installed for");
const char* const activatable = QT_TRANSLATE_NOOP("ExtensionHealth", "activatable");
const char* const connected = QT_TRANSLATE_NOOP("ExtensionHealth", "browsers connected");
const char* const state = QT_TRANSLATE_NOOP("ExtensionHealth", "state");

Check make(const char* id, const char* area, const char* subject, Verdict verdict, QString detail,
           QString remedy = {})
{
    return {QString::fromLatin1(id), translated(area), translated(subject), verdict,
            std::move(detail),       std::move(remedy)};
}

QString browserName(const QString& key)
{
    const std::optional<Browser> browser = Browsers::find(key);
    return browser ? browser->displayName : key;
}

Check installed(const std::vector<Installation>& installations)
{
    if (installations.empty())
        return make(
            "extension.installed", hostArea, installedFor, Verdict::fail,
            translated(QT_TRANSLATE_NOOP("ExtensionHealth", "no browser")),
            translated(QT_TRANSLATE_NOOP(
                "ExtensionHealth", "register it with your browser: lexmira-extension-host install "
                                   "--browser B --extension-id ID")));
    QStringList browsers;
    QStringList missing;
    for (const Installation& installation : installations) {
        QString name = browserName(installation.browser);
        if (!installation.userDataDir.isEmpty())
            name += QStringLiteral(" (") + installation.userDataDir + QLatin1Char(')');
        browsers << name;
        if (!QFile::exists(installation.manifestPath))
            missing << translated(
                           QT_TRANSLATE_NOOP("ExtensionHealth", "%1: manifest %2 is missing"))
                           .arg(name, installation.manifestPath);
    }
    if (!missing.isEmpty())
        return make("extension.installed", hostArea, installedFor, Verdict::fail,
                    missing.join(QStringLiteral("; ")),
                    translated(QT_TRANSLATE_NOOP("ExtensionHealth",
                                                 "install again for that browser: "
                                                 "lexmira-extension-host install --browser B "
                                                 "--extension-id ID")));
    return make("extension.installed", hostArea, installedFor, Verdict::ok,
                browsers.join(QStringLiteral(", ")));
}

Check brokerActivatable(const BrokerHealth& broker)
{
    if (broker.busError)
        return make(
            "extension.activatable", brokerArea, activatable, Verdict::fail,
            translated(QT_TRANSLATE_NOOP("ExtensionHealth", "no session bus: %1"))
                .arg(*broker.busError),
            translated(QT_TRANSLATE_NOOP("ExtensionHealth", "run it inside your desktop session")));
    if (broker.activatable)
        return make(
            "extension.activatable", brokerArea, activatable, Verdict::ok,
            broker.serviceFiles.isEmpty()
                ? translated(QT_TRANSLATE_NOOP("ExtensionHealth", "the bus can start it"))
                : translated(QT_TRANSLATE_NOOP("ExtensionHealth", "the bus can start it from %1"))
                      .arg(broker.serviceFiles.front()));
    if (!broker.serviceFiles.isEmpty())
        return make("extension.activatable", brokerArea, activatable, Verdict::warning,
                    translated(QT_TRANSLATE_NOOP("ExtensionHealth",
                                                 "%1 is there, but the bus has not read it"))
                        .arg(broker.serviceFiles.front()),
                    translated(QT_TRANSLATE_NOOP("ExtensionHealth",
                                                 "the session bus reads its service files when "
                                                 "it starts: log out and in again")));
    const QString installService = translated(QT_TRANSLATE_NOOP(
        "ExtensionHealth",
        "install the companion, which puts com.lexmira.companion.ext.service into "
        "share/dbus-1/services, then log out and in again"));
    if (broker.pid)
        return make("extension.activatable", brokerArea, activatable, Verdict::warning,
                    translated(QT_TRANSLATE_NOOP("ExtensionHealth",
                                                 "it runs (process %1), but once it leaves the "
                                                 "bus cannot start it again"))
                        .arg(*broker.pid),
                    installService);
    return make("extension.activatable", brokerArea, activatable, Verdict::fail,
                translated(QT_TRANSLATE_NOOP("ExtensionHealth", "the bus has no service file for "
                                                                "com.lexmira.companion.ext")),
                installService);
}

Check browsersConnected(const BrokerHealth& broker)
{
    const QString openBrowser = translated(QT_TRANSLATE_NOOP(
        "ExtensionHealth", "open a browser in which the Lexmira extension is installed"));
    if (!broker.pid)
        return make(
            "extension.connected", brokerArea, connected, Verdict::warning,
            translated(QT_TRANSLATE_NOOP("ExtensionHealth", "none: the broker is not running")),
            openBrowser);
    if (!broker.connections)
        return make(
            "extension.connected", brokerArea, connected, Verdict::warning,
            translated(QT_TRANSLATE_NOOP("ExtensionHealth",
                                         "process %1 serves the extension's name but does "
                                         "not list connections (%2)"))
                .arg(*broker.pid)
                .arg(broker.connectionsError),
            translated(QT_TRANSLATE_NOOP(
                           "ExtensionHealth",
                           "nothing if it is a development stand-in; otherwise end process %1 so "
                           "that the bus starts the broker"))
                .arg(*broker.pid));
    if (broker.connections->empty())
        return make("extension.connected", brokerArea, connected, Verdict::warning,
                    translated(QT_TRANSLATE_NOOP("ExtensionHealth",
                                                 "none: the broker (process %1) runs, no browser "
                                                 "is connected"))
                        .arg(*broker.pid),
                    openBrowser);
    QStringList peers;
    for (const HostPeer& peer : *broker.connections)
        peers << translated(QT_TRANSLATE_NOOP("ExtensionHealth", "%1 (extension %2, since %3)"))
                     .arg(peer.browserName.isEmpty()
                              ? translated(QT_TRANSLATE_NOOP("ExtensionHealth", "unknown browser"))
                              : peer.browserName,
                          peer.extensionId,
                          QDateTime::fromMSecsSinceEpoch(peer.attachedAtMs, Qt::UTC)
                              .toString(Qt::ISODate));
    return make("extension.connected", brokerArea, connected, Verdict::ok,
                peers.join(QStringLiteral("; ")));
}

Check extensionState(const BrokerHealth& broker)
{
    if (!broker.pid)
        return make("extension.state", extensionArea, state, Verdict::warning,
                    translated(QT_TRANSLATE_NOOP("ExtensionHealth",
                                                 "not connected, so disabled for the companion")),
                    translated(QT_TRANSLATE_NOOP(
                        "ExtensionHealth",
                        "open a browser in which the Lexmira extension is installed and enabled")));
    if (!broker.enabled)
        return make(
            "extension.state", extensionArea, state, Verdict::fail,
            translated(QT_TRANSLATE_NOOP("ExtensionHealth", "process %1 does not answer: %2"))
                .arg(*broker.pid)
                .arg(broker.stateError),
            translated(QT_TRANSLATE_NOOP("ExtensionHealth",
                                         "end process %1; the bus starts a new broker "
                                         "when it is next needed"))
                .arg(*broker.pid));
    if (!*broker.enabled)
        return make("extension.state", extensionArea, state, Verdict::warning,
                    translated(QT_TRANSLATE_NOOP("ExtensionHealth", "disabled")),
                    translated(QT_TRANSLATE_NOOP(
                        "ExtensionHealth",
                        "enable the Lexmira extension on the browser's extensions page")));
    return make("extension.state", extensionArea, state, Verdict::ok,
                broker.browserName.isEmpty()
                    ? translated(QT_TRANSLATE_NOOP("ExtensionHealth", "enabled"))
                    : translated(QT_TRANSLATE_NOOP("ExtensionHealth", "enabled in %1"))
                          .arg(broker.browserName));
}

} // namespace

namespace ExtensionHealth {

std::vector<Check> checks(const std::vector<Installation>& installations,
                          const BrokerHealth& broker)
{
    std::vector<Check> result{installed(installations), brokerActivatable(broker)};
    if (broker.busError)
        return result;
    result.push_back(browsersConnected(broker));
    result.push_back(extensionState(broker));
    return result;
}

} // namespace ExtensionHealth

} // namespace lexmira
