// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "extensionhost/InstallCommand.h"

#include "diagnostics/Diagnosis.h"
#include "extensionhost/ExtensionHealth.h"

#include <QCommandLineParser>
#include <QDateTime>
#include <QFile>

namespace lexmira {

namespace {

const QString kInstall = QStringLiteral("install");
const QString kUninstall = QStringLiteral("uninstall");
const QString kStatus = QStringLiteral("status");

const QString kManifestPlaces = QStringLiteral(
    "The manifest com.lexmira.companion.ext.json goes to the browser's own directory for\n"
    "native messaging hosts:\n"
    "  Chromium family  $XDG_CONFIG_HOME/<browser>/NativeMessagingHosts/ (by default\n"
    "                   ~/.config/chromium, ~/.config/google-chrome,\n"
    "                   ~/.config/BraveSoftware/Brave-Browser, ~/.config/vivaldi,\n"
    "                   ~/.config/microsoft-edge), or DIR/NativeMessagingHosts/ with\n"
    "                   --user-data-dir DIR\n"
    "  Firefox          ~/.mozilla/native-messaging-hosts/\n");

QString installHelp()
{
    return QStringLiteral(
               "Usage: lexmira-extension-host install --browser B --extension-id ID\n"
               "                                      [--user-data-dir DIR] "
               "[--browser-command CMD]\n"
               "\n"
               "Registers this program as the native side of the Lexmira extension in browser\n"
               "B, so that the extension with id ID may start it. Restart the browser "
               "afterwards.\n"
               "Installing again for the same browser and profile directory replaces the\n"
               "earlier registration.\n"
               "\n"
               "Options:\n"
               "  --browser B            one of %1\n"
               "  --extension-id ID      the extension's id: 32 letters a-p for the Chromium\n"
               "                         family (shown on chrome://extensions with developer\n"
               "                         mode on); name@domain or {uuid} for Firefox (shown\n"
               "                         on about:debugging)\n"
               "  --user-data-dir DIR    Chromium family only: the browser runs with\n"
               "                         --user-data-dir=DIR (absolute path)\n"
               "  --browser-command CMD  the command that opens this browser, used to show\n"
               "                         the extension's settings; an argument with\n"
               "                         blanks goes in double quotes.\n"
               "                         Default: the browser's usual executable\n"
               "\n")
               .arg(Browsers::keyList()) +
           kManifestPlaces +
           QStringLiteral("\n"
                          "Examples:\n"
                          "  lexmira-extension-host install --browser chromium \\\n"
                          "      --extension-id abcdefghijklmnopabcdefghijklmnop\n"
                          "  lexmira-extension-host install --browser chromium \\\n"
                          "      --extension-id abcdefghijklmnopabcdefghijklmnop \\\n"
                          "      --user-data-dir \"$HOME/chromium-work\" \\\n"
                          "      --browser-command \"chromium --user-data-dir=$HOME/chromium-work "
                          "--new-window\"\n"
                          "  lexmira-extension-host install --browser firefox \\\n"
                          "      --extension-id extension@lexmira.com\n");
}

QString uninstallHelp()
{
    return QStringLiteral(
               "Usage: lexmira-extension-host uninstall --browser B [--user-data-dir DIR]\n"
               "\n"
               "Removes the registration that install wrote for browser B (and profile\n"
               "directory DIR): its manifest and its record. Nothing else is touched.\n"
               "\n"
               "Options:\n"
               "  --browser B          one of %1\n"
               "  --user-data-dir DIR  the directory given to install, if one was\n"
               "\n")
               .arg(Browsers::keyList()) +
           kManifestPlaces +
           QStringLiteral("\n"
                          "Examples:\n"
                          "  lexmira-extension-host uninstall --browser chromium\n"
                          "  lexmira-extension-host uninstall --browser firefox\n");
}

QString statusHelp()
{
    return QStringLiteral(
               "Usage: lexmira-extension-host status\n"
               "\n"
               "Lists every registration made by install (browser, profile directory, extension\n"
               "id, manifest and whether it is still there, the command that opens the browser),\n"
               "then the browsers connected to the running host, then the checks of the\n"
               "extension's side with a verdict each (ok, warning or FAIL) and what to do.\n"
               "The registrations are kept in\n"
               "$XDG_CONFIG_HOME/lexmira-extension-host/installations.json (by default under\n"
               "~/.config).\n"
               "\n") +
           kManifestPlaces +
           QStringLiteral(
               "\n"
               "Examples:\n"
               "  lexmira-extension-host install --browser chromium \\\n"
               "      --extension-id abcdefghijklmnopabcdefghijklmnop && lexmira-extension-host "
               "status\n"
               "  lexmira-extension-host install --browser firefox \\\n"
               "      --extension-id extension@lexmira.com && lexmira-extension-host status\n");
}

// The command as --browser-command takes it back: arguments with blanks in double quotes.
QString commandLine(const QStringList& command)
{
    QStringList quoted;
    for (const QString& argument : command) {
        const bool plain = !argument.isEmpty() && !argument.contains(QLatin1Char(' ')) &&
                           !argument.contains(QLatin1Char('\t')) &&
                           !argument.contains(QLatin1Char('"'));
        if (plain) {
            quoted.append(argument);
        } else {
            QString escaped = argument;
            escaped.replace(QStringLiteral("\""), QStringLiteral("\"\"\""));
            quoted.append(QLatin1Char('"') + escaped + QLatin1Char('"'));
        }
    }
    return quoted.join(QLatin1Char(' '));
}

QString displayName(const QString& browserKey)
{
    const std::optional<Browser> browser = Browsers::find(browserKey);
    return browser ? browser->displayName : browserKey;
}

struct Parsed {
    QCommandLineParser parser;
    QCommandLineOption help{QStringList{QStringLiteral("h"), QStringLiteral("help")}};
    QCommandLineOption browser{QStringLiteral("browser"), QString(), QStringLiteral("B")};
    QCommandLineOption extensionId{QStringLiteral("extension-id"), QString(), QStringLiteral("ID")};
    QCommandLineOption userDataDir{QStringLiteral("user-data-dir"), QString(),
                                   QStringLiteral("DIR")};
    QCommandLineOption browserCommand{QStringLiteral("browser-command"), QString(),
                                      QStringLiteral("CMD")};
};

int usageError(QTextStream& err, const QString& message, const QString& subcommand)
{
    err << "lexmira-extension-host " << subcommand << ": " << message << "\n"
        << "Run \"lexmira-extension-host " << subcommand << " --help\" for its options.\n";
    err.flush();
    return kExitUsage;
}

int runStatus(const Installations& installations, const BrokerQuery& brokerQuery,
              QTextStream& out)
{
    const std::vector<Installation> records = installations.records();
    if (records.empty()) {
        out << "Installed: nothing. Register the host with \"lexmira-extension-host install "
               "--browser B --extension-id ID\".\n";
    } else {
        out << "Installed:\n";
        for (const Installation& installation : records) {
            out << "  " << displayName(installation.browser) << " (" << installation.browser
                << ")\n";
            out << "    Profile directory: "
                << (installation.userDataDir.isEmpty() ? QStringLiteral("the browser's default")
                                                       : installation.userDataDir)
                << "\n";
            out << "    Extension id:      " << installation.extensionId << "\n";
            out << "    Manifest:          " << installation.manifestPath
                << (QFile::exists(installation.manifestPath)
                        ? QStringLiteral(" (present)")
                        : QStringLiteral(" (missing: install again to restore it)"))
                << "\n";
            out << "    Browser command:   " << commandLine(installation.command) << "\n";
            out << "    Installed at:      "
                << installation.installedAt.toUTC().toString(Qt::ISODate) << "\n";
        }
    }

    BrokerHealth broker;
    if (brokerQuery)
        broker = brokerQuery();
    if (!broker.pid || (broker.connections && broker.connections->empty())) {
        out << (broker.pid ? "Connected: none. The broker is running, but no browser is connected.\n"
                           : "Connected: none. The broker is not running, so no browser is "
                             "connected.\n");
    } else if (!broker.connections) {
        out << "Connected: unknown. Process " << *broker.pid
            << " serves the extension's name but does not list its connections.\n";
    } else {
        out << "Connected:\n";
        for (const HostPeer& connection : *broker.connections) {
            out << "  "
                << (connection.browserName.isEmpty() ? QStringLiteral("Unknown browser")
                                                     : connection.browserName)
                << ", extension " << connection.extensionId << ", since "
                << QDateTime::fromMSecsSinceEpoch(connection.attachedAtMs, Qt::UTC)
                       .toString(Qt::ISODate)
                << "\n";
        }
    }

    Diagnosis diagnosis;
    diagnosis.add(ExtensionHealth::checks(records, broker));
    out << "\nChecks:\n" << diagnosis.table();
    out.flush();
    return kExitOk;
}

} // namespace

bool isInstallCommand(const QStringList& arguments)
{
    const QString first = arguments.value(0);
    return first == kInstall || first == kUninstall || first == kStatus;
}

QString extensionHostUsage()
{
    return QStringLiteral(
               "Usage: lexmira-extension-host COMMAND [OPTIONS]\n"
               "\n"
               "The native side of the Lexmira browser extension. Browsers start it by themselves\n"
               "once it is registered with them; you only register it.\n"
               "\n"
               "Commands:\n"
               "  install    register this program with a browser for one extension\n"
               "  uninstall  remove such a registration\n"
               "  status     list the registrations and the connected browsers\n"
               "\n"
               "  --help     this text; \"lexmira-extension-host COMMAND --help\" explains a "
               "command\n"
               "  --version  the version\n"
               "\n"
               "Started for you, not by hand:\n"
               "  --broker [--idle-timeout MILLISECONDS]\n"
               "             the broker on the session bus (com.lexmira.companion.ext), started\n"
               "             by the bus when the companion or a browser first calls it; it leaves\n"
               "             after 30 seconds with no browser connected and no call\n"
               "  chrome-extension://ID/\n"
               "             how a Chromium-family browser starts it for the extension ID\n"
               "  MANIFEST EXTENSION-ID\n"
               "             how Firefox starts it\n"
               "\n"
               "Examples:\n"
               "  lexmira-extension-host install --browser chromium \\\n"
               "      --extension-id abcdefghijklmnopabcdefghijklmnop\n"
               "  lexmira-extension-host install --browser firefox \\\n"
               "      --extension-id extension@lexmira.com\n"
               "\n") +
           kManifestPlaces;
}

int runInstallCommand(const QStringList& arguments, const Installations& installations,
                      const QString& hostPath, const BrokerQuery& broker,
                      QTextStream& out, QTextStream& err)
{
    if (!isInstallCommand(arguments)) {
        err << extensionHostUsage();
        err.flush();
        return kExitUsage;
    }
    const QString subcommand = arguments.first();

    Parsed parsed;
    parsed.parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    parsed.parser.addOption(parsed.help);
    if (subcommand != kStatus) {
        parsed.parser.addOption(parsed.browser);
        parsed.parser.addOption(parsed.userDataDir);
    }
    if (subcommand == kInstall) {
        parsed.parser.addOption(parsed.extensionId);
        parsed.parser.addOption(parsed.browserCommand);
    }
    // The parser takes the first argument as the program's name: here, the subcommand.
    if (!parsed.parser.parse(arguments))
        return usageError(err, parsed.parser.errorText(), subcommand);
    if (parsed.parser.isSet(parsed.help)) {
        out << (subcommand == kInstall     ? installHelp()
                : subcommand == kUninstall ? uninstallHelp()
                                           : statusHelp());
        out.flush();
        return kExitOk;
    }
    if (!parsed.parser.positionalArguments().isEmpty())
        return usageError(err,
                          QStringLiteral("unexpected argument \"%1\".")
                              .arg(parsed.parser.positionalArguments().first()),
                          subcommand);

    if (subcommand == kStatus)
        return runStatus(installations, broker, out);

    if (!parsed.parser.isSet(parsed.browser))
        return usageError(
            err, QStringLiteral("--browser is required (one of %1).").arg(Browsers::keyList()),
            subcommand);
    const QString browser = parsed.parser.value(parsed.browser);
    const QString userDataDir = parsed.parser.value(parsed.userDataDir);

    if (subcommand == kUninstall) {
        const UninstallResult result = installations.uninstall(browser, userDataDir);
        switch (result.status) {
        case UninstallResult::Status::Removed:
            out << "Removed the " << displayName(browser)
                << " registration: " << result.removed->manifestPath << "\n";
            out.flush();
            return kExitOk;
        case UninstallResult::Status::NothingInstalled:
            out << "Nothing to remove: the host is not installed for " << displayName(browser)
                << (userDataDir.isEmpty()
                        ? QString()
                        : QStringLiteral(" with profile directory ") + userDataDir)
                << ".\n";
            out.flush();
            return kExitOk;
        case UninstallResult::Status::Failed:
            break;
        }
        err << "lexmira-extension-host uninstall: " << result.error << "\n";
        err.flush();
        return kExitFailure;
    }

    if (!parsed.parser.isSet(parsed.extensionId))
        return usageError(err, QStringLiteral("--extension-id is required."), subcommand);
    const InstallResult result =
        installations.install(browser, parsed.parser.value(parsed.extensionId), userDataDir,
                              parsed.parser.value(parsed.browserCommand), hostPath);
    if (!result) {
        err << "lexmira-extension-host install: " << result.error << "\n";
        err.flush();
        return kExitFailure;
    }
    out << "Installed for " << displayName(browser) << ": " << result.installation->manifestPath
        << "\n"
        << "Restart the browser so that it reads the manifest.\n";
    out.flush();
    return kExitOk;
}

} // namespace lexmira
