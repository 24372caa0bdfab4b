// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/BrokerBus.h"

#include <QString>
#include <QStringList>
#include <QUrl>

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

namespace lexmira {

// What the session bus looked like.
struct BusHealth {
    std::optional<QString> error; // set when the bus cannot be reached
    QString address;              // DBUS_SESSION_BUS_ADDRESS as found
    // The process that owns the companion's name; none when no instance runs.
    std::optional<uint> companionPid;
};

// The shared suite's directory as the file system has it.
struct SuiteHealth {
    QString path;
    bool exists = false;
    bool isDirectory = false;
    uint ownerUid = 0;
    uint userUid = 0; // the uid this process runs as
    uint mode = 0;    // permission bits only
    // Why a file could not be created and removed in it; none when that worked.
    std::optional<QString> writeError;
    // Why inotify could not watch it; none when it could.
    std::optional<QString> watchError;
};

// The Secret Service, as reached on the session bus.
struct SecretServiceHealth {
    std::optional<QString> error; // set when the service does not answer
    // The object path of the default collection; none when there is no default collection.
    std::optional<QString> defaultCollection;
    std::optional<bool> locked; // none when it could not be read
    QString lockedError;
};

// The extension's name on the session bus and whoever serves it.
struct BrokerHealth {
    std::optional<QString> busError; // set when the session bus cannot be reached
    // Service files for the name in the bus's usual directories.
    QStringList serviceFiles;
    bool activatable = false; // the bus lists the name as activatable
    // The process serving the name now; none when nothing does.
    std::optional<uint> pid;
    // The broker's connections; none when nothing serves the name or it did not tell.
    std::optional<std::vector<HostPeer>> connections;
    QString connectionsError;
    // Whether the extension is enabled; none when nothing serves the name or it did not tell.
    std::optional<bool> enabled;
    QString browserName;
    QString stateError;
};

// A desktop service on the session bus (the settings portal, the notification server).
struct DesktopServiceHealth {
    std::optional<QString> error; // set when it does not answer
    QString description;          // what it said about itself
};

// One HTTPS service, reached the way the application reaches it.
struct NetworkServiceHealth {
    QStringList addresses;               // what the host name resolved to
    std::optional<QString> resolveError; // set when it did not resolve
    std::optional<QString> connectError; // set when no connection could be made
    std::optional<QString> tlsError;     // set when the handshake failed or did not verify
    std::optional<QString> requestError; // set when no answer came after the handshake
    std::chrono::milliseconds handshake{0};
    std::chrono::milliseconds firstByte{0}; // from the start of the connection
    QByteArray statusLine;
};

// Looks at the facilities the application depends on, without changing them (the one exception
// is a hidden temporary file created and removed again in the shared suite). Every method
// blocks for a bounded time, so this is for command-line use only; main thread of a
// QCoreApplication.
class SystemHealth {
public:
    virtual ~SystemHealth() = default;

    virtual BusHealth sessionBus(const QString& companionName) = 0;
    virtual SuiteHealth sharedSuite(const QString& suiteName) = 0;
    virtual SecretServiceHealth secretService() = 0;
    // Asks without starting anything that is not running.
    virtual BrokerHealth broker(const QString& serviceName) = 0;
    // The settings portal and the notification server are started by the bus when needed, as
    // the application would.
    virtual DesktopServiceHealth settingsPortal() = 0;
    virtual DesktopServiceHealth notificationServer() = 0;
    // Resolves url's host, shakes hands trusting what the application trusts, and sends one
    // GET of url's path.
    virtual NetworkServiceHealth service(const QUrl& url) = 0;

    static std::unique_ptr<SystemHealth> create();
};

} // namespace lexmira
