// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "util/Utils.h"

#include <array>
#include <cstdlib>

namespace lexmira {

namespace {

constexpr std::size_t alphabetSize = 62;
constexpr std::size_t identifierLength = 8;

// A..Z, a..z, 0..9, in that order.
const std::array<char, alphabetSize>& alphabet()
{
    static const auto table = [] {
        std::array<char, alphabetSize> chars{};
        std::size_t at = 0;
        for (const auto& [first, last] : {std::pair{'A', 'Z'}, {'a', 'z'}, {'0', '9'}})
            for (char c = first; c <= last; ++c)
                chars[at++] = c;
        return chars;
    }();
    return table;
}

} // namespace

namespace Utils {

std::string randomIdentifier()
{
    const auto& chars = alphabet();
    std::string identifier;
    identifier.reserve(identifierLength);
    for (std::size_t i = 0; i < identifierLength; ++i)
        identifier.push_back(chars[arc4random_uniform(static_cast<uint32_t>(chars.size()))]);
    return identifier;
}

} // namespace Utils

} // namespace lexmira
