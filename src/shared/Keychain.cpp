#include "shared/Keychain.h"

#include <QString>

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

KeychainItems::Status Keychain::deleteItems(const std::string& account) const
{
    if (!items_)
        return KeychainItems::notAvailable;
    return items_->remove(baseQuery(account));
}

bool Keychain::deleteItem(const std::string& account) const
{
    const auto status = deleteItems(account);
    return status == KeychainItems::success || status == KeychainItems::itemNotFound;
}

bool Keychain::set(const std::string& account, const std::optional<QByteArray>& data, Access) const
{
    if (!deleteItem(account))
        return false;
    if (!data)
        return false;
    auto query = baseQuery(account);
    query[KeychainItems::Key::valueData] = *data;
    return items_->add(query) == KeychainItems::success;
}

std::optional<QByteArray> Keychain::get(const std::string& account,
                                        bool asPersistentReference) const
{
    if (!items_)
        return std::nullopt;
    using Key = KeychainItems::Key;
    auto query = baseQuery(account);
    query[Key::matchLimit] = QVariant::fromValue(KeychainItems::MatchLimit::one);
    query[asPersistentReference ? Key::returnPersistentRef : Key::returnData] = true;
    QVariant result;
    if (items_->copyMatching(query, &result) != KeychainItems::success)
        return std::nullopt;
    if (result.metaType() != QMetaType::fromType<QByteArray>())
        return std::nullopt;
    return result.toByteArray();
}
