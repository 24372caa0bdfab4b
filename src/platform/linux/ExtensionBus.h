// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

namespace lexmira {

// How the extension's native side sits on the session bus: its well-known name is the
// extension's identifier, its object path is derived from that name, and it answers one
// interface (dbus/com.lexmira.Extension1.xml). Shared by the companion's bridge and the
// development peer in tools/. The member names serve the doctor's calls, which must not start the
// extension's side and so do not go through the generated proxy, and the peer's record.
namespace ExtensionBus {

inline const QString interfaceName = QStringLiteral("com.lexmira.Extension1");

inline const QString getStateMethod = QStringLiteral("GetState");
inline const QString dispatchMessageMethod = QStringLiteral("DispatchMessage");
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
