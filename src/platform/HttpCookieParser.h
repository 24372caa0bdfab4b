// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/HttpClient.h"

#include <QUrl>

#include <memory>
#include <string>
#include <vector>

namespace lexmira {

// A cookie as a response set it: name and value exactly as sent, no unquoting, no decoding.
struct HttpCookie {
    std::string name;
    std::string value;

    bool operator==(const HttpCookie&) const = default;
};

// The platform's standard Set-Cookie parser.
class HttpCookieParser {
public:
    virtual ~HttpCookieParser() = default;

    // The cookies set by the Set-Cookie fields among headerFields (field names compared without
    // regard to case; one field may carry several cookies separated by "\n", or joined with ","
    // as when repeated fields are folded into one — a comma inside an Expires date does not
    // separate), in the order they appear, for a response from url. Malformed cookies, and
    // cookies whose name or value is not UTF-8, are left out. Thread-safe.
    virtual std::vector<HttpCookie> cookies(const HttpHeaderFields& headerFields,
                                            const QUrl& url) const = 0;

    static std::unique_ptr<HttpCookieParser> create();
};

namespace HttpCookieFields {
// Splits one Set-Cookie field's value into the cookies it carries: at "\n", and at a "," that
// starts a new name=value pair rather than continuing an Expires date.
std::vector<QByteArray> split(const QByteArray& fieldValue);
} // namespace HttpCookieFields

} // namespace lexmira
