// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QVariant>

#include <cstdint>
#include <map>
#include <memory>

namespace lexmira {

// The system's store of secret items, asked through attribute queries: add an item, copy the
// first matching one, delete every matching one. Each call blocks until the store has answered,
// so it belongs off the main thread when the store may be slow. Thread-safe.
class KeychainItems {
public:
    using Status = std::int32_t;
    static constexpr Status success = 0;
    static constexpr Status unimplemented = -4;
    static constexpr Status param = -50;
    static constexpr Status notAvailable = -25291;
    static constexpr Status duplicateItem = -25299;
    static constexpr Status itemNotFound = -25300;
    static constexpr Status interactionNotAllowed = -25308;

    // Query entries and the types of their values.
    enum class Key {
        itemClass,           // ItemClass
        synchronizable,      // bool
        accessGroup,         // QString
        service,             // QString
        account,             // QString
        valueData,           // QByteArray
        matchLimit,          // MatchLimit
        returnData,          // bool
        returnPersistentRef, // bool
    };
    enum class ItemClass { genericPassword };
    enum class MatchLimit { one };
    using Query = std::map<Key, QVariant>;

    virtual ~KeychainItems() = default;

    // Adds the item that query describes (its attributes and valueData); duplicateItem when an
    // item with the same attributes exists.
    virtual Status add(const Query& query) = 0;
    // Finds the first item matching query and puts into result (which may be null) what the
    // return flags ask for: its data or its persistent reference, as a QByteArray.
    virtual Status copyMatching(const Query& query, QVariant* result) = 0;
    // Deletes every item matching query; itemNotFound when there was none.
    virtual Status remove(const Query& query) = 0;

    // The user's keychain.
    static std::unique_ptr<KeychainItems> create();
};

} // namespace lexmira
