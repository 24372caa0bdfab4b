// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "logging/CompanionLogger.h"

namespace lexmira {

std::string_view rawValue(CompanionLogger logger)
{
    switch (logger) {
    case CompanionLogger::oauthHandleUrl:
        return "oauth.handleUrl";
    case CompanionLogger::getExtensionState:
        return "getExtensionState";
    case CompanionLogger::openSafari:
        return "openSafari";
    case CompanionLogger::openExtensionsSettings:
        return "openExtensionsSettings";
    }
    return {};
}

std::optional<CompanionLogger> companionLoggerFromRawValue(std::string_view raw)
{
    for (const auto logger : {CompanionLogger::oauthHandleUrl, CompanionLogger::getExtensionState,
                              CompanionLogger::openSafari, CompanionLogger::openExtensionsSettings})
        if (rawValue(logger) == raw)
            return logger;
    return std::nullopt;
}

} // namespace lexmira
