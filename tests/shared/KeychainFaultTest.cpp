// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/KeychainItems.h"
#include "shared/Keychain.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>
#include <libsecret/secret.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <atomic>
#include <memory>
#include <thread>

namespace lexmira {

namespace {

using namespace std::chrono_literals;

// A Secret Service of the test's own: gnome-keyring on a session bus of its own, which the test
// can lock, kill and start again without touching the test session's keyring. Every test runs in
// a process of its own, so pointing this process's session bus at it before the first use of
// libsecret is enough.
class PrivateSecretService {
public:
    enum class Activation {
        // Services start on demand, as on a desktop: the password prompter, and the keyring
        // itself (locked) when it is gone.
        standard,
        // Nothing starts on demand, so a killed keyring stays away until started again here.
        none,
    };

    // unlocked: a login collection, unlocked, as the default.
    explicit PrivateSecretService(bool unlocked, Activation activation = Activation::standard)
        : unlocked_(unlocked)
    {
        QDir(home_.path()).mkpath(QStringLiteral(".local/share"));
        QDir(home_.path()).mkpath(QStringLiteral("runtime"));
        QFile::setPermissions(home_.filePath(QStringLiteral("runtime")),
                              QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                  QFileDevice::ExeOwner);
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), home_.path());
        environment.insert(QStringLiteral("XDG_DATA_HOME"),
                           home_.filePath(QStringLiteral(".local/share")));
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"),
                           home_.filePath(QStringLiteral("runtime")));
        environment.insert(QStringLiteral("DISPLAY"), qEnvironmentVariable("LEXMIRA_TEST_DISPLAY"));
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), address());
        environment_ = environment;
        bus_.setProcessEnvironment(environment);
        QStringList busArguments{QStringLiteral("--nofork"),
                                 QStringLiteral("--address=") + address()};
        if (activation == Activation::standard) {
            busArguments << QStringLiteral("--session");
        } else {
            QFile config(home_.filePath(QStringLiteral("bus.conf")));
            config.open(QIODevice::WriteOnly);
            config.write("<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen>"
                         "<auth>EXTERNAL</auth><policy context=\"default\">"
                         "<allow send_destination=\"*\" eavesdrop=\"true\"/>"
                         "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>");
            config.close();
            busArguments << QStringLiteral("--config-file=") + config.fileName();
        }
        bus_.start(QStringLiteral("dbus-daemon"), busArguments);
        bus_.waitForStarted();
        test::waitUntil([&] { return QFile::exists(socket()); });
        qputenv("DBUS_SESSION_BUS_ADDRESS", address().toUtf8());
        startKeyring();
    }

    ~PrivateSecretService()
    {
        stopKeyring();
        bus_.kill();
        bus_.waitForFinished();
    }

    void startKeyring()
    {
        keyring_.setProcessEnvironment(environment_);
        QStringList arguments{QStringLiteral("--foreground"),
                              QStringLiteral("--components=secrets")};
        if (unlocked_)
            arguments << QStringLiteral("--unlock");
        keyring_.start(QStringLiteral("gnome-keyring-daemon"), arguments);
        keyring_.waitForStarted();
        if (unlocked_) {
            keyring_.write("lexmira-test");
            keyring_.closeWriteChannel();
        }
        test::waitUntil([&] { return serviceOwned(); });
    }

    void stopKeyring()
    {
        if (keyring_.state() == QProcess::NotRunning)
            return;
        keyring_.kill();
        keyring_.waitForFinished();
    }

    QProcess& keyring() { return keyring_; }

    bool serviceOwned() const
    {
        QProcess check;
        check.setProcessEnvironment(environment_);
        check.start(QStringLiteral("dbus-send"),
                    {QStringLiteral("--session"), QStringLiteral("--print-reply"),
                     QStringLiteral("--dest=org.freedesktop.DBus"), QStringLiteral("/"),
                     QStringLiteral("org.freedesktop.DBus.NameHasOwner"),
                     QStringLiteral("string:org.freedesktop.secrets")});
        check.waitForFinished();
        return check.readAllStandardOutput().contains("true");
    }

private:
    QString socket() const { return home_.filePath(QStringLiteral("bus")); }
    QString address() const { return QStringLiteral("unix:path=") + socket(); }

    bool unlocked_;
    QTemporaryDir home_;
    QProcessEnvironment environment_;
    QProcess bus_;
    QProcess keyring_;
};

const char* const service = "com.lexmira.test.faults";

