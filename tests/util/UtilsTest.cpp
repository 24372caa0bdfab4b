// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "util/Utils.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <vector>

namespace lexmira {

namespace {

bool isAlphanumeric(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
}

TEST(RandomIdentifier, IsEightCharactersFromTheAlphabet)
{
    for (int i = 0; i < 2000; ++i) {
        const auto identifier = Utils::randomIdentifier();
        ASSERT_EQ(identifier.size(), 8u);
        for (const char c : identifier)
            ASSERT_TRUE(isAlphanumeric(c)) << identifier;
    }
}

TEST(RandomIdentifier, DrawsFromEveryPartOfTheAlphabet)
{
    std::set<char> seen;
    for (int i = 0; i < 5000; ++i)
        for (const char c : Utils::randomIdentifier())
            seen.insert(c);
    EXPECT_EQ(seen.size(), 62u);
}

TEST(RandomIdentifier, IsSafeUnderConcurrentFirstUse)
{
    std::vector<std::thread> threads;
    std::vector<std::string> results(8);
    for (std::size_t i = 0; i < results.size(); ++i)
        threads.emplace_back([&results, i] { results[i] = Utils::randomIdentifier(); });
    for (auto& thread : threads)
        thread.join();
    for (const auto& identifier : results)
        EXPECT_EQ(identifier.size(), 8u);
}

} // namespace

} // namespace lexmira
