// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "Common/EnvCommon.h"
#include "extensionhost/AsyncKeychain.h"
#include "extensionhost/Broker.h"
#include "extensionhost/HostLog.h"
#include "extensionhost/HostProtocol.h"
#include "extensionhost/HostSession.h"
#include "extensionhost/InstallCommand.h"
#include "extensionhost/InstalledBrowsers.h"
#include "extensionhost/NativeHost.h"
#include "platform/BrokerBus.h"
#include "platform/BrokerLink.h"
#include "platform/KeychainItems.h"
#include "platform/SharedSuite.h"
#include "platform/SystemHealth.h"

#include <QCoreApplication>
#include <QStringList>
#include <QTextStream>

#include <csignal>
#include <cstdio>

#include <unistd.h>

namespace lexmira {

namespace {

const QString serviceName = QStringLiteral("com.lexmira.companion.ext");

int runBroker(const QStringList& arguments)
{
    std::chrono::milliseconds idleTimeout = Broker::defaultIdleTimeout;
    const auto option = arguments.indexOf(QStringLiteral("--idle-timeout"));
    if (option >= 0) {
        bool ok = false;
        const int value = arguments.value(option + 1).toInt(&ok);
        if (!ok || value <= 0) {
            std::fprintf(stderr, "lexmira-extension-host: --idle-timeout takes milliseconds\n");
            return 2;
        }
        idleTimeout = std::chrono::milliseconds(value);
    }
    const InstalledBrowsers registry(Installations::fromEnvironment());
    Broker broker(registry, idleTimeout, HostProtocol::replyTimeout);
    QString error;
    const auto bus = BrokerBus::publish(serviceName, broker, error);
    if (!bus) {
        qCWarning(lcBroker, "%s", qUtf8Printable(error));
        return 1;
    }
    broker.setBus(bus.get());
    QObject::connect(&broker, &Broker::idle, qApp, &QCoreApplication::quit);
    return QCoreApplication::exec();
}

struct Origin {
    BrowserRegistry::Family family;
    QString extensionId;
};

// Chromium-family browsers pass the extension's origin; Firefox the manifest's path and the
// extension's identifier.
std::optional<Origin> originOf(const QStringList& arguments)
{
    static const QString chromiumPrefix = QStringLiteral("chrome-extension://");
    if (!arguments.isEmpty() && arguments.front().startsWith(chromiumPrefix)) {
        QString id = arguments.front().mid(chromiumPrefix.size());
        if (id.endsWith(QLatin1Char('/')))
            id.chop(1);
        if (!id.isEmpty())
            return Origin{BrowserRegistry::Family::chromium, id};
    }
    if (arguments.size() >= 2 && arguments.front().endsWith(QLatin1String(".json")) &&
        !arguments.at(1).isEmpty())
        return Origin{BrowserRegistry::Family::firefox, arguments.at(1)};
    return std::nullopt;
}

int runHost(const Origin& origin, const BrowserRegistry& registry)
{
    // A browser that goes away mid-write must not take the host down with a signal.
    std::signal(SIGPIPE, SIG_IGN);

    BrokerLink::Peer peer;
    peer.extensionId = origin.extensionId;
    if (const auto browser = registry.forConnection(origin.family, origin.extensionId)) {
        peer.browser = browser->browser;
        peer.browserName = browser->displayName;
    } else if (origin.family == BrowserRegistry::Family::firefox) {
        peer.browser = QStringLiteral("firefox");
        peer.browserName = QStringLiteral("Firefox");
    } else {
        peer.browser = QStringLiteral("chromium");
        peer.browserName = QStringLiteral("Chromium");
    }

    std::shared_ptr<SharedSuite> suite =
        SharedSuite::open(QString::fromUtf8(appGroupSuiteName.data(), appGroupSuiteName.size()));
    AsyncKeychain keychain(KeychainItems::create());
    const auto broker = BrokerLink::create(serviceName);
    HostSession session(peer, {suite, &keychain, broker.get()});
    NativeHost host(STDIN_FILENO, STDOUT_FILENO, session);
    QObject::connect(&session, &HostSession::finished, qApp, [&](const QString& reason) {
        qCWarning(lcHost, "connection ended: %s", qUtf8Printable(reason));
        host.flush(1000);
        QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}

} // namespace

} // namespace lexmira

using namespace lexmira;

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("lexmira-extension-host"));
    QCoreApplication::setApplicationVersion(QStringLiteral(LEXMIRA_VERSION));
    const QStringList arguments = QCoreApplication::arguments().mid(1);

    QTextStream out(stdout);
    QTextStream err(stderr);
    if (arguments.value(0) == QStringLiteral("--help")) {
        out << extensionHostUsage();
        return kExitOk;
    }
    if (arguments.value(0) == QStringLiteral("--version")) {
        out << "lexmira-extension-host " << LEXMIRA_VERSION << "\n";
        return kExitOk;
    }
    if (arguments.value(0) == QStringLiteral("--broker"))
        return runBroker(arguments);
    if (isInstallCommand(arguments))
        return runInstallCommand(arguments, Installations::fromEnvironment(),
                                 QCoreApplication::applicationFilePath(),
                                 [] { return SystemHealth::create()->broker(serviceName); }, out,
                                 err);
    if (const auto origin = originOf(arguments))
        return runHost(*origin, InstalledBrowsers(Installations::fromEnvironment()));
    err << extensionHostUsage();
    return kExitUsage;
}
