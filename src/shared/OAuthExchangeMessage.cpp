// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "shared/OAuthExchangeMessage.h"

namespace lexmira {

void to_json(nlohmann::ordered_json& json, const OAuthExchangeMessage& message)
{
    json = nlohmann::ordered_json{{"code", message.code}, {"codeChallenge", message.codeChallenge}};
}

void from_json(const nlohmann::ordered_json& json, OAuthExchangeMessage& message)
{
    message.code = json.at("code").get<std::string>();
    message.codeChallenge = json.at("codeChallenge").get<std::string>();
}

} // namespace lexmira
