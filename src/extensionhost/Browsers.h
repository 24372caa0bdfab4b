// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace lexmira {

// How a browser finds native messaging hosts and names the extensions it allows.
enum class BrowserFamily { Chromium, Firefox };

// One browser the host can be registered with.
struct Browser {
    QString key;         // as given to --browser: "chromium", "firefox", ...
    QString displayName; // as shown to the user: "Chromium", "Firefox", ...
    BrowserFamily family;
    // Chromium family only: the default profile directory, relative to the XDG config home.
    QString configSubdir;
    // Executables that start this browser, the most usual first.
    QStringList executables;
};

// The browsers the host knows. Stateless; callable from any thread.
class Browsers {
public:
    static const std::vector<Browser>& all();
    static std::optional<Browser> find(const QString& key);
    // The keys, in the order of all(), joined for texts: "chromium, chrome, ...".
    static QString keyList();

    // The first of browser's executables found on PATH, or its first executable when none is.
    static QString defaultExecutable(const Browser& browser);

    // The page that shows the extension's settings in a browser of that family.
    static QString settingsPageUrl(BrowserFamily family, const QString& extensionId);
};

} // namespace lexmira
