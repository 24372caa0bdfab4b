// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "shared/Keychain.h"

#include "fakes/ScriptedKeychainItems.h"
#include "shared/KeychainDataContainer.h"

#include <gtest/gtest.h>

#include <QString>

#include <memory>
#include <unordered_set>

namespace lexmira {

namespace {

using Key = KeychainItems::Key;

class KeychainTest : public ::testing::Test {
protected:
    std::shared_ptr<ScriptedKeychainItems> items = std::make_shared<ScriptedKeychainItems>();
    Keychain keychain{"the.service", "GROUP.the.service", items};

    static KeychainItems::Query baseQuery(const char* account)
    {
        return {
            {Key::synchronizable, true},
            {Key::accessGroup, QStringLiteral("GROUP.the.service")},
            {Key::service, QStringLiteral("the.service")},
            {Key::itemClass, QVariant::fromValue(KeychainItems::ItemClass::genericPassword)},
            {Key::account, QString::fromUtf8(account)},
        };
    }
};

TEST_F(KeychainTest, DeleteRunsTheBaseQueryOfFiveEntries)
{
    EXPECT_TRUE(keychain.deleteItem("alice"));
    ASSERT_EQ(items->calls.size(), 1u);
    EXPECT_EQ(items->calls[0].operation, "remove");
    EXPECT_EQ(items->calls[0].query, baseQuery("alice"));
}

TEST_F(KeychainTest, DeleteOfAnAccountWithoutItemSucceeds)
{
    items->removeStatus = KeychainItems::itemNotFound;
    EXPECT_TRUE(keychain.deleteItem("alice"));
}

TEST_F(KeychainTest, DeleteFailsOnAnyOtherStatus)
{
    items->removeStatus = KeychainItems::interactionNotAllowed;
    EXPECT_FALSE(keychain.deleteItem("alice"));
    items->removeStatus = -1;
    EXPECT_FALSE(keychain.deleteItem("alice"));
}

TEST_F(KeychainTest, SetDeletesThenAddsTheData)
{
    items->removeStatus = KeychainItems::itemNotFound;
    EXPECT_TRUE(keychain.set("alice", QByteArray("secret"), Keychain::Access::accessibleAlways));
    ASSERT_EQ(items->calls.size(), 2u);
    EXPECT_EQ(items->calls[0].operation, "remove");
    EXPECT_EQ(items->calls[0].query, baseQuery("alice"));
    EXPECT_EQ(items->calls[1].operation, "add");
    auto expected = baseQuery("alice");
    expected[Key::valueData] = QByteArray("secret");
    EXPECT_EQ(items->calls[1].query, expected);
}

TEST_F(KeychainTest, AccessLevelIsNeverApplied)
{
    for (const auto access :
         {Keychain::Access::accessibleWhenUnlocked, Keychain::Access::accessibleAfterFirstUnlock,
          Keychain::Access::accessibleAlwaysThisDeviceOnly}) {
        items->calls.clear();
        keychain.set("alice", QByteArray("secret"), access);
        ASSERT_EQ(items->calls.size(), 2u);
        EXPECT_EQ(items->calls[1].query.size(), 6u);
    }
}

TEST_F(KeychainTest, SetReturnsFalseWithoutAddingWhenTheDeleteFails)
{
    items->removeStatus = KeychainItems::notAvailable;
    EXPECT_FALSE(keychain.set("alice", QByteArray("secret"), Keychain::Access::accessibleAlways));
    ASSERT_EQ(items->calls.size(), 1u);
    EXPECT_EQ(items->calls[0].operation, "remove");
}

TEST_F(KeychainTest, SetWithNoneDeletesAndReturnsFalse)
{
    EXPECT_FALSE(keychain.set("alice", std::nullopt, Keychain::Access::accessibleAlways));
    ASSERT_EQ(items->calls.size(), 1u);
    EXPECT_EQ(items->calls[0].operation, "remove");
}

TEST_F(KeychainTest, SetReturnsFalseWhenTheAddFails)
{
    items->addStatus = KeychainItems::duplicateItem;
    EXPECT_FALSE(keychain.set("alice", QByteArray("secret"), Keychain::Access::accessibleAlways));
    EXPECT_EQ(items->calls.size(), 2u);
}

TEST_F(KeychainTest, GetAsksForOneItemsData)
{
    items->copyResult = QByteArray("secret");
    EXPECT_EQ(keychain.get("alice", false), QByteArray("secret"));
    ASSERT_EQ(items->calls.size(), 1u);
    EXPECT_EQ(items->calls[0].operation, "copyMatching");
    auto expected = baseQuery("alice");
    expected[Key::matchLimit] = QVariant::fromValue(KeychainItems::MatchLimit::one);
    expected[Key::returnData] = true;
    EXPECT_EQ(items->calls[0].query, expected);
}

TEST_F(KeychainTest, GetAsksForOneItemsPersistentReference)
{
    items->copyResult = QByteArray("/reference");
    EXPECT_EQ(keychain.get("alice", true), QByteArray("/reference"));
    auto expected = baseQuery("alice");
    expected[Key::matchLimit] = QVariant::fromValue(KeychainItems::MatchLimit::one);
    expected[Key::returnPersistentRef] = true;
    ASSERT_EQ(items->calls.size(), 1u);
    EXPECT_EQ(items->calls[0].query, expected);
}

TEST_F(KeychainTest, GetGivesNoneOnAnyFailure)
{
    items->copyResult = QByteArray("secret");
    items->copyStatus = KeychainItems::itemNotFound;
    EXPECT_EQ(keychain.get("alice", false), std::nullopt);
    items->copyStatus = KeychainItems::interactionNotAllowed;
    EXPECT_EQ(keychain.get("alice", false), std::nullopt);
}

TEST_F(KeychainTest, GetGivesNoneForAResultThatIsNotBytes)
{
    items->copyResult = QStringLiteral("secret");
    EXPECT_EQ(keychain.get("alice", false), std::nullopt);
    items->copyResult = QVariant();
    EXPECT_EQ(keychain.get("alice", false), std::nullopt);
}

TEST(KeychainWithoutStore, EveryCallFails)
{
    const Keychain keychain("the.service", "GROUP.the.service", nullptr);
    EXPECT_FALSE(keychain.deleteItem("alice"));
    EXPECT_FALSE(keychain.set("alice", QByteArray("x"), Keychain::Access::accessibleAlways));
    EXPECT_EQ(keychain.get("alice", false), std::nullopt);
}

TEST(KeychainAccess, IsEquatableAndHashable)
{
    const std::unordered_set<Keychain::Access> levels{Keychain::Access::accessibleAlways,
                                                      Keychain::Access::accessibleAlways,
                                                      Keychain::Access::accessibleWhenUnlocked};
    EXPECT_EQ(levels.size(), 2u);
    EXPECT_NE(Keychain::Access::accessibleAlways, Keychain::Access::accessibleAlwaysThisDeviceOnly);
}

TEST(KeychainDataContainer, CarriesTheKeychainAndTheAccessLevel)
{
    const auto items = std::make_shared<ScriptedKeychainItems>();
    const KeychainDataContainer container{Keychain("svc", "grp", items),
                                          Keychain::Access::accessibleAfterFirstUnlock};
    EXPECT_EQ(container.keychain.service(), "svc");
    EXPECT_EQ(container.keychain.accessGroup(), "grp");
    EXPECT_EQ(container.access, Keychain::Access::accessibleAfterFirstUnlock);
}

} // namespace

} // namespace lexmira
