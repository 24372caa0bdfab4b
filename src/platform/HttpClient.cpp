// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/HttpClient.h"

#include <algorithm>

namespace lexmira {

namespace {

std::optional<QByteArray> fieldValue(const HttpHeaderFields& fields, const QByteArray& name)
{
    const auto found = std::find_if(fields.begin(), fields.end(), [&name](const auto& field) {
        return field.first.compare(name, Qt::CaseInsensitive) == 0;
    });
    if (found == fields.end())
        return std::nullopt;
    return found->second;
}

} // namespace

std::optional<QByteArray> HttpRequest::value(const QByteArray& name) const
{
    return fieldValue(headerFields, name);
}

void HttpRequest::setValue(const QByteArray& value, const QByteArray& name)
{
    for (auto& field : headerFields) {
        if (field.first.compare(name, Qt::CaseInsensitive) == 0) {
            field = {name, value};
            return;
        }
    }
    headerFields.emplace_back(name, value);
}

std::optional<QByteArray> HttpResponse::value(const QByteArray& name) const
{
    return fieldValue(headerFields, name);
}

QByteArray HttpClient::userAgentFor(const QString& applicationVersion)
{
    const QString version =
        applicationVersion.isEmpty() ? QStringLiteral(LEXMIRA_VERSION) : applicationVersion;
    return QStringLiteral("Lexmira Companion/%1 (Linux; Qt %2)")
        .arg(version, QString::fromLatin1(qVersion()))
        .toUtf8();
}

} // namespace lexmira
