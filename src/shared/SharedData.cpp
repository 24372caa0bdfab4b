// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "shared/SharedData.h"

#include "platform/SharedSuite.h"
#include "shared/NoopDataContainer.h"
#include "shared/UserDefaultsContainer.h"

namespace lexmira {

namespace {

std::shared_ptr<DataContainer> containerOver(const std::shared_ptr<SharedSuite>& userDefaults)
{
    if (userDefaults)
        return std::make_shared<UserDefaultsContainer>(userDefaults);
    return std::make_shared<NoopDataContainer>();
}

} // namespace

SharedData::SharedData(std::shared_ptr<SharedSuite> userDefaults,
                       std::shared_ptr<KeychainItems> keychainItems)
    : SharedData(userDefaults, std::move(keychainItems), containerOver(userDefaults))
{
}

SharedData::SharedData(std::shared_ptr<DataContainer> container,
                       std::shared_ptr<KeychainItems> keychainItems)
    : SharedData(nullptr, std::move(keychainItems), container)
{
}

SharedData::SharedData(std::shared_ptr<SharedSuite> userDefaults,
                       std::shared_ptr<KeychainItems> keychainItems,
                       const std::shared_ptr<DataContainer>& container)
    : userDefaults(std::move(userDefaults))
    , keychain(std::string(keychainService), std::string(keychainAccessGroup),
               std::move(keychainItems))
    , userInfo(container, QStringLiteral("userInfo"))
    , companionContainerId(container, QStringLiteral("companionContainerId"))
    , oauthExchangeMessage(container, QStringLiteral("message.oauthExchangeMessage"))
    , oauthOpenLoginTabMessage(container, QStringLiteral("message.oauthOpenLoginTabMessage"))
{
}

} // namespace lexmira
