// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/KeychainItems.h"

#include <libsecret/secret.h>

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>

namespace lexmira {

// Generic-password items live in the Secret Service's default collection under the schema
// "com.lexmira.Keychain", keyed by the attributes service, accessGroup, account and
// synchronizable ("true"). Only synchronisable items are ever looked at, so items that other
// software stored without that marker are neither found nor deleted. The secret is the raw bytes
// (application/octet-stream); the persistent reference is the item's D-Bus object path.

namespace {

const SecretSchema* keychainSchema()
{
    static const SecretSchema schema = {"com.lexmira.Keychain",
                                        SECRET_SCHEMA_NONE,
                                        {
                                            {"service", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                            {"accessGroup", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                            {"account", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                            {"synchronizable", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                            {nullptr, SECRET_SCHEMA_ATTRIBUTE_STRING},
                                        },
                                        0,
                                        nullptr,
                                        nullptr,
                                        nullptr,
                                        nullptr,
                                        nullptr,
                                        nullptr,
                                        nullptr};
    return &schema;
}

constexpr const char* contentType = "application/octet-stream";

// Frees through the GLib function Free.
template <auto Free>
struct Deleter {
    template <class T>
    void operator()(T* pointer) const
    {
        if (pointer)
            Free(pointer);
    }
};
using ServicePtr = std::unique_ptr<SecretService, Deleter<g_object_unref>>;
using CollectionPtr = std::unique_ptr<SecretCollection, Deleter<g_object_unref>>;
using ItemPtr = std::unique_ptr<SecretItem, Deleter<g_object_unref>>;
using HashTablePtr = std::unique_ptr<GHashTable, Deleter<g_hash_table_unref>>;
using ValuePtr = std::unique_ptr<SecretValue, Deleter<secret_value_unref>>;
using ErrorPtr = std::unique_ptr<GError, Deleter<g_error_free>>;

struct ItemList {
    ItemList() = default;
    ~ItemList() { reset(nullptr); }
    ItemList(const ItemList&) = delete;
    ItemList& operator=(const ItemList&) = delete;

    void reset(GList* items)
    {
        if (list)
            g_list_free_full(list, g_object_unref);
        list = items;
    }

    GList* list = nullptr;
};

// The schema's attributes as the query gives them; none when an entry is missing or of another
// type, or the query asks for something this store does not hold.
std::optional<HashTablePtr> attributesOf(const KeychainItems::Query& query)
{
    using Key = KeychainItems::Key;
    const auto entry = [&](Key key) -> const QVariant* {
        const auto found = query.find(key);
        return found == query.end() ? nullptr : &found->second;
    };
    const auto* itemClass = entry(Key::itemClass);
    if (!itemClass || itemClass->metaType() != QMetaType::fromType<KeychainItems::ItemClass>() ||
        itemClass->value<KeychainItems::ItemClass>() != KeychainItems::ItemClass::genericPassword)
        return std::nullopt;
    const auto* synchronizable = entry(Key::synchronizable);
    if (!synchronizable || synchronizable->metaType() != QMetaType::fromType<bool>() ||
        !synchronizable->toBool())
        return std::nullopt;

    HashTablePtr attributes(g_hash_table_new_full(g_str_hash, g_str_equal, g_free, g_free));
    for (const auto& [key, name] :
         {std::pair{Key::service, "service"}, std::pair{Key::accessGroup, "accessGroup"},
          std::pair{Key::account, "account"}}) {
        const auto* value = entry(key);
        if (!value || value->metaType() != QMetaType::fromType<QString>())
            return std::nullopt;
        g_hash_table_insert(attributes.get(), g_strdup(name),
                            g_strdup(value->toString().toUtf8().constData()));
    }
    g_hash_table_insert(attributes.get(), g_strdup("synchronizable"), g_strdup("true"));
    return attributes;
}

bool flag(const KeychainItems::Query& query, KeychainItems::Key key)
{
    const auto found = query.find(key);
    return found != query.end() && found->second.metaType() == QMetaType::fromType<bool>() &&
           found->second.toBool();
}

KeychainItems::Status statusOf(const GError* error)
{
    if (error && error->domain == SECRET_ERROR && error->code == SECRET_ERROR_IS_LOCKED)
        return KeychainItems::interactionNotAllowed;
    if (error && error->domain == SECRET_ERROR && error->code == SECRET_ERROR_NO_SUCH_OBJECT)
        return KeychainItems::itemNotFound;
    // The service may have gone away (killed, restarted). libsecret keeps the connection it made
    // first, with a session that only the old service knew; dropping it lets the next call reach
    // whichever service holds the name then.
    secret_service_disconnect();
    return KeychainItems::notAvailable;
}

class SecretServiceKeychainItems final : public KeychainItems {
public:
    Status add(const Query& query) override
    {
        const auto attributes = attributesOf(query);
        const auto data = query.find(Key::valueData);
        if (!attributes || data == query.end() ||
            data->second.metaType() != QMetaType::fromType<QByteArray>())
            return param;
        CollectionPtr collection;
        if (const auto status = openDefaultCollection(collection, CreateIfMissing::yes);
            status != success)
            return status == itemNotFound ? notAvailable : status;
        GError* rawError = nullptr;
        ItemList existing;
        existing.reset(secret_collection_search_sync(collection.get(), keychainSchema(),
                                                     attributes->get(), SECRET_SEARCH_NONE, nullptr,
                                                     &rawError));
        ErrorPtr error(rawError);
        if (error)
            return statusOf(error.get());
        if (existing.list)
            return duplicateItem;

        const QByteArray bytes = data->second.toByteArray();
        const ValuePtr value(secret_value_new(bytes.constData(), bytes.size(), contentType));
        const QString label = query.at(Key::service).toString() + QStringLiteral(": ") +
                              query.at(Key::account).toString();
        const ItemPtr item(secret_item_create_sync(
            collection.get(), keychainSchema(), attributes->get(), label.toUtf8().constData(),
            value.get(), SECRET_ITEM_CREATE_NONE, nullptr, &rawError));
        error.reset(rawError);
        return item ? success : statusOf(error.get());
    }

    Status copyMatching(const Query& query, QVariant* result) override
    {
        const auto attributes = attributesOf(query);
        const bool returnData = flag(query, Key::returnData);
        const bool returnReference = flag(query, Key::returnPersistentRef);
        if (!attributes || (returnData && returnReference))
            return param;
        ItemList found;
        if (const auto status = findItems(attributes->get(), SECRET_SEARCH_NONE, found);
            status != success)
            return status;
        GError* rawError = nullptr;
        ErrorPtr error;
        auto* item = static_cast<SecretItem*>(found.list->data);

        QVariant answer;
        if (returnReference) {
            answer = QByteArray(g_dbus_proxy_get_object_path(G_DBUS_PROXY(item)));
        } else if (returnData) {
            if (!secret_item_load_secret_sync(item, nullptr, &rawError)) {
                error.reset(rawError);
                return statusOf(error.get());
            }
            const ValuePtr value(secret_item_get_secret(item));
            if (!value)
                return interactionNotAllowed;
            gsize length = 0;
            const gchar* bytes = secret_value_get(value.get(), &length);
            answer = QByteArray(bytes, static_cast<qsizetype>(length));
        }
        if (result)
            *result = answer;
        return success;
    }

    Status remove(const Query& query) override
    {
        const auto attributes = attributesOf(query);
        if (!attributes)
            return param;
        ItemList found;
        if (const auto status = findItems(attributes->get(), SECRET_SEARCH_ALL, found);
            status != success)
            return status;
        GError* rawError = nullptr;
        ErrorPtr error;
        for (GList* entry = found.list; entry; entry = entry->next) {
            if (!secret_item_delete_sync(static_cast<SecretItem*>(entry->data), nullptr,
                                         &rawError)) {
                error.reset(rawError);
                return statusOf(error.get());
            }
        }
        return success;
    }

private:
    // The items of the default collection that match attributes; itemNotFound when none does.
    static Status findItems(GHashTable* attributes, SecretSearchFlags flags, ItemList& found)
    {
        CollectionPtr collection;
        if (const auto status = openDefaultCollection(collection, CreateIfMissing::no);
            status != success)
            return status;
        GError* rawError = nullptr;
        found.reset(secret_collection_search_sync(collection.get(), keychainSchema(), attributes,
                                                  flags, nullptr, &rawError));
        const ErrorPtr error(rawError);
        if (error)
            return statusOf(error.get());
        return found.list ? success : itemNotFound;
    }

    enum class CreateIfMissing { no, yes };

    // The unlocked default collection; itemNotFound when there is none yet (and none is to be
    // created), another status when the service cannot be reached or the collection is locked.
    // A service with no default collection is given one, as the service's own password store
    // does on its first write: the collection "Login" under the alias "default". The service may
    // ask the user for the new collection's password first, and this call waits for that answer;
    // callers that must not wait run it off their event loop.
    static Status openDefaultCollection(CollectionPtr& collection, CreateIfMissing create)
    {
        GError* rawError = nullptr;
        const ServicePtr service(secret_service_get_sync(SECRET_SERVICE_NONE, nullptr, &rawError));
        ErrorPtr error(rawError);
        if (!service)
            return statusOf(error.get());
        collection.reset(secret_collection_for_alias_sync(
            service.get(), SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE, nullptr, &rawError));
        error.reset(rawError);
        if (error)
            return statusOf(error.get());
        if (!collection && create == CreateIfMissing::yes) {
            collection.reset(
                secret_collection_create_sync(service.get(), "Login", SECRET_COLLECTION_DEFAULT,
                                              SECRET_COLLECTION_CREATE_NONE, nullptr, &rawError));
            error.reset(rawError);
            if (error)
                return statusOf(error.get());
        }
        if (!collection)
            return itemNotFound;
        if (secret_collection_get_locked(collection.get()))
            return interactionNotAllowed;
        return success;
    }
};

} // namespace

std::unique_ptr<KeychainItems> KeychainItems::create()
{
    return std::make_unique<SecretServiceKeychainItems>();
}

} // namespace lexmira
