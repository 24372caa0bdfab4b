// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "diagnostics/HealthChecks.h"

#include <QCoreApplication>

namespace lexmira {

namespace {

const char* const context = "HealthChecks";

QString translated(const char* text)
{
    return QCoreApplication::translate(context, text);
}

QString octal(uint mode)
{
    return QStringLiteral("%1").arg(mode, 4, 8, QLatin1Char('0'));
}

Check make(const char* id, const char* area, const char* subject, Verdict verdict, QString detail,
           QString remedy = {})
{
    return {QString::fromLatin1(id), translated(area), translated(subject), verdict,
            std::move(detail),       std::move(remedy)};
}

// Areas and subjects.
const char* const busArea = QT_TRANSLATE_NOOP("HealthChecks", "Session bus");
const char* const suiteArea = QT_TRANSLATE_NOOP("HealthChecks", "Shared suite");
const char* const secretsArea = QT_TRANSLATE_NOOP("HealthChecks", "Secret Service");
const char* const portalArea = QT_TRANSLATE_NOOP("HealthChecks", "Settings portal");
const char* const notificationsArea = QT_TRANSLATE_NOOP("HealthChecks", "Notification server");
const char* const accountArea = QT_TRANSLATE_NOOP("HealthChecks", "Account service");
const char* const analyticsArea = QT_TRANSLATE_NOOP("HealthChecks", "Analytics service");
const char* const logArea = QT_TRANSLATE_NOOP("HealthChecks", "Log service");
const char* const configurationArea = QT_TRANSLATE_NOOP("HealthChecks", "Configuration");

const char* const reachable = QT_TRANSLATE_NOOP("HealthChecks", "reachable");
const char* const otherInstance = QT_TRANSLATE_NOOP("HealthChecks", "companion instance");
const char* const path = QT_TRANSLATE_NOOP("HealthChecks", "path");
const char* const owner = QT_TRANSLATE_NOOP("HealthChecks", "owner");
const char* const mode = QT_TRANSLATE_NOOP("HealthChecks", "mode");
const char* const writable = QT_TRANSLATE_NOOP("HealthChecks", "writable");
const char* const watchable = QT_TRANSLATE_NOOP("HealthChecks", "watchable");
const char* const defaultCollection = QT_TRANSLATE_NOOP("HealthChecks", "default collection");
const char* const unlocked = QT_TRANSLATE_NOOP("HealthChecks", "unlocked");
const char* const address = QT_TRANSLATE_NOOP("HealthChecks", "address");
const char* const resolves = QT_TRANSLATE_NOOP("HealthChecks", "name resolves");
const char* const connects = QT_TRANSLATE_NOOP("HealthChecks", "accepts connections");
const char* const tls = QT_TRANSLATE_NOOP("HealthChecks", "TLS verified");
const char* const firstByte = QT_TRANSLATE_NOOP("HealthChecks", "time to first byte");
const char* const servicesFile = QT_TRANSLATE_NOOP("HealthChecks", "services.json");

} // namespace

namespace HealthChecks {

std::vector<Check> sessionBus(const BusHealth& health)
{
    if (health.error)
        return {make(
            "bus.reachable", busArea, reachable, Verdict::fail,
            (health.address.isEmpty()
                 ? translated(QT_TRANSLATE_NOOP(
                                  "HealthChecks",
                                  "not reachable, and DBUS_SESSION_BUS_ADDRESS is not set: %1"))
                       .arg(*health.error)
                 : translated(QT_TRANSLATE_NOOP("HealthChecks", "not reachable at %1: %2"))
                       .arg(health.address, *health.error)),
            translated(QT_TRANSLATE_NOOP("HealthChecks",
                                         "run the companion inside your desktop session, or set "
                                         "DBUS_SESSION_BUS_ADDRESS to the session's bus")))};
    std::vector<Check> checks{make(
        "bus.reachable", busArea, reachable, Verdict::ok,
        health.address.isEmpty() ? translated(QT_TRANSLATE_NOOP("HealthChecks", "the default bus"))
                                 : health.address)};
    checks.push_back(make(
        "bus.companion", busArea, otherInstance, Verdict::ok,
        health.companionPid
            ? translated(QT_TRANSLATE_NOOP("HealthChecks",
                                           "running as process %1; a new launch hands over to it"))
                  .arg(*health.companionPid)
            : translated(QT_TRANSLATE_NOOP("HealthChecks", "none running"))));
    return checks;
}

std::vector<Check> sharedSuite(const SuiteHealth& health)
{
    if (!health.exists)
        return {make(
            "suite.path", suiteArea, path, Verdict::warning,
            translated(QT_TRANSLATE_NOOP("HealthChecks", "%1 does not exist yet")).arg(health.path),
            translated(QT_TRANSLATE_NOOP("HealthChecks",
                                         "nothing, unless it stays missing: the companion or the "
                                         "extension creates it when it first stores a value")))};
    if (!health.isDirectory)
        return {make(
            "suite.path", suiteArea, path, Verdict::fail,
            translated(QT_TRANSLATE_NOOP("HealthChecks", "%1 is not a directory")).arg(health.path),
            translated(QT_TRANSLATE_NOOP("HealthChecks", "move %1 out of the way"))
                .arg(health.path))};

    std::vector<Check> checks{make("suite.path", suiteArea, path, Verdict::ok, health.path)};
    if (health.ownerUid == health.userUid)
        checks.push_back(make(
            "suite.owner", suiteArea, owner, Verdict::ok,
            translated(QT_TRANSLATE_NOOP("HealthChecks", "you (uid %1)")).arg(health.ownerUid)));
    else
        checks.push_back(
            make("suite.owner", suiteArea, owner, Verdict::fail,
                 translated(QT_TRANSLATE_NOOP("HealthChecks", "uid %1, not you (uid %2)"))
                     .arg(health.ownerUid)
                     .arg(health.userUid),
                 translated(QT_TRANSLATE_NOOP("HealthChecks", "make it yours: chown -R %1 \"%2\""))
                     .arg(health.userUid)
                     .arg(health.path)));

    const QString fix =
        translated(QT_TRANSLATE_NOOP("HealthChecks", "chmod 700 \"%1\"")).arg(health.path);
    if ((health.mode & 0700) != 0700)
        checks.push_back(make(
            "suite.mode", suiteArea, mode, Verdict::fail,
            translated(QT_TRANSLATE_NOOP("HealthChecks", "%1: you cannot read, write or enter it"))
                .arg(octal(health.mode)),
            fix));
    else if (health.mode & 0022)
        checks.push_back(make(
            "suite.mode", suiteArea, mode, Verdict::fail,
            translated(QT_TRANSLATE_NOOP("HealthChecks",
                                         "%1: other users can change the state shared with the "
                                         "extension"))
                .arg(octal(health.mode)),
            fix));
    else if (health.mode & 0055)
        checks.push_back(
            make("suite.mode", suiteArea, mode, Verdict::warning,
                 translated(QT_TRANSLATE_NOOP("HealthChecks",
                                              "%1: other users can read the state shared with the "
                                              "extension"))
                     .arg(octal(health.mode)),
                 fix));
    else
        checks.push_back(make("suite.mode", suiteArea, mode, Verdict::ok, octal(health.mode)));

    if (health.writeError)
        checks.push_back(
            make("suite.writable", suiteArea, writable, Verdict::fail, *health.writeError,
                 translated(QT_TRANSLATE_NOOP("HealthChecks",
                                              "fix its owner and mode, and make sure its file "
                                              "system is mounted writable and not full"))));
    else
        checks.push_back(
            make("suite.writable", suiteArea, writable, Verdict::ok,
                 translated(QT_TRANSLATE_NOOP("HealthChecks", "a file was written and removed"))));

    if (health.watchError)
        checks.push_back(
            make("suite.watchable", suiteArea, watchable, Verdict::fail,
                 translated(QT_TRANSLATE_NOOP("HealthChecks", "inotify cannot watch it: %1"))
                     .arg(*health.watchError),
                 translated(QT_TRANSLATE_NOOP(
                     "HealthChecks", "raise fs.inotify.max_user_instances and "
                                     "fs.inotify.max_user_watches (sysctl), or close programs that "
                                     "use up inotify watches"))));
    else
        checks.push_back(make("suite.watchable", suiteArea, watchable, Verdict::ok,
                              translated(QT_TRANSLATE_NOOP("HealthChecks", "inotify watches it"))));
    return checks;
}

std::vector<Check> secretService(const SecretServiceHealth& health)
{
    if (health.error)
        return {make("secrets.reachable", secretsArea, reachable, Verdict::fail, *health.error,
                     translated(QT_TRANSLATE_NOOP(
                         "HealthChecks", "start a Secret Service in your session (for example "
                                         "gnome-keyring-daemon --components=secrets)")))};
    std::vector<Check> checks{make("secrets.reachable", secretsArea, reachable, Verdict::ok,
                                   translated(QT_TRANSLATE_NOOP("HealthChecks", "answers")))};
    if (!health.defaultCollection) {
        checks.push_back(make("secrets.default", secretsArea, defaultCollection, Verdict::fail,
                              translated(QT_TRANSLATE_NOOP("HealthChecks", "there is none")),
                              translated(QT_TRANSLATE_NOOP(
                                  "HealthChecks", "create a keyring and make it the default one "
                                                  "in your keyring manager"))));
        return checks;
    }
    checks.push_back(make("secrets.default", secretsArea, defaultCollection, Verdict::ok,
                          *health.defaultCollection));
    const QString unlockIt = translated(QT_TRANSLATE_NOOP(
        "HealthChecks", "unlock the default keyring in your keyring manager, or log in again"));
    if (!health.locked)
        checks.push_back(make("secrets.unlocked", secretsArea, unlocked, Verdict::fail,
                              translated(QT_TRANSLATE_NOOP("HealthChecks", "cannot tell: %1"))
                                  .arg(health.lockedError),
                              unlockIt));
    else if (*health.locked)
        checks.push_back(
            make("secrets.unlocked", secretsArea, unlocked, Verdict::fail,
                 translated(QT_TRANSLATE_NOOP("HealthChecks", "the default collection is locked")),
                 unlockIt));
    else
        checks.push_back(make("secrets.unlocked", secretsArea, unlocked, Verdict::ok,
                              translated(QT_TRANSLATE_NOOP("HealthChecks", "yes"))));
    return checks;
}

std::vector<Check> settingsPortal(const DesktopServiceHealth& health)
{
    if (health.error)
        return {make("portal.settings", portalArea, reachable, Verdict::fail, *health.error,
                     translated(QT_TRANSLATE_NOOP(
                         "HealthChecks", "install xdg-desktop-portal and a backend for your "
                                         "desktop; until then the window stays light")))};
    return {make("portal.settings", portalArea, reachable, Verdict::ok, health.description)};
}

std::vector<Check> notificationServer(const DesktopServiceHealth& health)
{
    if (health.error)
        return {
            make("notifications.server", notificationsArea, reachable, Verdict::fail, *health.error,
                 translated(QT_TRANSLATE_NOOP("HealthChecks",
                                              "run a notification server in your session; until "
                                              "then the reminder to enable the extension is not "
                                              "shown")))};
    return {make("notifications.server", notificationsArea, reachable, Verdict::ok,
                 health.description)};
}

std::vector<Check> service(Service which, const QString& configured, const std::optional<QUrl>& url,
                           const NetworkServiceHealth& health)
{
    const char* area = which == Service::account     ? accountArea
                       : which == Service::analytics ? analyticsArea
                                                     : logArea;
    const QString key = QString::fromLatin1(which == Service::account     ? "account"
                                            : which == Service::analytics ? "analytics"
                                                                          : "log");
    const QString variable =
        QString::fromLatin1(which == Service::account     ? "LEXMIRA_ACCOUNT_HOST"
                            : which == Service::analytics ? "LEXMIRA_ANALYTICS_URL"
                                                          : "LEXMIRA_LOG_HOST");
    const auto id = [&key](const char* suffix) {
        return QStringLiteral("service.") + key + QLatin1Char('.') + QString::fromLatin1(suffix);
    };
    const auto check = [&](const char* suffix, const char* subject, Verdict verdict, QString detail,
                           QString remedy = {}) {
        Check result = make("", area, subject, verdict, std::move(detail), std::move(remedy));
        result.id = id(suffix);
        return result;
    };

    if (!url)
        return {check("address", address, Verdict::fail,
                      translated(QT_TRANSLATE_NOOP("HealthChecks", "\"%1\" names no usable host"))
                          .arg(configured),
                      translated(QT_TRANSLATE_NOOP("HealthChecks",
                                                   "correct %1, or the bundle's services.json"))
                          .arg(variable))};

    std::vector<Check> checks;
    if (health.resolveError) {
        checks.push_back(
            check("resolves", resolves, Verdict::fail,
                  translated(QT_TRANSLATE_NOOP("HealthChecks", "%1: %2"))
                      .arg(url->host(), *health.resolveError),
                  translated(QT_TRANSLATE_NOOP("HealthChecks",
                                               "check the network connection and the name "
                                               "servers, or correct %1"))
                      .arg(variable)));
        return checks;
    }
    checks.push_back(check(
        "resolves", resolves, Verdict::ok,
        QStringLiteral("%1 → %2").arg(url->host(), health.addresses.join(QStringLiteral(", ")))));

    if (health.connectError) {
        checks.push_back(
            check("connects", connects, Verdict::fail,
                  translated(QT_TRANSLATE_NOOP("HealthChecks", "%1:%2: %3"))
                      .arg(url->host())
                      .arg(url->port(443))
                      .arg(*health.connectError),
                  translated(
                      QT_TRANSLATE_NOOP("HealthChecks",
                                        "check that the service runs and that no firewall or proxy "
                                        "blocks port %1, or correct %2"))
                      .arg(url->port(443))
                      .arg(variable)));
        return checks;
    }
    checks.push_back(check("connects", connects, Verdict::ok,
                           QStringLiteral("%1:%2").arg(url->host()).arg(url->port(443))));

    if (health.tlsError) {
        checks.push_back(check("tls", tls, Verdict::fail,
                               translated(QT_TRANSLATE_NOOP("HealthChecks", "%1:%2: %3"))
                                   .arg(url->host())
                                   .arg(url->port(443))
                                   .arg(*health.tlsError),
                               translated(QT_TRANSLATE_NOOP(
                                   "HealthChecks", "check the clock; if a proxy or a private "
                                                   "authority signs the service's "
                                                   "certificate, name that authority's PEM file "
                                                   "in LEXMIRA_EXTRA_CA_FILE"))));
        return checks;
    }
    checks.push_back(check("tls", tls, Verdict::ok,
                           translated(QT_TRANSLATE_NOOP("HealthChecks", "handshake in %1 ms"))
                               .arg(health.handshake.count())));

    if (health.requestError) {
        checks.push_back(check(
            "first-byte", firstByte, Verdict::fail, *health.requestError,
            translated(QT_TRANSLATE_NOOP("HealthChecks", "the service accepts connections but does "
                                                         "not answer: ask its operators"))));
        return checks;
    }
    const QString answer = translated(QT_TRANSLATE_NOOP("HealthChecks", "%1 ms (%2)"))
                               .arg(health.firstByte.count())
                               .arg(QString::fromLatin1(health.statusLine));
    if (health.firstByte > slowFirstByte)
        checks.push_back(check(
            "first-byte", firstByte, Verdict::warning, answer,
            translated(QT_TRANSLATE_NOOP("HealthChecks", "the network or the service is slow; the "
                                                         "companion will be slow to sign in"))));
    else
        checks.push_back(check("first-byte", firstByte, Verdict::ok, answer));
    return checks;
}

Check unreadableServices(const QString& error)
{
    return make("config.services", configurationArea, servicesFile, Verdict::fail, error,
                translated(QT_TRANSLATE_NOOP(
                    "HealthChecks", "reinstall the companion, or point LEXMIRA_BUNDLE_DIR at a "
                                    "complete bundle")));
}

} // namespace HealthChecks

} // namespace lexmira
