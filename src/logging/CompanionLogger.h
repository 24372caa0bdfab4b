// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string_view>

namespace lexmira {

// The application's sources of remote log messages.
enum class CompanionLogger {
    oauthHandleUrl,         // the sign-in hand-off could not reach the extension
    getExtensionState,      // the extension's state could not be read
    openSafari,             // the browser could not be opened
    openExtensionsSettings, // the browser's extension settings could not be opened
};

// "oauth.handleUrl", "getExtensionState", "openSafari", "openExtensionsSettings".
std::string_view rawValue(CompanionLogger logger);
std::optional<CompanionLogger> companionLoggerFromRawValue(std::string_view raw);

} // namespace lexmira
