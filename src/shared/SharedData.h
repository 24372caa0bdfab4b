// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "shared/ContainerValue.h"
#include "shared/DataContainer.h"
#include "shared/Keychain.h"
#include "shared/OAuthExchangeMessage.h"
#include "shared/UserInfo.h"

#include <memory>
#include <string>
#include <string_view>

namespace lexmira {

// The name of the application group's suite the extension reads and writes too.
inline constexpr std::string_view appGroupSuiteName =
    "Q7R2M5K8T1.group.com.lexmira.safari.extension";

class SharedSuite;

// The state shared with the extension: four values in the application group's suite, and the
// keychain store of the same product. Holds no lock and caches nothing; every value reads the
// suite afresh. Subscriptions are called back on the suite's watcher thread.
class SharedData {
public:
    // Builds the four values over a UserDefaultsContainer on userDefaults, or over a
    // NoopDataContainer when userDefaults is null (the suite could not be opened), and the
    // keychain of the product's service and access group over keychainItems (which may be null:
    // the keychain then fails every call).
    SharedData(std::shared_ptr<SharedSuite> userDefaults,
               std::shared_ptr<KeychainItems> keychainItems);
    // Builds the four values over container; userDefaults stays null.
    SharedData(std::shared_ptr<DataContainer> container,
               std::shared_ptr<KeychainItems> keychainItems);
    SharedData(const SharedData&) = delete;
    SharedData& operator=(const SharedData&) = delete;

    // Null when the suite could not be opened.
    const std::shared_ptr<SharedSuite> userDefaults;
    const Keychain keychain;

    ContainerValue<UserInfo> userInfo;
    ContainerValue<std::string> companionContainerId;
    ContainerValue<OAuthExchangeMessage> oauthExchangeMessage;
    ContainerValue<bool> oauthOpenLoginTabMessage;

private:
    SharedData(std::shared_ptr<SharedSuite> userDefaults,
               std::shared_ptr<KeychainItems> keychainItems,
               const std::shared_ptr<DataContainer>& container);
};

} // namespace lexmira
