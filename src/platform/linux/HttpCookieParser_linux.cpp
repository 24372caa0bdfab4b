// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/HttpCookieParser.h"

#include <QNetworkCookie>
#include <QStringDecoder>

namespace lexmira {

namespace {

bool isUtf8(const QByteArray& bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    [[maybe_unused]] const QString text = utf8(bytes);
    return !utf8.hasError();
}

// What a later request can send back inside one header field: no line break, no NUL.
bool fitsInAHeaderField(const QByteArray& bytes)
{
    return !bytes.contains('\r') && !bytes.contains('\n') && !bytes.contains('\0');
}

class QtCookieParser final : public HttpCookieParser {
public:
    std::vector<HttpCookie> cookies(const HttpHeaderFields& headerFields,
                                    const QUrl& url) const override
    {
        std::vector<HttpCookie> result;
        for (const auto& [name, value] : headerFields) {
            if (name.compare("set-cookie", Qt::CaseInsensitive) != 0)
                continue;
            for (const QByteArray& text : HttpCookieFields::split(value)) {
                for (QNetworkCookie cookie : QNetworkCookie::parseCookies(text)) {
                    // Names and values are kept as text further on, and go back to the server
                    // in a header field; bytes that are not text would make every later use of
                    // the cookie fail, and a NUL would end the field early, so such a cookie is
                    // not taken.
                    if (!isUtf8(cookie.name()) || !isUtf8(cookie.value()) ||
                        !fitsInAHeaderField(cookie.name()) || !fitsInAHeaderField(cookie.value()))
                        continue;
                    cookie.normalize(url);
                    result.push_back({cookie.name().toStdString(), cookie.value().toStdString()});
                }
            }
        }
        return result;
    }
};

} // namespace

std::unique_ptr<HttpCookieParser> HttpCookieParser::create()
{
    return std::make_unique<QtCookieParser>();
}

} // namespace lexmira
