// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/KeychainItems.h"
#include "shared/Keychain.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>
#include <libsecret/secret.h>

#include <QProcess>
#include <QRandomGenerator>

#include <memory>
#include <string>

namespace lexmira {

namespace {

// The keychain's schema as any other client of the Secret Service sees it.
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

GHashTable* attributes(std::initializer_list<std::pair<const char*, std::string>> entries)
{
    GHashTable* table = g_hash_table_new_full(g_str_hash, g_str_equal, g_free, g_free);
    for (const auto& [name, value] : entries)
        g_hash_table_insert(table, g_strdup(name), g_strdup(value.c_str()));
    return table;
}

// Every item of the schema in the default collection with exactly these attributes, as
// libsecret finds them; the caller frees the list.
GList* findItems(GHashTable* query)
{
    SecretService* service = secret_service_get_sync(SECRET_SERVICE_NONE, nullptr, nullptr);
    SecretCollection* collection = secret_collection_for_alias_sync(
        service, SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE, nullptr, nullptr);
    GList* items = collection ? secret_collection_search_sync(collection, keychainSchema(), query,
                                                              SECRET_SEARCH_ALL, nullptr, nullptr)
                              : nullptr;
    if (collection)
        g_object_unref(collection);
    g_object_unref(service);
    return items;
}

class KeychainSecretServiceTest : public ::testing::Test {
protected:
    // A service of its own per test, so tests never see each other's items.
    const std::string service =
        "com.lexmira.test." + std::to_string(QRandomGenerator::global()->generate64());
    const std::string accessGroup = "Q7R2M5K8T1." + service;
    std::shared_ptr<KeychainItems> items = KeychainItems::create();
    Keychain keychain{service, accessGroup, items};

    void TearDown() override
    {
        GHashTable* all = attributes({{"service", service}});
        secret_password_clearv_sync(keychainSchema(), all, nullptr, nullptr);
        g_hash_table_unref(all);
    }

    int countOurItems(const std::string& account)
    {
        GHashTable* query = attributes({{"service", service},
                                        {"accessGroup", accessGroup},
                                        {"account", account},
                                        {"synchronizable", "true"}});
        GList* found = findItems(query);
        const int count = static_cast<int>(g_list_length(found));
        g_list_free_full(found, g_object_unref);
        g_hash_table_unref(query);
        return count;
    }

    // Stores an item the way other software would, without the synchronisable marker.
    void storeForeignItem(const std::string& account, const char* secret)
    {
        GHashTable* foreign =
            attributes({{"service", service}, {"accessGroup", accessGroup}, {"account", account}});
        GError* error = nullptr;
        ASSERT_TRUE(secret_password_storev_sync(keychainSchema(), foreign,
                                                SECRET_COLLECTION_DEFAULT, "foreign item", secret,
                                                nullptr, &error))
            << (error ? error->message : "");
        g_hash_table_unref(foreign);
    }

