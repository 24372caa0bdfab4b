// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/SystemHealth.h"

#include "platform/BrokerLink.h"
#include "platform/SharedSuite.h"
#include "platform/linux/ExtensionBus.h"
#include "platform/linux/TlsTrust.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QHostAddress>
#include <QHostInfo>
#include <QSslSocket>
#include <QTimer>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lexmira {

namespace {

using namespace std::chrono_literals;

// Each question to the bus, including any start of the service it needs.
constexpr std::chrono::milliseconds busCallTimeout = 10s;
// Each step of reaching a service: the name lookup, the connection with its handshake, and the
// first byte of the answer.
constexpr std::chrono::milliseconds resolveTimeout = 5s;
constexpr std::chrono::milliseconds handshakeTimeout = 5s;
constexpr std::chrono::milliseconds firstByteTimeout = 5s;

const QString secretsService = QStringLiteral("org.freedesktop.secrets");
const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString notificationsService = QStringLiteral("org.freedesktop.Notifications");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

QString errnoText(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

std::optional<QString> unreachableBus()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (bus.isConnected())
        return std::nullopt;
    const QString message = bus.lastError().message();
    return message.isEmpty() ? QStringLiteral("no session bus address is known") : message;
}

// A blocking call; the error text, when there is no answer, is in the returned message.
QDBusMessage call(const QString& service, const QString& path, const QString& interface,
                  const QString& method, const QVariantList& arguments, bool autoStart)
{
    auto message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    message.setAutoStartService(autoStart);
    return QDBusConnection::sessionBus().call(message, QDBus::Block, int(busCallTimeout.count()));
}

QDBusMessage property(const QString& service, const QString& path, const QString& interface,
                      const QString& name, bool autoStart)
{
    return call(service, path, propertiesInterface, QStringLiteral("Get"), {interface, name},
                autoStart);
}

bool answered(const QDBusMessage& reply, int arguments)
{
    return reply.type() == QDBusMessage::ReplyMessage && reply.arguments().size() >= arguments;
}

QString failure(const QDBusMessage& reply)
{
    if (reply.type() == QDBusMessage::ErrorMessage)
        return reply.errorMessage().isEmpty() ? reply.errorName() : reply.errorMessage();
    return QStringLiteral("unexpected answer");
}

// A property's value, unwrapped from the variant Get returns.
QVariant propertyValue(const QDBusMessage& reply)
{
    return reply.arguments().front().value<QDBusVariant>().variant();
}

QStringList dataDirectories()
{
    QStringList directories;
    const QString dataHome = qEnvironmentVariable("XDG_DATA_HOME");
    directories << (dataHome.startsWith(QLatin1Char('/'))
                        ? dataHome
                        : QDir::homePath() + QStringLiteral("/.local/share"));
    QString dataDirs = qEnvironmentVariable("XDG_DATA_DIRS");
    if (dataDirs.isEmpty())
        dataDirs = QStringLiteral("/usr/local/share:/usr/share");
    for (const QString& directory : dataDirs.split(QLatin1Char(':'), Qt::SkipEmptyParts))
        if (directory.startsWith(QLatin1Char('/')))
            directories << directory;
    return directories;
}

class LinuxSystemHealth final : public SystemHealth {
public:
    BusHealth sessionBus(const QString& companionName) override
    {
        BusHealth health;
        health.address = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
        health.error = unreachableBus();
        if (health.error)
            return health;
        QDBusConnectionInterface* bus = QDBusConnection::sessionBus().interface();
        if (bus->isServiceRegistered(companionName).value())
            health.companionPid = bus->servicePid(companionName).value();
        return health;
    }

    SuiteHealth sharedSuite(const QString& suiteName) override
    {
        SuiteHealth health;
        health.path = SharedSuite::location(suiteName);
        health.userUid = ::geteuid();
        const QByteArray path = QFile::encodeName(health.path);
        struct stat status {};
        if (path.isEmpty() || ::stat(path.constData(), &status) != 0)
            return health;
        health.exists = true;
        health.isDirectory = S_ISDIR(status.st_mode);
        health.ownerUid = status.st_uid;
        health.mode = status.st_mode & 07777;
        if (!health.isDirectory)
            return health;

        // A hidden name: the suite's observers never hear of it.
        QByteArray probe = path + "/.doctor-XXXXXX";
        const int fd = ::mkostemp(probe.data(), O_CLOEXEC);
        if (fd < 0) {
            health.writeError = errnoText(errno);
        } else {
            const bool written = ::write(fd, "x", 1) == 1;
            const int writeErrno = errno;
            ::close(fd);
            ::unlink(probe.constData());
            if (!written)
                health.writeError = errnoText(writeErrno);
        }

        const int inotify = ::inotify_init1(IN_CLOEXEC);
        if (inotify < 0) {
            health.watchError = errnoText(errno);
        } else {
            if (::inotify_add_watch(inotify, path.constData(),
                                    IN_MOVED_TO | IN_CLOSE_WRITE | IN_DELETE | IN_MOVED_FROM |
                                        IN_ONLYDIR) < 0)
                health.watchError = errnoText(errno);
            ::close(inotify);
        }
        return health;
    }

