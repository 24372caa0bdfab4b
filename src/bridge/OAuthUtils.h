// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bridge/OAuthResultUrlData.h"

#include <QString>

#include <optional>

namespace lexmira {

namespace OAuthUtils {

// The code and challenge of a sign-in callback URL:
// "lexmira.extension://oauth?code=<code>&code_challenge=<challenge>", the path "/" or empty.
// None for an absent or unparsable string, a URL without a query, another scheme or host
// (compared exactly, case included), any other path, or a query that does not end up with both
// items. Query items are read in order; a later item overwrites an earlier one, and an item
// without "=" resets its field. Values are percent-decoded; "+" stays "+"; a value whose
// decoded bytes are not UTF-8 counts as an item without a value. Thread-safe.
std::optional<OAuthResultUrlData> parse(const std::optional<QString>& url);

} // namespace OAuthUtils

} // namespace lexmira
