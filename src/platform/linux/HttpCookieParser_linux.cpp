// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/HttpCookieParser.h"

#include <QNetworkCookie>

namespace {

class QtCookieParser final : public HttpCookieParser {
public:
    std::vector<HttpCookie> cookies(const HttpHeaderFields& headerFields,
                                    const QUrl& url) const override
    {
        std::vector<HttpCookie> result;
        for (const auto& [name, value] : headerFields) {
            if (name.compare("set-cookie", Qt::CaseInsensitive) != 0)
                continue;
            for (QNetworkCookie cookie : QNetworkCookie::parseCookies(value)) {
                cookie.normalize(url);
                result.push_back({cookie.name().toStdString(), cookie.value().toStdString()});
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
