// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "Common/ClientInfo.h"

namespace lexmira {

void to_json(nlohmann::json& json, const ClientInfo& info)
{
    json = nlohmann::ordered_json{{"clientType", info.clientType},
                                  {"clientVersion", info.clientVersion},
                                  {"norvClientType", info.norvClientType}};
}

void from_json(const nlohmann::json& json, ClientInfo& info)
{
    info.clientType = json.at("clientType").get<std::string>();
    info.clientVersion = json.at("clientVersion").get<std::string>();
    info.norvClientType = json.at("norvClientType").get<std::string>();
}

} // namespace lexmira
