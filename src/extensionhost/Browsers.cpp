// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "extensionhost/Browsers.h"

#include <QStandardPaths>

namespace lexmira {

const std::vector<Browser>& Browsers::all()
{
    static const std::vector<Browser> browsers{
        {QStringLiteral("chromium"),
         QStringLiteral("Chromium"),
         BrowserFamily::Chromium,
         QStringLiteral("chromium"),
         {QStringLiteral("chromium")}},
        {QStringLiteral("chrome"),
         QStringLiteral("Google Chrome"),
         BrowserFamily::Chromium,
         QStringLiteral("google-chrome"),
         {QStringLiteral("google-chrome"), QStringLiteral("google-chrome-stable")}},
        {QStringLiteral("brave"),
         QStringLiteral("Brave"),
         BrowserFamily::Chromium,
         QStringLiteral("BraveSoftware/Brave-Browser"),
         {QStringLiteral("brave-browser")}},
        {QStringLiteral("vivaldi"),
         QStringLiteral("Vivaldi"),
         BrowserFamily::Chromium,
         QStringLiteral("vivaldi"),
         {QStringLiteral("vivaldi")}},
        {QStringLiteral("edge"),
         QStringLiteral("Microsoft Edge"),
         BrowserFamily::Chromium,
         QStringLiteral("microsoft-edge"),
         {QStringLiteral("microsoft-edge")}},
        {QStringLiteral("firefox"),
         QStringLiteral("Firefox"),
         BrowserFamily::Firefox,
         QString(),
         {QStringLiteral("firefox"), QStringLiteral("firefox-esr")}},
    };
    return browsers;
}

std::optional<Browser> Browsers::find(const QString& key)
{
    for (const Browser& browser : all()) {
        if (browser.key == key)
            return browser;
    }
    return std::nullopt;
}

QString Browsers::keyList()
{
    QStringList keys;
    for (const Browser& browser : all())
        keys.append(browser.key);
    return keys.join(QStringLiteral(", "));
}

QString Browsers::defaultExecutable(const Browser& browser)
{
    for (const QString& executable : browser.executables) {
        if (!QStandardPaths::findExecutable(executable).isEmpty())
            return executable;
    }
    return browser.executables.value(0);
}

QString Browsers::settingsPageUrl(BrowserFamily family, const QString& extensionId)
{
    if (family == BrowserFamily::Firefox)
        return QStringLiteral("about:addons");
    return QStringLiteral("chrome://extensions/?id=") + extensionId;
}

} // namespace lexmira
