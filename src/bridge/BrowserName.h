// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

namespace lexmira {

// The texts shown to the user name Safari, where the extension lives on the Mac. Here it lives
// in whichever browser the user has, and its native side reports that browser's display name;
// the texts name that browser instead, every other word unchanged.
namespace BrowserName {

// Longer names, or names with line breaks or other control characters, are not shown.
inline constexpr qsizetype maxLength = 40;

// The browser named in the texts as written.
inline const QString written = QStringLiteral("Safari");

// text with the written browser replaced by name. An empty or unusable name leaves text exactly
// as it stands.
QString in(const QString& text, const QString& name);

// Whether name can stand in a text: one line of 1 to maxLength printable characters, with no
// blank at either end.
bool isUsable(const QString& name);

} // namespace BrowserName

} // namespace lexmira
