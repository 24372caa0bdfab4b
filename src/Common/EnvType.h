// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lexmira {

enum class EnvType { dev, prod };

std::string_view rawValue(EnvType type);
// Case-sensitive: "prod" decodes, "Prod" does not.
std::optional<EnvType> envTypeFromRawValue(std::string_view raw);

// Whether events sent from this environment are marked as test events: everywhere but
// production (compared by raw value).
bool forcesTestEvents(EnvType type);

} // namespace lexmira
