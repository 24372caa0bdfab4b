// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "bridge/OAuthUtils.h"
#include "QtPrinters.h"

#include <gtest/gtest.h>

#include <ostream>

namespace lexmira {

namespace {

using Result = std::optional<OAuthResultUrlData>;

Result valid(std::string code, std::string codeChallenge)
{
    return OAuthResultUrlData{std::move(code), std::move(codeChallenge)};
}

Result parse(const char* url)
{
    return OAuthUtils::parse(QString::fromUtf8(url));
}

// The rules' own examples.

TEST(OAuthUtils, AValidCallbackYieldsItsCodeAndChallengeWithEitherPathForm)
{
    EXPECT_EQ(parse("lexmira.extension://oauth?code=abc&code_challenge=xyz"), valid("abc", "xyz"));
    EXPECT_EQ(parse("lexmira.extension://oauth/?code=abc&code_challenge=xyz"), valid("abc", "xyz"));
}

TEST(OAuthUtils, APathSegmentAfterTheHostYieldsNothingEvenWithAValidPair)
{
    EXPECT_EQ(parse("lexmira.extension://oauth/callback?code=abc&code_challenge=xyz"),
              std::nullopt);
}

TEST(OAuthUtils, AChallengeNamedCodeChallengeYieldsNothing)
{
    EXPECT_EQ(parse("lexmira.extension://oauth?code=abc&codeChallenge=xyz"), std::nullopt);
}

TEST(OAuthUtils, ATrailingCodeWithoutAValueResetsTheCode)
{
    EXPECT_EQ(parse("lexmira.extension://oauth?code=abc&code_challenge=xyz&code"), std::nullopt);
}

TEST(OAuthUtils, EmptyValuesYieldTwoEmptyStrings)
{
    EXPECT_EQ(parse("lexmira.extension://oauth?code=&code_challenge="), valid("", ""));
}

TEST(OAuthUtils, NoQueryAtAllYieldsNothing)
{
    EXPECT_EQ(parse("lexmira.extension://oauth"), std::nullopt);
    EXPECT_EQ(parse("lexmira.extension://oauth/"), std::nullopt);
}

TEST(OAuthUtils, AnAbsentStringYieldsNothing)
{
    EXPECT_EQ(OAuthUtils::parse(std::nullopt), std::nullopt);
}

TEST(OAuthUtils, AVeryLongCodeComesThroughWhole)
{
    const std::string code(200'000, 'k');
    const std::string url = "lexmira.extension://oauth?code=" + code + "&code_challenge=c";
    EXPECT_EQ(parse(url.c_str()), valid(code, "c"));
}

TEST(OAuthUtils, AVeryLongForeignUrlYieldsNothing)
{
    const std::string url = "lexmira.extension://oauth/" + std::string(200'000, '/') + "?code=a";
    EXPECT_EQ(parse(url.c_str()), std::nullopt);
}

// The table.

struct Case {
    const char* url;
    Result expected;
};

void PrintTo(const Case& c, std::ostream* out)
{
    *out << c.url;
}

class OAuthUtilsTable : public ::testing::TestWithParam<Case> {};

TEST_P(OAuthUtilsTable, ParsesAsTheRulesSay)
{
    EXPECT_EQ(parse(GetParam().url), GetParam().expected);
}

const Case cases[] = {
    // Scheme and host: exact, case included.
    {"lexmira.extension://oauth?code=a&code_challenge=b", valid("a", "b")},
    {"LEXMIRA.EXTENSION://oauth?code=a&code_challenge=b", std::nullopt},
    {"Lexmira.Extension://oauth?code=a&code_challenge=b", std::nullopt},
    {"lexmira.extension://OAUTH?code=a&code_challenge=b", std::nullopt},
    {"lexmira.extension://OAuth?code=a&code_challenge=b", std::nullopt},
    {"lexmira.extensions://oauth?code=a&code_challenge=b", std::nullopt},
    {"https://oauth?code=a&code_challenge=b", std::nullopt},
    {"lexmira.extension://oauth.example?code=a&code_challenge=b", std::nullopt},
    {"lexmira.extension:oauth?code=a&code_challenge=b", std::nullopt},
    {"lexmira.extension:///oauth?code=a&code_challenge=b", std::nullopt},
    {"oauth?code=a&code_challenge=b", std::nullopt},
    {" lexmira.extension://oauth?code=a&code_challenge=b", std::nullopt},
    {"", std::nullopt},
    // User information and a port leave the host as it is.
    {"lexmira.extension://user@oauth?code=a&code_challenge=b", valid("a", "b")},
    {"lexmira.extension://oauth:8080/?code=a&code_challenge=b", valid("a", "b")},
    // Paths.
    {"lexmira.extension://oauth/?code=a&code_challenge=b", valid("a", "b")},
    {"lexmira.extension://oauth/callback?code=a&code_challenge=b", std::nullopt},
    {"lexmira.extension://oauth/callback/?code=a&code_challenge=b", std::nullopt},
    {"lexmira.extension://oauth//?code=a&code_challenge=b", std::nullopt},
    {"lexmira.extension://oauth/%2F?code=a&code_challenge=b", std::nullopt},
    {"lexmira.extension://oauth/%20?code=a&code_challenge=b", std::nullopt},
    // Missing or empty query.
    {"lexmira.extension://oauth", std::nullopt},
    {"lexmira.extension://oauth/", std::nullopt},
    {"lexmira.extension://oauth?", std::nullopt},
    {"lexmira.extension://oauth/?", std::nullopt},
    // Item names.
    {"lexmira.extension://oauth?code=a&codeChallenge=b", std::nullopt},
    {"lexmira.extension://oauth?code=a", std::nullopt},
    {"lexmira.extension://oauth?code_challenge=b", std::nullopt},
    {"lexmira.extension://oauth?CODE=a&code_challenge=b", std::nullopt},
    {"lexmira.extension://oauth?c%6Fde=a&code%5Fchallenge=b", valid("a", "b")},
    {"lexmira.extension://oauth?code_challenge=b&code=a", valid("a", "b")},
    {"lexmira.extension://oauth?state=s&code=a&scope=x&code_challenge=b", valid("a", "b")},
    {"lexmira.extension://oauth?code=a;code_challenge=b", std::nullopt},
    // Repeated and valueless items: the last one wins, no value resets.
    {"lexmira.extension://oauth?code=a&code=second&code_challenge=b", valid("second", "b")},
    {"lexmira.extension://oauth?code=a&code_challenge=b&code_challenge=c", valid("a", "c")},
    {"lexmira.extension://oauth?code=a&code_challenge=b&code", std::nullopt},
    {"lexmira.extension://oauth?code=a&code_challenge=b&code_challenge", std::nullopt},
    {"lexmira.extension://oauth?code&code_challenge=b&code=a", valid("a", "b")},
    {"lexmira.extension://oauth?code&code_challenge", std::nullopt},
    {"lexmira.extension://oauth?&&code=a&&code_challenge=b&", valid("a", "b")},
    // Empty values are values.
    {"lexmira.extension://oauth?code=&code_challenge=", valid("", "")},
    {"lexmira.extension://oauth?code=&code_challenge=b", valid("", "b")},
    {"lexmira.extension://oauth?code=a&code_challenge=&code=", valid("", "")},
    // Percent-encoding is decoded; "+" is not a space.
    {"lexmira.extension://oauth?code=a%20b%2Bc&code_challenge=x%3Dy%26z", valid("a b+c", "x=y&z")},
    {"lexmira.extension://oauth?code=a+b&code_challenge=c", valid("a+b", "c")},
    {"lexmira.extension://oauth?code=a=b&code_challenge=c==", valid("a=b", "c==")},
    {"lexmira.extension://oauth?code=%2Fslash%2F&code_challenge=%23", valid("/slash/", "#")},
    {"lexmira.extension://oauth?code=%zz&code_challenge=b", std::nullopt},
    {"lexmira.extension://oauth?code=a%&code_challenge=b", std::nullopt},
    {"lexmira.extension://oauth?code=%FF&code_challenge=b", std::nullopt},
    {"lexmira.extension://oauth?code=%C3%28&code_challenge=b", std::nullopt},
    {"lexmira.extension://oauth?code=a b&code_challenge=c", std::nullopt},
    // Fragments are not part of the query.
    {"lexmira.extension://oauth?code=a&code_challenge=b#fragment", valid("a", "b")},
    {"lexmira.extension://oauth?code=a&code_challenge=b#code=c", valid("a", "b")},
    {"lexmira.extension://oauth#?code=a&code_challenge=b", std::nullopt},
    {"lexmira.extension://oauth?code=a#&code_challenge=b", std::nullopt},
    // Non-ASCII, encoded or as it stands.
    {"lexmira.extension://oauth?code=h%C3%A9&code_challenge=%E2%9C%93", valid("hé", "✓")},
    // Characters a URL cannot hold as written make the string no URL, raw spaces and raw
    // non-ASCII alike.
    {"lexmira.extension://oauth?code=hé&code_challenge=日本", std::nullopt},
    {"lexmira.extension://oauth?code=a\tb&code_challenge=c", std::nullopt},
    {"lexmira.extension://oauth?code=%F0%9F%94%91&code_challenge=b", valid("🔑", "b")},
    {"lexmira.extension://öauth?code=a&code_challenge=b", std::nullopt},
    // A percent-encoded host is the host it decodes to; its case still counts.
    {"lexmira.extension://o%61uth?code=a&code_challenge=b", valid("a", "b")},
    {"lexmira.extension://%6F%61%75%74%68/?code=a&code_challenge=b", valid("a", "b")},
    {"lexmira.extension://%4FAUTH?code=a&code_challenge=b", std::nullopt},
    {"lexmira.extension://%C3%B6auth?code=a&code_challenge=b", std::nullopt},
    {"lexmira.extension://o%2561uth?code=a&code_challenge=b", std::nullopt},
};

INSTANTIATE_TEST_SUITE_P(Urls, OAuthUtilsTable, ::testing::ValuesIn(cases));

} // namespace

} // namespace lexmira
