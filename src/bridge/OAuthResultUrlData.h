// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace lexmira {

// What a valid sign-in callback URL carries. Both fields are always present; either may be
// the empty string.
struct OAuthResultUrlData {
    std::string code;
    std::string codeChallenge;

    bool operator==(const OAuthResultUrlData&) const = default;
};

} // namespace lexmira
