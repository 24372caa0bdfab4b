// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "shared/Keychain.h"

#include <QString>

namespace lexmira {

Keychain::Keychain(std::string service, std::string accessGroup,
                   std::shared_ptr<KeychainItems> items)
    : service_(std::move(service))
    , accessGroup_(std::move(accessGroup))
    , items_(std::move(items))
{
}

KeychainItems::Query Keychain::baseQuery(const std::string& account) const
{
    using Key = KeychainItems::Key;
    return {
        {Key::synchronizable, true},
        {Key::accessGroup, QString::fromStdString(accessGroup_)},
        {Key::service, QString::fromStdString(service_)},
        {Key::itemClass, QVariant::fromValue(KeychainItems::ItemClass::genericPassword)},
        {Key::account, QString::fromStdString(account)},
    };
}

KeychainItems::Status Keychain::deleteStatus(const std::string& account) const
{
    if (!items_)
        return KeychainItems::notAvailable;
    return items_->remove(baseQuery(account));
}

KeychainItems::Status Keychain::setStatus(const std::string& account,
                                          const std::optional<QByteArray>& data) const
{
    const auto deleted = deleteStatus(account);
    if (deleted != KeychainItems::success && deleted != KeychainItems::itemNotFound)
        return deleted;
    if (!data)
        return deleted;
    auto query = baseQuery(account);
    query[KeychainItems::Key::valueData] = *data;
    return items_->add(query);
}

KeychainItems::Status Keychain::getStatus(const std::string& account, bool asPersistentReference,
                                          QByteArray& result) const
{
    if (!items_)
        return KeychainItems::notAvailable;
    using Key = KeychainItems::Key;
    auto query = baseQuery(account);
    query[Key::matchLimit] = QVariant::fromValue(KeychainItems::MatchLimit::one);
    query[asPersistentReference ? Key::returnPersistentRef : Key::returnData] = true;
    QVariant found;
    const auto status = items_->copyMatching(query, &found);
    if (status != KeychainItems::success)
        return status;
    if (found.metaType() != QMetaType::fromType<QByteArray>())
        return KeychainItems::param;
    result = found.toByteArray();
    return KeychainItems::success;
}

bool Keychain::deleteItem(const std::string& account) const
{
    const auto status = deleteStatus(account);
    return status == KeychainItems::success || status == KeychainItems::itemNotFound;
}

bool Keychain::set(const std::string& account, const std::optional<QByteArray>& data, Access) const
{
    // With none this still deletes, and reports false.
    const auto status = setStatus(account, data);
    return data && status == KeychainItems::success;
}

std::optional<QByteArray> Keychain::get(const std::string& account,
                                        bool asPersistentReference) const
{
    QByteArray result;
    if (getStatus(account, asPersistentReference, result) != KeychainItems::success)
        return std::nullopt;
    return result;
}

} // namespace lexmira
