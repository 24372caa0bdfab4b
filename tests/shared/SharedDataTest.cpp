// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "shared/SharedData.h"

#include "Common/EnvCommon.h"
#include "fakes/MemoryDataContainer.h"
#include "fakes/MemorySharedData.h"
#include "fakes/ScriptedKeychainItems.h"
#include "shared/NoopDataContainer.h"

#include <gtest/gtest.h>

#include <QByteArray>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace lexmira {

namespace {

using namespace std::string_literals;

class SharedDataTest : public ::testing::Test {
protected:
    std::shared_ptr<MemoryDataContainer> container = std::make_shared<MemoryDataContainer>();
    std::unique_ptr<SharedData> shared = makeMemorySharedData(container);

    std::optional<QByteArray> stored(const char* key) const
    {
        return container->get(QString::fromUtf8(key));
    }
    void store(const char* key, const QByteArray& bytes)
    {
        container->setRaw(QString::fromUtf8(key), bytes);
    }
};

TEST_F(SharedDataTest, ValuesUseTheKeysTheExtensionReads)
{
    EXPECT_EQ(shared->userInfo.key(), QStringLiteral("userInfo"));
    EXPECT_EQ(shared->companionContainerId.key(), QStringLiteral("companionContainerId"));
    EXPECT_EQ(shared->oauthExchangeMessage.key(), QStringLiteral("message.oauthExchangeMessage"));
    EXPECT_EQ(shared->oauthOpenLoginTabMessage.key(),
              QStringLiteral("message.oauthOpenLoginTabMessage"));
}

TEST_F(SharedDataTest, EveryDefaultIsNone)
{
    EXPECT_EQ(shared->userInfo.defaultValue(), std::nullopt);
    EXPECT_EQ(shared->companionContainerId.defaultValue(), std::nullopt);
    EXPECT_EQ(shared->oauthExchangeMessage.defaultValue(), std::nullopt);
    EXPECT_EQ(shared->oauthOpenLoginTabMessage.defaultValue(), std::nullopt);
}

TEST_F(SharedDataTest, KeyNeverWrittenReadsAsNone)
{
    EXPECT_EQ(shared->userInfo.value(), std::nullopt);
    EXPECT_EQ(shared->companionContainerId.value(), std::nullopt);
    EXPECT_EQ(shared->oauthExchangeMessage.value(), std::nullopt);
    EXPECT_EQ(shared->oauthOpenLoginTabMessage.value(), std::nullopt);
}

TEST_F(SharedDataTest, StoredNullReadsAsNone)
{
    store("companionContainerId", "[null]");
    EXPECT_EQ(shared->companionContainerId.value(), std::nullopt);
}

TEST_F(SharedDataTest, StoredEmptyArrayReadsAsNone)
{
    store("companionContainerId", "[]");
    EXPECT_EQ(shared->companionContainerId.value(), std::nullopt);
}

TEST_F(SharedDataTest, StoredArrayOfTwoStringsReadsAsNone)
{
    store("companionContainerId", R"(["a","b"])");
    EXPECT_EQ(shared->companionContainerId.value(), std::nullopt);
}

TEST_F(SharedDataTest, StoredBareStringWithoutArrayReadsAsNone)
{
    store("companionContainerId", R"("abc")");
    EXPECT_EQ(shared->companionContainerId.value(), std::nullopt);
}

TEST_F(SharedDataTest, StoredBytesThatAreNotJsonReadAsNone)
{
    store("companionContainerId", "[\"abc\"");
    EXPECT_EQ(shared->companionContainerId.value(), std::nullopt);
    store("userInfo", QByteArray("\xff\xfe\x00garbage", 10));
    EXPECT_EQ(shared->userInfo.value(), std::nullopt);
}

TEST_F(SharedDataTest, StoredElementOfAnotherTypeReadsAsNone)
{
    store("companionContainerId", "[42]");
    EXPECT_EQ(shared->companionContainerId.value(), std::nullopt);
    store("message.oauthOpenLoginTabMessage", R"(["true"])");
    EXPECT_EQ(shared->oauthOpenLoginTabMessage.value(), std::nullopt);
}

TEST_F(SharedDataTest, UserInfoWithAMissingKeyReadsAsNone)
{
    store("userInfo", R"([{"userId":"u-1","isAnonymous":false,"containerId":"c-1"}])");
    EXPECT_EQ(shared->userInfo.value(), std::nullopt);
}

TEST_F(SharedDataTest, StoredStringReadsBack)
{
    store("companionContainerId", R"(["abc"])");
    EXPECT_EQ(shared->companionContainerId.value(), "abc"s);
}

TEST_F(SharedDataTest, WritingNoneLeavesTheKeyHoldingNull)
{
    shared->companionContainerId.setValue("abc"s);
    shared->companionContainerId.setValue(std::nullopt);
    EXPECT_EQ(stored("companionContainerId"), QByteArray("[null]"));
}

TEST_F(SharedDataTest, WritingTrueStoresExactlyTheBytesTrue)
{
    shared->oauthOpenLoginTabMessage.setValue(true);
    EXPECT_EQ(stored("message.oauthOpenLoginTabMessage"), QByteArray("[true]"));
}

TEST_F(SharedDataTest, WritingAStringStoresItInAOneElementArray)
{
    shared->companionContainerId.setValue("a/b"s);
    EXPECT_EQ(stored("companionContainerId"), QByteArray(R"(["a\/b"])"));
}

TEST_F(SharedDataTest, UserInfoIsStoredWithItsKeysInFieldOrder)
{
    shared->userInfo.setValue(UserInfo{"u-1", false, true, "c-1"});
    EXPECT_EQ(
        stored("userInfo"),
        QByteArray(
            R"([{"userId":"u-1","isTestUser":false,"isAnonymous":true,"containerId":"c-1"}])"));
    EXPECT_EQ(shared->userInfo.value(), (UserInfo{"u-1", false, true, "c-1"}));
}

TEST_F(SharedDataTest, OAuthExchangeMessageIsStoredWithItsKeysInFieldOrder)
{
    shared->oauthExchangeMessage.setValue(OAuthExchangeMessage{"the-code", "the-challenge"});
    EXPECT_EQ(stored("message.oauthExchangeMessage"),
              QByteArray(R"([{"code":"the-code","codeChallenge":"the-challenge"}])"));
    EXPECT_EQ(shared->oauthExchangeMessage.value(),
              (OAuthExchangeMessage{"the-code", "the-challenge"}));
}

TEST_F(SharedDataTest, ValueThatCannotBeEncodedWritesNothing)
{
    shared->companionContainerId.setValue("before"s);
    shared->companionContainerId.setValue("\xff\xfe broken"s);
    EXPECT_EQ(stored("companionContainerId"), QByteArray(R"(["before"])"));
}

TEST_F(SharedDataTest, ValuesShareOneContainer)
{
    shared->companionContainerId.setValue("abc"s);
    shared->oauthOpenLoginTabMessage.setValue(true);
    EXPECT_TRUE(stored("companionContainerId"));
    EXPECT_TRUE(stored("message.oauthOpenLoginTabMessage"));
}

TEST_F(SharedDataTest, SubscriberIsCalledWithTheValueReadAtTheChange)
{
    std::vector<std::optional<UserInfo>> seen;
    const auto subscription = shared->userInfo.subscribe([&](auto info) { seen.push_back(info); });
    EXPECT_TRUE(seen.empty());
    store("userInfo",
          R"([{"userId":"u-2","isTestUser":true,"isAnonymous":false,"containerId":"c-2"}])");
    store("userInfo", "not json");
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0], (UserInfo{"u-2", true, false, "c-2"}));
    EXPECT_EQ(seen[1], std::nullopt);
}

