// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string_view>

namespace lexmira {

// How serious a remote log message is.
enum class LogLevel { info, warn, error };

// "INFO", "WARN", "ERROR".
std::string_view rawValue(LogLevel level);
std::optional<LogLevel> logLevelFromRawValue(std::string_view raw);

} // namespace lexmira