    SecretServiceHealth secretService() override
    {
        SecretServiceHealth health;
        health.error = unreachableBus();
        if (health.error)
            return health;
        // Started by the bus when it does not run, as the keychain would have it started.
        const QDBusMessage alias =
            call(secretsService, QStringLiteral("/org/freedesktop/secrets"),
                 QStringLiteral("org.freedesktop.Secret.Service"), QStringLiteral("ReadAlias"),
                 {QStringLiteral("default")}, true);
        if (!answered(alias, 1)) {
            health.error = failure(alias);
            return health;
        }
        const QString path = alias.arguments().front().value<QDBusObjectPath>().path();
        if (path.isEmpty() || path == QStringLiteral("/"))
            return health;
        health.defaultCollection = path;
        const QDBusMessage locked =
            property(secretsService, path, QStringLiteral("org.freedesktop.Secret.Collection"),
                     QStringLiteral("Locked"), false);
        if (answered(locked, 1))
            health.locked = propertyValue(locked).toBool();
        else
            health.lockedError = failure(locked);
        return health;
    }

    BrokerHealth broker(const QString& serviceName) override
    {
        BrokerHealth health;
        for (const QString& directory : dataDirectories()) {
            const QString file = directory + QStringLiteral("/dbus-1/services/") + serviceName +
                                 QStringLiteral(".service");
            if (QFileInfo::exists(file))
                health.serviceFiles << file;
        }
        health.busError = unreachableBus();
        if (health.busError)
            return health;
        QDBusConnectionInterface* bus = QDBusConnection::sessionBus().interface();
        health.activatable = bus->activatableServiceNames().value().contains(serviceName);
        if (!bus->isServiceRegistered(serviceName).value())
            return health;
        health.pid = bus->servicePid(serviceName).value();

        health.connections = BrokerLink::connectedHosts(serviceName);
        if (!health.connections)
            health.connectionsError =
                QStringLiteral("com.lexmira.ExtensionHost1.Connections did not answer");

        const QString path = ExtensionBus::objectPath(serviceName);
        const QDBusMessage state = call(serviceName, path, ExtensionBus::interfaceName,
                                        ExtensionBus::getStateMethod, {}, false);
        if (answered(state, 1)) {
            health.enabled = state.arguments().front().toBool();
            const QDBusMessage name = property(serviceName, path, ExtensionBus::interfaceName,
                                               ExtensionBus::browserNameProperty, false);
            if (answered(name, 1))
                health.browserName = propertyValue(name).toString();
        } else {
            health.stateError = failure(state);
        }
        return health;
    }

    DesktopServiceHealth settingsPortal() override
    {
        DesktopServiceHealth health;
        health.error = unreachableBus();
        if (health.error)
            return health;
        const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
        const QString settings = QStringLiteral("org.freedesktop.portal.Settings");
        const QDBusMessage version =
            property(portalService, path, settings, QStringLiteral("version"), true);
        if (!answered(version, 1)) {
            health.error = failure(version);
            return health;
        }
        health.description = QStringLiteral("version %1").arg(propertyValue(version).toUInt());
        const QDBusMessage scheme = call(
            portalService, path, settings, QStringLiteral("Read"),
            {QStringLiteral("org.freedesktop.appearance"), QStringLiteral("color-scheme")}, false);
        if (answered(scheme, 1)) {
            // Read wraps the value in one variant more than the property does.
            QVariant value = scheme.arguments().front().value<QDBusVariant>().variant();
            if (value.canConvert<QDBusVariant>())
                value = value.value<QDBusVariant>().variant();
            static const char* const schemes[] = {"no preference", "dark", "light"};
            const uint index = value.toUInt();
            health.description +=
                QStringLiteral(", color-scheme %1")
                    .arg(index < 3 ? QString::fromLatin1(schemes[index]) : QString::number(index));
        } else {
            health.error = failure(scheme);
        }
        return health;
    }

