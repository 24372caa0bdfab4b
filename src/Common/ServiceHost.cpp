// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "Common/ServiceHost.h"

#include <algorithm>
#include <charconv>

namespace lexmira {

namespace {

std::optional<quint16> parsePort(std::string_view text)
{
    unsigned value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || error != std::errc() || end != text.data() + text.size() || value == 0 ||
        value > 65535)
        return std::nullopt;
    return quint16(value);
}

} // namespace

ServiceHost ServiceHost::parse(std::string_view text)
{
    if (text.starts_with('[')) {
        const auto close = text.find(']');
        if (close != std::string_view::npos) {
            const auto rest = text.substr(close + 1);
            const std::string address(text.substr(1, close - 1));
            if (rest.empty())
                return {address, std::nullopt};
            if (rest.starts_with(':'))
                if (const auto port = parsePort(rest.substr(1)))
                    return {address, port};
        }
        return {std::string(text), std::nullopt};
    }
    if (std::count(text.begin(), text.end(), ':') == 1) {
        const auto colon = text.find(':');
        if (const auto port = parsePort(text.substr(colon + 1)))
            return {std::string(text.substr(0, colon)), port};
    }
    return {std::string(text), std::nullopt};
}

} // namespace lexmira
