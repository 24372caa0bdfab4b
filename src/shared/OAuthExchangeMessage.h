// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace lexmira {

// The authorisation code and PKCE challenge handed to the extension after sign-in. The URL's
// "code_challenge" is "codeChallenge" here, in the message and in the stored record.
struct OAuthExchangeMessage {
    std::string code;
    std::string codeChallenge;

    bool operator==(const OAuthExchangeMessage&) const = default;
};

// Keys in field order: "code", "codeChallenge".
void to_json(nlohmann::ordered_json& json, const OAuthExchangeMessage& message);
// Both keys required, as strings; throws nlohmann::json::exception otherwise.
void from_json(const nlohmann::ordered_json& json, OAuthExchangeMessage& message);

} // namespace lexmira