TEST_F(SharedDataTest, WritingTheSameValueAgainNotifiesAgain)
{
    int calls = 0;
    const auto subscription = shared->companionContainerId.subscribe([&](auto) { ++calls; });
    shared->companionContainerId.setValue("same"s);
    shared->companionContainerId.setValue("same"s);
    EXPECT_EQ(calls, 2);
}

TEST_F(SharedDataTest, NoCallbackAfterUnsubscribe)
{
    int calls = 0;
    const auto subscription = shared->companionContainerId.subscribe([&](auto) { ++calls; });
    subscription->unsubscribe();
    shared->companionContainerId.setValue("abc"s);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(container->subscriberCount(), 0u);
}

TEST_F(SharedDataTest, NoCallbackAfterTheUnsubscriberIsReleased)
{
    int calls = 0;
    auto subscription = shared->companionContainerId.subscribe([&](auto) { ++calls; });
    subscription.reset();
    shared->companionContainerId.setValue("abc"s);
    EXPECT_EQ(calls, 0);
}

TEST_F(SharedDataTest, UnsubscribingTwiceIsHarmless)
{
    int calls = 0;
    const auto subscription = shared->companionContainerId.subscribe([&](auto) { ++calls; });
    const auto other = shared->companionContainerId.subscribe([&](auto) { calls += 10; });
    subscription->unsubscribe();
    subscription->unsubscribe();
    shared->companionContainerId.setValue("abc"s);
    EXPECT_EQ(calls, 10);
    EXPECT_EQ(container->subscriberCount(), 1u);
}

