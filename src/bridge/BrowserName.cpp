// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "bridge/BrowserName.h"

#include <algorithm>

namespace lexmira {

namespace BrowserName {

bool isUsable(const QString& name)
{
    if (name.isEmpty() || name.size() > maxLength || name != name.trimmed())
        return false;
    return std::all_of(name.cbegin(), name.cend(), [](QChar c) {
        return c.isPrint() && c.category() != QChar::Separator_Line &&
               c.category() != QChar::Separator_Paragraph;
    });
}

QString in(const QString& text, const QString& name)
{
    if (!isUsable(name))
        return text;
    QString named = text;
    return named.replace(written, name);
}

} // namespace BrowserName

} // namespace lexmira