TEST(KeychainFaults, LockedCollectionFailsEveryCallWithoutCrashing)
{
    PrivateSecretService secrets(true);
    const Keychain keychain(service, "group", KeychainItems::create());
    ASSERT_TRUE(keychain.set("alice", QByteArray("before"), Keychain::Access::accessibleAlways));

    GError* error = nullptr;
    SecretService* secretService = secret_service_get_sync(SECRET_SERVICE_NONE, nullptr, &error);
    ASSERT_NE(secretService, nullptr);
    SecretCollection* collection = secret_collection_for_alias_sync(
        secretService, SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE, nullptr, &error);
    ASSERT_NE(collection, nullptr);
    GList* objects = g_list_append(nullptr, collection);
    ASSERT_GE(secret_service_lock_sync(secretService, objects, nullptr, nullptr, &error), 1);
    g_list_free(objects);
    g_object_unref(collection);
    g_object_unref(secretService);

    EXPECT_FALSE(keychain.set("alice", QByteArray("after"), Keychain::Access::accessibleAlways));
    EXPECT_EQ(keychain.get("alice", false), std::nullopt);
    EXPECT_FALSE(keychain.deleteItem("alice"));
}

TEST(KeychainFaults, ServiceKilledWhileCallsRunFailsThemAndServesAgainOnceBack)
{
    PrivateSecretService secrets(true, PrivateSecretService::Activation::none);
    const Keychain keychain(service, "group", KeychainItems::create());
    ASSERT_TRUE(keychain.set("alice", QByteArray("0"), Keychain::Access::accessibleAlways));

    // Calls one after the other on a thread of their own while the service is killed under them.
    std::atomic<bool> stop = false;
    std::atomic<int> calls = 0;
    std::atomic<int> failures = 0;
    std::thread caller([&] {
        while (!stop) {
            const bool stored = keychain.set("alice", QByteArray::number(calls.load()),
                                             Keychain::Access::accessibleAlways);
            ++calls;
            failures += stored ? 0 : 1;
        }
    });
    ASSERT_TRUE(test::waitUntil([&] { return calls.load() >= 5; }, 30s));
    ::kill(pid_t(secrets.keyring().processId()), SIGKILL);
    secrets.keyring().waitForFinished();
    const int atKill = calls.load();
    ASSERT_TRUE(test::waitUntil([&] { return calls.load() >= atKill + 5; }, 60s))
        << "calls hang once the service is gone";
    stop = true;
    caller.join();
    EXPECT_GE(failures.load(), 1);
    std::printf("[ figures  ] %d calls, %d failed once the service was killed\n", calls.load(),
                failures.load());

    // A new service at the same name: the keychain works again, with an empty store.
    secrets.startKeyring();
    ASSERT_TRUE(test::waitUntil([&] { return secrets.serviceOwned(); }, 20s));
    EXPECT_TRUE(keychain.set("alice", QByteArray("again"), Keychain::Access::accessibleAlways));
    EXPECT_EQ(keychain.get("alice", false), QByteArray("again"));
}

TEST(KeychainFaults, WithoutADefaultCollectionTheFirstWriteCreatesOne)
{
    PrivateSecretService secrets(true);
    // Take the default collection away, as a user who deleted the login keyring would.
    {
        GError* error = nullptr;
        SecretService* secretService =
            secret_service_get_sync(SECRET_SERVICE_NONE, nullptr, &error);
        ASSERT_NE(secretService, nullptr);
        SecretCollection* collection = secret_collection_for_alias_sync(
            secretService, SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE, nullptr, &error);
        ASSERT_NE(collection, nullptr);
        ASSERT_TRUE(secret_collection_delete_sync(collection, nullptr, &error));
        g_object_unref(collection);
        SecretCollection* none = secret_collection_for_alias_sync(
            secretService, SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE, nullptr, &error);
        ASSERT_EQ(none, nullptr);
        g_object_unref(secretService);
    }
    // Creating a collection makes the service ask for its password; the "user" answers.
    QProcess answer;
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), qEnvironmentVariable("LEXMIRA_TEST_DISPLAY"));
    answer.setProcessEnvironment(environment);
    answer.start(
        QStringLiteral("sh"),
        {QStringLiteral("-c"),
         QStringLiteral("for i in $(seq 200); do "
                        "w=$(xdotool search --onlyvisible --class gcr-prompter | head -1); "
                        "[ -n \"$w\" ] && break; sleep 0.1; done; "
                        "xdotool windowfocus --sync \"$w\"; sleep 0.3; "
                        "xdotool type lexmira; xdotool key Tab; xdotool type lexmira; "
                        "xdotool key Return")});
    const Keychain keychain(service, "group", KeychainItems::create());
    EXPECT_TRUE(keychain.set("alice", QByteArray("first"), Keychain::Access::accessibleAlways));
    EXPECT_EQ(keychain.get("alice", false), QByteArray("first"));
    answer.waitForFinished(20'000);
}

} // namespace

} // namespace lexmira
