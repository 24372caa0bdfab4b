// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

namespace lexmira {

// How the extension's native side sits on the session bus: its well-known name is the
// extension's identifier, its object path is derived from that name, and it answers one
// interface. Shared by the companion's bridge and the development peer in tools/.
namespace ExtensionBus {

inline const QString interfaceName = QStringLiteral("com.lexmira.Extension1");

inline const QString getStateMethod = QStringLiteral("GetState");
inline const QString dispatchMessageMethod = QStringLiteral("DispatchMessage");
inline const QString showPreferencesMethod = QStringLiteral("ShowPreferences");
inline const QString browserNameProperty = QStringLiteral("BrowserName");

// "com.lexmira.companion.ext" lives at "/com/lexmira/companion/ext": a leading slash, dots to
// slashes and "-" (allowed in bus names, not in object paths) to "_".
inline QString objectPath(const QString& identifier)
{
    QString path = QStringLiteral("/") + identifier;
    path.replace(QLatin1Char('.'), QLatin1Char('/'));
    path.replace(QLatin1Char('-'), QLatin1Char('_'));
    return path;
}

} // namespace ExtensionBus

} // namespace lexmira
