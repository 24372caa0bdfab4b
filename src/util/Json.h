// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <nlohmann/json.hpp>

#include <QByteArray>

#include <optional>

namespace lexmira {

namespace Json {

// Compact JSON text as the extension's side writes it: keys in insertion order, non-ASCII
// characters as UTF-8, and "/" escaped as "\/". None when a string is not valid UTF-8.
std::optional<QByteArray> encode(const nlohmann::ordered_json& value);

// Parses JSON text; none when the bytes are not one complete JSON document.
std::optional<nlohmann::ordered_json> decode(const QByteArray& bytes);

} // namespace Json

} // namespace lexmira