TEST_F(SharedDataTest, SubscriptionsOfOtherKeysAreNotCalled)
{
    int calls = 0;
    const auto subscription = shared->userInfo.subscribe([&](auto) { ++calls; });
    shared->companionContainerId.setValue("abc"s);
    EXPECT_EQ(calls, 0);
}

TEST(SharedDataConstruction, WithoutASuiteEveryValueIsNoneAndWritesVanish)
{
    SharedData shared{std::shared_ptr<SharedSuite>(), std::shared_ptr<KeychainItems>()};
    EXPECT_EQ(shared.userDefaults, nullptr);
    int calls = 0;
    const auto subscription = shared.companionContainerId.subscribe([&](auto) { ++calls; });
    shared.companionContainerId.setValue("abc"s);
    shared.oauthOpenLoginTabMessage.setValue(true);
    EXPECT_EQ(shared.companionContainerId.value(), std::nullopt);
    EXPECT_EQ(shared.oauthOpenLoginTabMessage.value(), std::nullopt);
    EXPECT_EQ(calls, 0);
}

TEST(SharedDataConstruction, KeychainIsTheProductsServiceAndAccessGroup)
{
    const auto items = std::make_shared<ScriptedKeychainItems>();
    const SharedData shared(std::shared_ptr<SharedSuite>(), items);
    EXPECT_EQ(shared.keychain.service(), std::string(keychainService));
    EXPECT_EQ(shared.keychain.accessGroup(), std::string(keychainAccessGroup));
    EXPECT_TRUE(shared.keychain.deleteItem("account"));
    ASSERT_EQ(items->calls.size(), 1u);
}

TEST(SharedDataConstruction, SharedValuesAreNotKeptInTheKeychain)
{
    const auto items = std::make_shared<ScriptedKeychainItems>();
    auto shared = std::make_unique<SharedData>(
        std::shared_ptr<DataContainer>(std::make_shared<MemoryDataContainer>()), items);
    shared->userInfo.setValue(UserInfo{"u", false, false, "c"});
    shared->companionContainerId.setValue("c"s);
    (void)shared->userInfo.value();
    EXPECT_TRUE(items->calls.empty());
}

TEST(NoopDataContainer, StoresNothingAndNeverCalls)
{
    NoopDataContainer container;
    int calls = 0;
    const auto subscription = container.subscribe(QStringLiteral("k"), [&] { ++calls; });
    container.set(QByteArray("[true]"), QStringLiteral("k"));
    EXPECT_EQ(container.get(QStringLiteral("k")), std::nullopt);
    EXPECT_EQ(calls, 0);
    ASSERT_NE(subscription, nullptr);
    subscription->unsubscribe();
    subscription->unsubscribe();
}

} // namespace

} // namespace lexmira
