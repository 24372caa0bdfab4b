// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "shared/UserInfo.h"

namespace lexmira {

void to_json(nlohmann::ordered_json& json, const UserInfo& info)
{
    json = nlohmann::ordered_json{{"userId", info.userId},
                                  {"isTestUser", info.isTestUser},
                                  {"isAnonymous", info.isAnonymous},
                                  {"containerId", info.containerId}};
}

void from_json(const nlohmann::ordered_json& json, UserInfo& info)
{
    info.userId = json.at("userId").get<std::string>();
    info.isTestUser = json.at("isTestUser").get<bool>();
    info.isAnonymous = json.at("isAnonymous").get<bool>();
    info.containerId = json.at("containerId").get<std::string>();
}

} // namespace lexmira
