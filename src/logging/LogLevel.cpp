// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "logging/LogLevel.h"

namespace lexmira {

std::string_view rawValue(LogLevel level)
{
    switch (level) {
    case LogLevel::info:
        return "INFO";
    case LogLevel::warn:
        return "WARN";
    case LogLevel::error:
        return "ERROR";
    }
    return {};
}

std::optional<LogLevel> logLevelFromRawValue(std::string_view raw)
{
    for (const auto level : {LogLevel::info, LogLevel::warn, LogLevel::error})
        if (rawValue(level) == raw)
            return level;
    return std::nullopt;
}

} // namespace lexmira