    std::string foreignSecret(const std::string& account)
    {
        GHashTable* foreign =
            attributes({{"service", service}, {"accessGroup", accessGroup}, {"account", account}});
        GList* found = findItems(foreign);
        g_hash_table_unref(foreign);
        std::string secret = "<none>";
        for (GList* entry = found; entry; entry = entry->next) {
            auto* item = static_cast<SecretItem*>(entry->data);
            GHashTable* itemAttributes = secret_item_get_attributes(item);
            const bool ours = g_hash_table_contains(itemAttributes, "synchronizable");
            g_hash_table_unref(itemAttributes);
            if (ours || !secret_item_load_secret_sync(item, nullptr, nullptr))
                continue;
            if (SecretValue* value = secret_item_get_secret(item)) {
                secret = secret_value_get_text(value);
                secret_value_unref(value);
            }
        }
        g_list_free_full(found, g_object_unref);
        return secret;
    }
};

TEST_F(KeychainSecretServiceTest, DeleteOfAnAccountWithoutItemReturnsTrue)
{
    EXPECT_TRUE(keychain.deleteItem("nobody"));
}

TEST_F(KeychainSecretServiceTest, SetThenGetReturnsTheSameBytes)
{
    const QByteArray secret("s\x00cr\xff"
                            "et",
                            7);
    ASSERT_TRUE(keychain.set("alice", secret, Keychain::Access::accessibleWhenUnlocked));
    EXPECT_EQ(keychain.get("alice", false), secret);
}

TEST_F(KeychainSecretServiceTest, SecondSetReplacesTheItem)
{
    ASSERT_TRUE(keychain.set("alice", QByteArray("first"), Keychain::Access::accessibleAlways));
    ASSERT_TRUE(keychain.set("alice", QByteArray("second"), Keychain::Access::accessibleAlways));
    EXPECT_EQ(keychain.get("alice", false), QByteArray("second"));
    EXPECT_EQ(countOurItems("alice"), 1);
}

TEST_F(KeychainSecretServiceTest, AccountsAreSeparate)
{
    ASSERT_TRUE(keychain.set("alice", QByteArray("a"), Keychain::Access::accessibleAlways));
    ASSERT_TRUE(keychain.set("bob", QByteArray("b"), Keychain::Access::accessibleAlways));
    EXPECT_EQ(keychain.get("alice", false), QByteArray("a"));
    EXPECT_EQ(keychain.get("bob", false), QByteArray("b"));
    EXPECT_TRUE(keychain.deleteItem("alice"));
    EXPECT_EQ(keychain.get("alice", false), std::nullopt);
    EXPECT_EQ(keychain.get("bob", false), QByteArray("b"));
}

TEST_F(KeychainSecretServiceTest, SetWithNoneRemovesTheItemAndReturnsFalse)
{
    ASSERT_TRUE(keychain.set("alice", QByteArray("secret"), Keychain::Access::accessibleAlways));
    EXPECT_FALSE(keychain.set("alice", std::nullopt, Keychain::Access::accessibleAlways));
    EXPECT_EQ(keychain.get("alice", false), std::nullopt);
    EXPECT_EQ(countOurItems("alice"), 0);
}

TEST_F(KeychainSecretServiceTest, DeleteRemovesTheItem)
{
    ASSERT_TRUE(keychain.set("alice", QByteArray("secret"), Keychain::Access::accessibleAlways));
    EXPECT_TRUE(keychain.deleteItem("alice"));
    EXPECT_EQ(keychain.get("alice", false), std::nullopt);
    EXPECT_TRUE(keychain.deleteItem("alice"));
}

TEST_F(KeychainSecretServiceTest, PersistentReferenceIsTheItemsObjectPathNotTheSecret)
{
    ASSERT_TRUE(keychain.set("alice", QByteArray("secret"), Keychain::Access::accessibleAlways));
    const auto reference = keychain.get("alice", true);
    ASSERT_TRUE(reference);
    EXPECT_NE(*reference, QByteArray("secret"));
    EXPECT_TRUE(reference->startsWith("/org/freedesktop/secrets/collection/"))
        << reference->toStdString();
    EXPECT_EQ(keychain.get("alice", true), reference);

    GHashTable* query = attributes({{"service", service},
                                    {"accessGroup", accessGroup},
                                    {"account", "alice"},
                                    {"synchronizable", "true"}});
    GList* found = findItems(query);
    g_hash_table_unref(query);
    ASSERT_EQ(g_list_length(found), 1u);
    EXPECT_EQ(QByteArray(g_dbus_proxy_get_object_path(G_DBUS_PROXY(found->data))), *reference);
    g_list_free_full(found, g_object_unref);
}

TEST_F(KeychainSecretServiceTest, ItemIsStoredUnderTheContractedSchemaAsRawBytes)
{
    ASSERT_TRUE(keychain.set("alice", QByteArray("secret"), Keychain::Access::accessibleAlways));
    GHashTable* query = attributes({{"service", service},
                                    {"accessGroup", accessGroup},
                                    {"account", "alice"},
                                    {"synchronizable", "true"}});
    GList* found = findItems(query);
    g_hash_table_unref(query);
    ASSERT_EQ(g_list_length(found), 1u);
    auto* item = static_cast<SecretItem*>(found->data);
    gchar* schemaName = secret_item_get_schema_name(item);
    EXPECT_STREQ(schemaName, "com.lexmira.Keychain");
    g_free(schemaName);
    ASSERT_TRUE(secret_item_load_secret_sync(item, nullptr, nullptr));
    SecretValue* value = secret_item_get_secret(item);
    ASSERT_NE(value, nullptr);
    gsize length = 0;
    const gchar* bytes = secret_value_get(value, &length);
    EXPECT_EQ(QByteArray(bytes, static_cast<qsizetype>(length)), QByteArray("secret"));
    secret_value_unref(value);
    g_list_free_full(found, g_object_unref);
}

TEST_F(KeychainSecretServiceTest, SecretIsHandedOverAsOctetStream)
{
    // gnome-keyring does not keep the content type, so it is checked on the bus, in the call
    // that creates the item.
    QProcess monitor;
    monitor.start(QStringLiteral("dbus-monitor"),
                  {QStringLiteral("--session"),
                   QStringLiteral("interface='org.freedesktop.Secret.Collection',"
                                  "member='CreateItem'")});
    QByteArray output;
    const auto read = [&] {
        output += monitor.readAllStandardOutput();
        return output;
    };
    ASSERT_TRUE(test::waitUntil([&] { return read().contains("NameLost"); }))
        << output.toStdString();
    ASSERT_TRUE(keychain.set("alice", QByteArray("secret"), Keychain::Access::accessibleAlways));
    EXPECT_TRUE(test::waitUntil([&] {
        const auto text = read();
        return text.contains("member=CreateItem") &&
               text.contains("string \"application/octet-stream\"");
    })) << output.toStdString();
    monitor.kill();
    monitor.waitForFinished();
}

TEST_F(KeychainSecretServiceTest, ItemsWithoutTheSynchronisableMarkerAreInvisibleToGet)
{
    storeForeignItem("alice", "foreign secret");
    EXPECT_EQ(keychain.get("alice", false), std::nullopt);
    EXPECT_EQ(keychain.get("alice", true), std::nullopt);
}

TEST_F(KeychainSecretServiceTest, ItemsWithoutTheSynchronisableMarkerAreUntouchedByDelete)
{
    storeForeignItem("alice", "foreign secret");
    EXPECT_TRUE(keychain.deleteItem("alice"));
    EXPECT_EQ(foreignSecret("alice"), "foreign secret");
}

TEST_F(KeychainSecretServiceTest, ItemsWithoutTheSynchronisableMarkerSurviveSet)
{
    storeForeignItem("alice", "foreign secret");
    ASSERT_TRUE(keychain.set("alice", QByteArray("ours"), Keychain::Access::accessibleAlways));
    EXPECT_EQ(keychain.get("alice", false), QByteArray("ours"));
    EXPECT_EQ(foreignSecret("alice"), "foreign secret");
    EXPECT_TRUE(keychain.deleteItem("alice"));
    EXPECT_EQ(foreignSecret("alice"), "foreign secret");
}

TEST_F(KeychainSecretServiceTest, OtherServicesAndAccessGroupsAreSeparate)
{
    const Keychain otherGroup(service, accessGroup + ".other", items);
    const Keychain otherService(service + ".other", accessGroup, items);
    ASSERT_TRUE(keychain.set("alice", QByteArray("ours"), Keychain::Access::accessibleAlways));
    EXPECT_EQ(otherGroup.get("alice", false), std::nullopt);
    EXPECT_EQ(otherService.get("alice", false), std::nullopt);
    EXPECT_TRUE(otherGroup.deleteItem("alice"));
    EXPECT_EQ(keychain.get("alice", false), QByteArray("ours"));
    GHashTable* otherServiceItems = attributes({{"service", service + ".other"}});
    secret_password_clearv_sync(keychainSchema(), otherServiceItems, nullptr, nullptr);
    g_hash_table_unref(otherServiceItems);
}

TEST_F(KeychainSecretServiceTest, AddingAnExistingItemReportsADuplicate)
{
    using Key = KeychainItems::Key;
    const KeychainItems::Query query = {
        {Key::synchronizable, true},
        {Key::accessGroup, QString::fromStdString(accessGroup)},
        {Key::service, QString::fromStdString(service)},
        {Key::itemClass, QVariant::fromValue(KeychainItems::ItemClass::genericPassword)},
        {Key::account, QStringLiteral("alice")},
        {Key::valueData, QByteArray("one")},
    };
    EXPECT_EQ(items->add(query), KeychainItems::success);
    EXPECT_EQ(items->add(query), KeychainItems::duplicateItem);
    EXPECT_EQ(countOurItems("alice"), 1);
}

TEST_F(KeychainSecretServiceTest, QueriesForNonSynchronisableItemsAreRefused)
{
    using Key = KeychainItems::Key;
    const KeychainItems::Query query = {
        {Key::synchronizable, false},
        {Key::accessGroup, QString::fromStdString(accessGroup)},
        {Key::service, QString::fromStdString(service)},
        {Key::itemClass, QVariant::fromValue(KeychainItems::ItemClass::genericPassword)},
        {Key::account, QStringLiteral("alice")},
    };
    storeForeignItem("alice", "foreign secret");
    EXPECT_EQ(items->remove(query), KeychainItems::param);
    EXPECT_EQ(foreignSecret("alice"), "foreign secret");
}

TEST(KeychainWithoutSecretService, FailsWithoutReportingNotFound)
{
    // Each test runs in a process of its own, so nothing has reached the bus before this one.
    const QByteArray savedBus = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    const std::shared_ptr<KeychainItems> items = KeychainItems::create();
    const Keychain keychain("com.lexmira.test.nobus", "group", items);
    EXPECT_FALSE(keychain.deleteItem("alice"));
    EXPECT_FALSE(keychain.set("alice", QByteArray("x"), Keychain::Access::accessibleAlways));
    EXPECT_EQ(keychain.get("alice", false), std::nullopt);
    using Key = KeychainItems::Key;
    const KeychainItems::Query query = {
        {Key::synchronizable, true},
        {Key::accessGroup, QStringLiteral("group")},
        {Key::service, QStringLiteral("com.lexmira.test.nobus")},
        {Key::itemClass, QVariant::fromValue(KeychainItems::ItemClass::genericPassword)},
        {Key::account, QStringLiteral("alice")},
    };
    const auto status = items->remove(query);
    EXPECT_NE(status, KeychainItems::success);
    EXPECT_NE(status, KeychainItems::itemNotFound);
    qputenv("DBUS_SESSION_BUS_ADDRESS", savedBus);
}

} // namespace

} // namespace lexmira
