// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/HttpCookieParser.h"

#include <algorithm>

namespace lexmira {

namespace {

bool isSpace(char c)
{
    return c == ' ' || c == '\t';
}

// Whether text from start begins a cookie: a name without separators, then "=".
bool startsCookie(const QByteArray& text, qsizetype start)
{
    while (start < text.size() && isSpace(text[start]))
        ++start;
    const qsizetype nameStart = start;
    for (; start < text.size(); ++start) {
        const char c = text[start];
        if (c == '=')
            return start > nameStart;
        if (c == ';' || c == ',' || isSpace(c) || c == '"')
            return false;
    }
    return false;
}

// Whether the attribute that the comma at position comma ends is an Expires whose date has
// gone no further than its weekday, as in "Expires=Wed, 21 Oct 2026 07:28:00 GMT".
bool commaInsideExpires(const QByteArray& text, qsizetype comma)
{
    qsizetype start = comma;
    while (start > 0 && text[start - 1] != ';' && text[start - 1] != ',')
        --start;
    const QByteArray attribute = text.mid(start, comma - start).trimmed();
    const qsizetype equals = attribute.indexOf('=');
    if (equals < 0 || attribute.left(equals).trimmed().toLower() != "expires")
        return false;
    const QByteArray day = attribute.mid(equals + 1).trimmed();
    return !day.isEmpty() && std::all_of(day.begin(), day.end(), [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    });
}

} // namespace

std::vector<QByteArray> HttpCookieFields::split(const QByteArray& fieldValue)
{
    std::vector<QByteArray> cookies;
    for (const QByteArray& line : fieldValue.split('\n')) {
        qsizetype start = 0;
        for (qsizetype i = 0; i < line.size(); ++i) {
            if (line[i] != ',' || commaInsideExpires(line, i) || !startsCookie(line, i + 1))
                continue;
            cookies.push_back(line.mid(start, i - start).trimmed());
            start = i + 1;
        }
        cookies.push_back(line.mid(start).trimmed());
    }
    std::erase_if(cookies, [](const QByteArray& cookie) { return cookie.isEmpty(); });
    return cookies;
}

} // namespace lexmira
