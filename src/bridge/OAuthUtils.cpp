// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "bridge/OAuthUtils.h"

#include <QByteArray>
#include <QRegularExpression>
#include <QStringDecoder>
#include <QUrl>
#include <QUrlQuery>

#include <algorithm>

namespace lexmira {

namespace {

const QString callbackScheme = QStringLiteral("lexmira.extension");
const QString callbackHost = QStringLiteral("oauth");
const QString codeItem = QStringLiteral("code");
const QString codeChallengeItem = QStringLiteral("code_challenge");

// QUrl folds the scheme and the host to lower case, so both are compared as written. The
// components of a URL reference, as RFC 3986 (appendix B) splits them.
struct WrittenComponents {
    QString scheme;
    QString host;
};

WrittenComponents writtenComponents(const QString& text)
{
    static const QRegularExpression reference(QStringLiteral("^(?:([^:/?#]+):)?(?://([^/?#]*))?"));
    const auto match = reference.match(text);
    WrittenComponents written{match.captured(1), match.captured(2)};
    // The authority without its user information and its port.
    if (const auto at = written.host.lastIndexOf(QLatin1Char('@')); at >= 0)
        written.host = written.host.mid(at + 1);
    const auto bracket = written.host.lastIndexOf(QLatin1Char(']'));
    if (const auto colon = written.host.lastIndexOf(QLatin1Char(':')); colon > bracket)
        written.host.truncate(colon);
    return written;
}

// The URL with a percent-encoded host written decoded, as URL components read a host: "o%61uth"
// names the host "oauth".
QString withHostDecoded(const QString& text)
{
    static const QRegularExpression authority(QStringLiteral("^[^:/?#]+://([^/?#]*)"));
    const auto match = authority.match(text);
    if (!match.hasMatch() || !match.captured(1).contains(QLatin1Char('%')))
        return text;
    const QString whole = match.captured(1);
    qsizetype start = whole.lastIndexOf(QLatin1Char('@')) + 1;
    qsizetype end = whole.size();
    const auto bracket = whole.lastIndexOf(QLatin1Char(']'));
    if (const auto colon = whole.lastIndexOf(QLatin1Char(':')); colon > bracket && colon >= start)
        end = colon;
    const QString host = QString::fromUtf8(
        QByteArray::fromPercentEncoding(whole.mid(start, end - start).toUtf8()));
    QString decoded = text;
    decoded.replace(match.capturedStart(1) + start, end - start, host);
    return decoded;
}

// URL components accept only the characters a URL may hold as written: printable ASCII. A raw
// space, control character or non-ASCII character has to be percent-encoded.
bool hasOnlyUrlCharacters(const QString& text)
{
    return std::all_of(text.begin(), text.end(),
                       [](QChar c) { return c.unicode() > 0x20 && c.unicode() < 0x7F; });
}

// A percent-encoded query value as text; none when its bytes are not UTF-8.
std::optional<std::string> decodedValue(const QString& encoded)
{
    const QByteArray bytes = QByteArray::fromPercentEncoding(encoded.toUtf8());
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = utf8(bytes);
    if (utf8.hasError())
        return std::nullopt;
    return text.toStdString();
}

} // namespace

namespace OAuthUtils {

std::optional<OAuthResultUrlData> parse(const std::optional<QString>& url)
{
    if (!url || !hasOnlyUrlCharacters(*url))
        return std::nullopt;
    const QString text = withHostDecoded(*url);
    const QUrl components(text, QUrl::StrictMode);
    if (!components.isValid())
        return std::nullopt;
    if (!components.hasQuery())
        return std::nullopt;
    const WrittenComponents written = writtenComponents(text);
    if (components.scheme() != callbackScheme || written.scheme != callbackScheme)
        return std::nullopt;
    if (components.host() != callbackHost || written.host != callbackHost)
        return std::nullopt;
    const QString path = components.path(QUrl::FullyDecoded);
    if (!path.isEmpty() && path != QLatin1String("/"))
        return std::nullopt;

    std::optional<std::string> code;
    std::optional<std::string> codeChallenge;
    const QUrlQuery query(components.query(QUrl::FullyEncoded));
    for (const auto& [encodedName, encodedValue] : query.queryItems(QUrl::FullyEncoded)) {
        const auto name = decodedValue(encodedName);
        std::optional<std::string>* field = nullptr;
        if (name == codeItem.toStdString())
            field = &code;
        else if (name == codeChallengeItem.toStdString())
            field = &codeChallenge;
        else
            continue;
        // "code" alone has no value (null), "code=" an empty one.
        *field = encodedValue.isNull() ? std::nullopt : decodedValue(encodedValue);
    }
    if (!code || !codeChallenge)
        return std::nullopt;
    return OAuthResultUrlData{*code, *codeChallenge};
}

} // namespace OAuthUtils

} // namespace lexmira
