// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace lexmira {

// What the broker needs to know of the browsers the host is installed for: their names and the
// command that opens each one's settings page of the extension.
class BrowserRegistry {
public:
    struct Browser {
        QString browser;     // key: "chromium", "firefox", ...
        QString displayName; // "Chromium", "Firefox", ...
        // The command that starts the browser, and the page its settings for the extension are
        // on; the page goes last on the command line.
        QStringList command;
        QString settingsPage;
    };

    // How a browser starts its host, which tells its family but not which browser of it.
    enum class Family { chromium, firefox };

    virtual ~BrowserRegistry() = default;

    // The installation a connection of extensionId from a browser of this family came through.
    virtual std::optional<Browser> forConnection(Family family,
                                                 const QString& extensionId) const = 0;
    // The browser the host was installed for last.
    virtual std::optional<Browser> mostRecent() const = 0;

    // "firefox" is the one browser of the Firefox family; every other key is a Chromium one.
    static Family familyOf(const QString& browser)
    {
        return browser == QLatin1String("firefox") ? Family::firefox : Family::chromium;
    }
};

} // namespace lexmira
