// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>

namespace lexmira {

// The current user's identifiers, as far as they are known. Read afresh on every access.
class PartialUserInfoProvider {
public:
    virtual ~PartialUserInfoProvider() = default;

    virtual std::optional<std::string> containerId() const = 0;
    virtual std::optional<std::string> userId() const = 0;
};

} // namespace lexmira
