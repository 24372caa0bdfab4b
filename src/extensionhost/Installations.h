// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "extensionhost/Browsers.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

namespace lexmira {

// One registration of the host with one browser profile.
struct Installation {
    QString browser;       // a key of Browsers: "chromium", "firefox", ...
    QString extensionId;   // the one extension the manifest allows
    QString userDataDir;   // absolute profile directory; empty = the browser's default profile
    QString manifestPath;  // absolute path of the manifest install wrote
    QStringList command;   // program and arguments that open this browser
    QDateTime installedAt; // UTC
};

struct InstallResult {
    std::optional<Installation> installation; // set on success
    QString error;                            // why not, in plain words, otherwise
    explicit operator bool() const { return installation.has_value(); }
};

struct UninstallResult {
    enum class Status { Removed, NothingInstalled, Failed };
    Status status = Status::NothingInstalled;
    std::optional<Installation> removed; // set when Removed
    QString error;                       // set when Failed
};

// Registers the host with browsers and keeps the records of those registrations, which the
// broker reads to name the browser a connection comes from and to open its settings page.
//
// Every path comes in through the constructor, so nothing here reads the environment. Not
// thread-safe; several processes may use the same records, and each write replaces the records
// file atomically (the last writer wins).
class Installations {
public:
    // The name the browser knows the host by, and the manifest's file name without ".json".
    static constexpr const char* kHostName = "com.lexmira.companion.ext";
    // A records file larger than this is not read; it reads as no records.
    static constexpr qint64 kMaxRecordsFileBytes = 1024 * 1024;
    // Longer extension ids are refused (Firefox ids are free-form up to this length).
    static constexpr qsizetype kMaxExtensionIdLength = 255;
    static constexpr qsizetype kChromiumExtensionIdLength = 32;

    using Clock = std::function<QDateTime()>;

    // configHome: $XDG_CONFIG_HOME, or $HOME/.config; home: $HOME. Both absolute.
    Installations(QString configHome, QString home, Clock clock = &QDateTime::currentDateTimeUtc);

    // The paths of this process's environment, as the installed executable uses them.
    static Installations fromEnvironment();

    // Writes the manifest that lets extensionId of browser start the host at hostPath and
    // records it; replaces an earlier installation for the same browser and userDataDir.
    // browserCommand empty: the browser's usual executable (with --user-data-dir=DIR for a
    // Chromium profile directory); otherwise split as a shell would.
    [[nodiscard]] InstallResult install(const QString& browser, const QString& extensionId,
                                        const QString& userDataDir, const QString& browserCommand,
                                        const QString& hostPath) const;

    // Removes the manifest and the record install wrote for browser and userDataDir.
    [[nodiscard]] UninstallResult uninstall(const QString& browser,
                                            const QString& userDataDir) const;

    // All records, oldest installation first. A missing, unreadable or corrupt records file
    // reads as none.
    std::vector<Installation> records() const;

    // The most recently installed record of that family allowing that extension.
    std::optional<Installation> forConnection(BrowserFamily family,
                                              const QString& extensionId) const;
    std::optional<Installation> mostRecent() const;

    // Where install writes the manifest; nullopt for an unknown browser.
    std::optional<QString> manifestPath(const QString& browser, const QString& userDataDir) const;
    QString recordsPath() const;

    // Whether extensionId has the form family's browsers give their extensions.
    static bool isValidExtensionId(BrowserFamily family, const QString& extensionId);
    // The exact bytes of the manifest for browser.
    static QByteArray manifestBytes(const Browser& browser, const QString& extensionId,
                                    const QString& hostPath);

private:
    [[nodiscard]] bool writeRecords(const std::vector<Installation>& records, QString* error) const;

    QString configHome_;
    QString home_;
    Clock clock_;
};

} // namespace lexmira
