// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "util/Json.h"

namespace lexmira {

namespace Json {

std::optional<QByteArray> encode(const nlohmann::ordered_json& value)
{
    std::string text;
    try {
        text = value.dump();
    } catch (const nlohmann::json::exception&) {
        return std::nullopt;
    }
    // Outside strings JSON has no "/", so every one found is inside a string.
    QByteArray bytes;
    bytes.reserve(qsizetype(text.size()));
    for (const char c : text) {
        if (c == '/')
            bytes.append('\\');
        bytes.append(c);
    }
    return bytes;
}

std::optional<nlohmann::ordered_json> decode(const QByteArray& bytes)
{
    auto value = nlohmann::ordered_json::parse(bytes.begin(), bytes.end(), nullptr, false);
    if (value.is_discarded())
        return std::nullopt;
    return value;
}

} // namespace Json

} // namespace lexmira
