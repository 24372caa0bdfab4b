// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/HttpClient.h"

#include <QUrl>

#include <memory>
#include <string>
#include <vector>

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
    // regard to case; one field may carry several cookies separated by "\n"), in the order they
    // appear, for a response from url. Malformed cookies are left out. Thread-safe.
    virtual std::vector<HttpCookie> cookies(const HttpHeaderFields& headerFields,
                                            const QUrl& url) const = 0;

    static std::unique_ptr<HttpCookieParser> create();
};
