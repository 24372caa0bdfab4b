// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "util/Json.h"

#include <gtest/gtest.h>

namespace lexmira {

namespace {

TEST(Json, EncodesCompactlyInInsertionOrder)
{
    const nlohmann::ordered_json value{{"b", 1}, {"a", nullptr}, {"c", {true, "x"}}};
    EXPECT_EQ(Json::encode(value), QByteArray(R"({"b":1,"a":null,"c":[true,"x"]})"));
}

TEST(Json, EscapesSlashesAndKeepsNonAsciiAsUtf8)
{
    const nlohmann::ordered_json value = nlohmann::ordered_json::array({"a/b", "\xc3\xa9"});
    EXPECT_EQ(Json::encode(value), QByteArray("[\"a\\/b\",\"\xc3\xa9\"]"));
}

TEST(Json, InvalidUtf8CannotBeEncoded)
{
    const nlohmann::ordered_json value = nlohmann::ordered_json::array({std::string("\xff\xfe")});
    EXPECT_EQ(Json::encode(value), std::nullopt);
}

TEST(Json, DecodesOneDocumentOnly)
{
    EXPECT_EQ(Json::decode("[1]"), nlohmann::ordered_json::array({1}));
    EXPECT_EQ(Json::decode("[1] [2]"), std::nullopt);
    EXPECT_EQ(Json::decode(""), std::nullopt);
    EXPECT_EQ(Json::decode("\xff"), std::nullopt);
    EXPECT_EQ(Json::decode("[\"a\\/b\"]"), nlohmann::ordered_json::array({"a/b"}));
}

} // namespace

} // namespace lexmira
