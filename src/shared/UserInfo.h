// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace lexmira {

// The signed-in (or anonymous) user, as the extension shares it under "userInfo".
struct UserInfo {
    std::string userId;
    bool isTestUser = false;
    bool isAnonymous = false;
    std::string containerId;

    bool operator==(const UserInfo&) const = default;
};

// Keys in field order, none omitted.
void to_json(nlohmann::ordered_json& json, const UserInfo& info);
// All four keys are required with their types; throws nlohmann::json::exception otherwise.
void from_json(const nlohmann::ordered_json& json, UserInfo& info);

} // namespace lexmira
