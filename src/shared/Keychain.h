// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/KeychainItems.h"

#include <QByteArray>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace lexmira {

// The service and access group of the keychain items shared with the extension; the extension
// uses the same two values, which is what makes the items shared.
inline constexpr std::string_view keychainService = "com.lexmira.safari.extension";
inline constexpr std::string_view keychainAccessGroup = "Q7R2M5K8T1.com.lexmira.safari.extension";

// Generic-password items of one service in one access group, shared with the extension. Every
// item is written and looked up as a synchronisable item; items of the same service without that
// marker belong to someone else and are neither found nor deleted. Failures are false or none,
// never reported otherwise. Calls block on the keychain.
class Keychain {
public:
    // How an item may be accessed. Carried to set, but never applied: items get the keychain's
    // default accessibility.
    enum class Access {
        accessibleWhenUnlocked,
        accessibleWhenUnlockedThisDeviceOnly,
        accessibleAfterFirstUnlock,
        accessibleAfterFirstUnlockThisDeviceOnly,
        accessibleAlways,
        accessibleWhenPasscodeSetThisDeviceOnly,
        accessibleAlwaysThisDeviceOnly,
    };

    // items may be null: every operation then fails as with an unavailable keychain.
    Keychain(std::string service, std::string accessGroup, std::shared_ptr<KeychainItems> items);

    const std::string& service() const { return service_; }
    const std::string& accessGroup() const { return accessGroup_; }

    // True when the account has no item afterwards (also when it had none).
    bool deleteItem(const std::string& account) const;
    // Replaces the account's item by one holding data: delete, then add. None deletes the item
    // and answers false; so does a failing add, after the old item is gone.
    bool set(const std::string& account, const std::optional<QByteArray>& data,
             Access access) const;
    // The item's data, or its persistent reference (stable opaque bytes naming the item); none
    // when there is no item or the keychain fails.
    std::optional<QByteArray> get(const std::string& account, bool asPersistentReference) const;

    // The same three operations with the keychain's own status, for callers that hand it on (the
    // extension's native side reports it to the extension). deleteStatus is itemNotFound when
    // there was nothing to delete; setStatus with none is the status of the delete alone; get
    // succeeds only with bytes, which it puts into result.
    KeychainItems::Status deleteStatus(const std::string& account) const;
    KeychainItems::Status setStatus(const std::string& account,
                                    const std::optional<QByteArray>& data) const;
    KeychainItems::Status getStatus(const std::string& account, bool asPersistentReference,
                                    QByteArray& result) const;

private:
    KeychainItems::Query baseQuery(const std::string& account) const;

    std::string service_;
    std::string accessGroup_;
    std::shared_ptr<KeychainItems> items_;
};

} // namespace lexmira
