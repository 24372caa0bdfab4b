// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "shared/SharedUserInfoProvider.h"

#include "fakes/MemoryDataContainer.h"
#include "fakes/MemorySharedData.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

namespace lexmira {

namespace {

using namespace std::string_literals;

class SharedUserInfoProviderTest : public ::testing::Test {
protected:
    std::shared_ptr<MemoryDataContainer> container = std::make_shared<MemoryDataContainer>();
    std::unique_ptr<SharedData> shared = makeMemorySharedData(container);
    SharedUserInfoProvider provider{*shared};
};

TEST_F(SharedUserInfoProviderTest, NothingStoredGivesNoneForBoth)
{
    EXPECT_EQ(provider.containerId(), std::nullopt);
    EXPECT_EQ(provider.userId(), std::nullopt);
}

TEST_F(SharedUserInfoProviderTest, OnlyCompanionContainerIdSuppliesTheContainerId)
{
    shared->companionContainerId.setValue("c-7"s);
    EXPECT_EQ(provider.containerId(), "c-7"s);
    EXPECT_EQ(provider.userId(), std::nullopt);
}

TEST_F(SharedUserInfoProviderTest, StoredUserWinsOverCompanionContainerId)
{
    shared->companionContainerId.setValue("c-7"s);
    shared->userInfo.setValue(UserInfo{"u-1", false, false, "c-user"});
    EXPECT_EQ(provider.containerId(), "c-user"s);
    EXPECT_EQ(provider.userId(), "u-1"s);
}

TEST_F(SharedUserInfoProviderTest, AnonymousUserStillSuppliesBothIdentifiers)
{
    shared->userInfo.setValue(UserInfo{"anon-1", false, true, "c-anon"});
    EXPECT_EQ(provider.containerId(), "c-anon"s);
    EXPECT_EQ(provider.userId(), "anon-1"s);
}

TEST_F(SharedUserInfoProviderTest, UndecodableUserCountsAsNoUser)
{
    shared->companionContainerId.setValue("c-7"s);
    container->setRaw(QStringLiteral("userInfo"),
                      R"([{"userId":"u-1","isAnonymous":false,"containerId":"c-user"}])");
    EXPECT_EQ(provider.userId(), std::nullopt);
    EXPECT_EQ(provider.containerId(), "c-7"s);
}

TEST_F(SharedUserInfoProviderTest, StoredNullUserFallsBack)
{
    shared->companionContainerId.setValue("c-7"s);
    shared->userInfo.setValue(std::nullopt);
    EXPECT_EQ(provider.containerId(), "c-7"s);
    EXPECT_EQ(provider.userId(), std::nullopt);
}

TEST_F(SharedUserInfoProviderTest, ReadsAfreshOnEveryAccess)
{
    shared->userInfo.setValue(UserInfo{"u-1", false, false, "c-1"});
    EXPECT_EQ(provider.userId(), "u-1"s);
    shared->userInfo.setValue(UserInfo{"u-2", false, false, "c-2"});
    EXPECT_EQ(provider.userId(), "u-2"s);
    EXPECT_EQ(provider.containerId(), "c-2"s);
}

} // namespace

} // namespace lexmira
