// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Common/EnvType.h"
#include "logging/LogLevel.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <string>

namespace lexmira {

// The body of one remote log request.
struct LogMessage {
    std::string application;
    std::string version;
    EnvType env = EnvType::prod;
    std::string sessionId;
    std::optional<std::string> userId;
    std::optional<std::string> containerId;
    std::string logger;
    LogLevel level = LogLevel::error;
    std::optional<std::string> message;

    bool operator==(const LogMessage&) const = default;
};

// Keys in field order; an optional field that is none is left out, never written as null.
void to_json(nlohmann::ordered_json& json, const LogMessage& message);

} // namespace lexmira
