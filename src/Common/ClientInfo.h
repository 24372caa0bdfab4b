// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <string>

namespace lexmira {

// How this client introduces itself to the services. Decoded from the bundle's clientInfo.json.
struct ClientInfo {
    std::string clientType;
    std::string clientVersion;
    std::string norvClientType;

    bool operator==(const ClientInfo&) const = default;
};

void to_json(nlohmann::json& json, const ClientInfo& info);
// Throws nlohmann::json::exception when a key is missing or not a string; extra keys are ignored.
void from_json(const nlohmann::json& json, ClientInfo& info);

} // namespace lexmira