    DesktopServiceHealth notificationServer() override
    {
        DesktopServiceHealth health;
        health.error = unreachableBus();
        if (health.error)
            return health;
        const QDBusMessage reply =
            call(notificationsService, QStringLiteral("/org/freedesktop/Notifications"),
                 notificationsService, QStringLiteral("GetServerInformation"), {}, true);
        if (!answered(reply, 3)) {
            health.error = failure(reply);
            return health;
        }
        const QVariantList values = reply.arguments();
        health.description =
            QStringLiteral("%1 %2 (%3)")
                .arg(values.at(0).toString(), values.at(2).toString(), values.at(1).toString());
        return health;
    }

    NetworkServiceHealth service(const QUrl& url) override
    {
        NetworkServiceHealth health;
        const QString host = url.host();
        const auto port = quint16(url.port(443));

        QHostInfo resolved;
        bool done = false;
        QEventLoop loop;
        QTimer::singleShot(resolveTimeout, &loop, &QEventLoop::quit);
        const int lookup = QHostInfo::lookupHost(host, &loop, [&](const QHostInfo& info) {
            resolved = info;
            done = true;
            loop.quit();
        });
        if (!done)
            loop.exec();
        if (!done) {
            QHostInfo::abortHostLookup(lookup);
            health.resolveError =
                QStringLiteral("no answer within %1 seconds")
                    .arg(std::chrono::duration_cast<std::chrono::seconds>(resolveTimeout).count());
            return health;
        }
        if (resolved.error() != QHostInfo::NoError || resolved.addresses().isEmpty()) {
            health.resolveError = resolved.errorString();
            return health;
        }
        for (const QHostAddress& address : resolved.addresses())
            health.addresses << address.toString();

        QSslSocket socket;
        socket.setSslConfiguration(verifyingTlsConfiguration());
        QElapsedTimer clock;
        clock.start();
        socket.connectToHostEncrypted(host, port);
        const QDeadlineTimer handshakeDeadline(handshakeTimeout);
        if (!socket.waitForConnected(int(handshakeDeadline.remainingTime()))) {
            health.connectError =
                socket.error() == QAbstractSocket::SocketTimeoutError
                    ? QStringLiteral("no connection within %1 ms").arg(handshakeTimeout.count())
                    : socket.errorString();
            return health;
        }
        if (!socket.waitForEncrypted(int(handshakeDeadline.remainingTime()))) {
            QStringList reasons;
            for (const QSslError& error : socket.sslHandshakeErrors())
                reasons << error.errorString();
            if (reasons.isEmpty())
                reasons << (socket.error() == QAbstractSocket::SocketTimeoutError
                                ? QStringLiteral("no handshake within %1 ms")
                                      .arg(handshakeTimeout.count())
                                : socket.errorString());
            health.tlsError = reasons.join(QStringLiteral("; "));
            return health;
        }
        health.handshake = std::chrono::milliseconds(clock.elapsed());

        QString target = url.path(QUrl::FullyEncoded);
        if (target.isEmpty())
            target = QStringLiteral("/");
        const QString authority =
            url.port() >= 0 ? host + QLatin1Char(':') + QString::number(port) : host;
        socket.write(QStringLiteral("GET %1 HTTP/1.1\r\nHost: %2\r\nUser-Agent: "
                                    "lexmira-companion-doctor\r\nConnection: close\r\n\r\n")
                         .arg(target, authority)
                         .toLatin1());
        socket.flush();
        const QDeadlineTimer deadline(firstByteTimeout);
        while (socket.bytesAvailable() == 0 && !deadline.hasExpired() &&
               socket.state() == QAbstractSocket::ConnectedState)
            socket.waitForReadyRead(int(deadline.remainingTime()));
        if (socket.bytesAvailable() == 0) {
            health.requestError =
                socket.state() == QAbstractSocket::ConnectedState
                    ? QStringLiteral("no answer within %1 ms").arg(firstByteTimeout.count())
                    : socket.errorString();
            return health;
        }
        health.firstByte = std::chrono::milliseconds(clock.elapsed());
        if (socket.canReadLine() || socket.waitForReadyRead(int(firstByteTimeout.count())) ||
            socket.bytesAvailable() > 0)
            health.statusLine = socket.readLine(256).trimmed();
        socket.abort();
        return health;
    }
};

} // namespace

std::unique_ptr<SystemHealth> SystemHealth::create()
{
    return std::make_unique<LinuxSystemHealth>();
}

} // namespace lexmira
