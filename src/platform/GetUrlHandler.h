// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

#include <optional>

namespace lexmira {

// Receives the URLs the application is asked to open (a sign-in callback, for instance).
// Called on the main thread, once per URL, in the order they arrived.
class GetUrlHandler {
public:
    virtual ~GetUrlHandler() = default;
    // url is none when the request carried no URL text.
    virtual void handleGetURL(const std::optional<QString>& url) = 0;
};

} // namespace lexmira
