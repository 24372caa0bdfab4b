// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/SharedSuite.h"

#include "Common/EnvCommon.h"
#include "SuiteTestSupport.h"
#include "shared/SharedData.h"
#include "shared/UserDefaultsContainer.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <atomic>
#include <condition_variable>
#include <fstream>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <cerrno>
#include <cstring>
#include <ctime>

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lexmira {

namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;

const QString suiteName = QString::fromUtf8(appGroupSuiteName);

// Counts notifications per key, from the watcher thread.
class CountingObserver final : public SharedSuiteObserver {
public:
    void observeValue(const QString& key) override
    {
        const std::lock_guard lock(mutex_);
        ++counts_[key];
    }
    int count(const QString& key) const
    {
        const std::lock_guard lock(mutex_);
        const auto found = counts_.find(key);
        return found == counts_.end() ? 0 : found->second;
    }

private:
    mutable std::mutex mutex_;
    std::map<QString, int> counts_;
};

mode_t modeOf(const QString& path)
{
    struct stat status {};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0)
        return 0;
    return status.st_mode & 07777;
}

QByteArray fileContents(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return "<missing>";
    return file.readAll();
}

class SharedSuiteTest : public ::testing::Test {
protected:
    ScopedConfigHome config;
    std::shared_ptr<SharedSuite> suite = SharedSuite::open(suiteName);

    QString keyFile(const QString& name) const { return QDir(config.suiteRoot()).filePath(name); }

    // Writes the barrier key and waits for its notification. Notifications of the root arrive in
    // the order of the changes, so every change made before has been delivered once this returns.
    void drain()
    {
        const auto barrier = std::make_shared<CountingObserver>();
        const QString key = QStringLiteral("barrier");
        suite->addObserver(barrier, key);
        suite->setData(QByteArray("[1]"), key);
        ASSERT_TRUE(test::waitUntil([&] { return barrier->count(key) == 1; }));
        suite->removeObserver(barrier.get(), key);
    }
};

TEST_F(SharedSuiteTest, OpensTheSuiteUnderTheConfigDirectoryWithMode0700)
{
    ASSERT_NE(suite, nullptr);
    EXPECT_TRUE(QFileInfo(config.suiteRoot()).isDir());
    EXPECT_EQ(modeOf(config.suiteRoot()), 0700u);
}

TEST_F(SharedSuiteTest, FallsBackToHomeConfigWhenXdgConfigHomeIsUnset)
{
    const QByteArray savedHome = qgetenv("HOME");
    qunsetenv("XDG_CONFIG_HOME");
    qputenv("HOME", config.path().toUtf8());
    const auto opened = SharedSuite::open(suiteName);
    qputenv("HOME", savedHome);
    ASSERT_NE(opened, nullptr);
    EXPECT_TRUE(
        QFileInfo(
            QDir(config.path()).filePath(QStringLiteral(".config/group-containers/") + suiteName))
            .isDir());
}

TEST_F(SharedSuiteTest, RelativeXdgConfigHomeIsIgnored)
{
    const QByteArray savedHome = qgetenv("HOME");
    qputenv("XDG_CONFIG_HOME", "relative/config");
    qputenv("HOME", config.path().toUtf8());
    const auto opened = SharedSuite::open(suiteName);
    qputenv("HOME", savedHome);
    ASSERT_NE(opened, nullptr);
    EXPECT_TRUE(
        QFileInfo(
            QDir(config.path()).filePath(QStringLiteral(".config/group-containers/") + suiteName))
            .isDir());
}

TEST_F(SharedSuiteTest, KeepsTheModeOfAnExistingRoot)
{
    suite.reset();
    ASSERT_EQ(::chmod(QFile::encodeName(config.suiteRoot()).constData(), 0750), 0);
    EXPECT_NE(SharedSuite::open(suiteName), nullptr);
    EXPECT_EQ(modeOf(config.suiteRoot()), 0750u);
}

TEST_F(SharedSuiteTest, StoresEachKeyAsAFileHoldingExactlyTheBytes)
{
    suite->setData(QByteArray("[null]"), QStringLiteral("companionContainerId"));
    EXPECT_EQ(fileContents(keyFile(QStringLiteral("companionContainerId"))), QByteArray("[null]"));
    EXPECT_EQ(suite->data(QStringLiteral("companionContainerId")), QByteArray("[null]"));
}

TEST_F(SharedSuiteTest, KeyFilesHaveMode0600)
{
    suite->setData(QByteArray("[true]"), QStringLiteral("message.oauthOpenLoginTabMessage"));
    EXPECT_EQ(modeOf(keyFile(QStringLiteral("message.oauthOpenLoginTabMessage"))), 0600u);
}

TEST_F(SharedSuiteTest, MissingKeyReadsAsNone)
{
    EXPECT_EQ(suite->data(QStringLiteral("userInfo")), std::nullopt);
}

TEST_F(SharedSuiteTest, EmptyValueIsStoredAsAnEmptyFile)
{
    suite->setData(QByteArray(), QStringLiteral("k"));
    EXPECT_EQ(suite->data(QStringLiteral("k")), QByteArray());
    EXPECT_TRUE(QFileInfo::exists(keyFile(QStringLiteral("k"))));
}

TEST_F(SharedSuiteTest, StoringNoValueRemovesTheFile)
{
    suite->setData(QByteArray("[1]"), QStringLiteral("k"));
    suite->setData(std::nullopt, QStringLiteral("k"));
    EXPECT_FALSE(QFileInfo::exists(keyFile(QStringLiteral("k"))));
    EXPECT_EQ(suite->data(QStringLiteral("k")), std::nullopt);
}

TEST_F(SharedSuiteTest, BinaryBytesRoundTrip)
{
    const QByteArray bytes("\x00\xff\x01[\n", 5);
    suite->setData(bytes, QStringLiteral("k"));
    EXPECT_EQ(suite->data(QStringLiteral("k")), bytes);
}

TEST_F(SharedSuiteTest, WritesLeaveNoTemporaryFilesBehind)
{
    for (int i = 0; i < 20; ++i)
        suite->setData(QByteArray::number(i), QStringLiteral("k"));
    const auto entries =
        QDir(config.suiteRoot()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    EXPECT_EQ(entries, QStringList{QStringLiteral("k")});
}

TEST_F(SharedSuiteTest, FileNamesEscapeBytesOutsideTheSafeSet)
{
    const std::vector<std::pair<QString, QString>> cases = {
        {QStringLiteral("message.oauthExchangeMessage"),
         QStringLiteral("message.oauthExchangeMessage")},
        {QStringLiteral("A-z_0.9"), QStringLiteral("A-z_0.9")},
        {QStringLiteral(".hidden"), QStringLiteral("%2Ehidden")},
        {QStringLiteral("a/b c"), QStringLiteral("a%2Fb%20c")},
        {QStringLiteral("100%"), QStringLiteral("100%25")},
        {QStringLiteral("\u00e9"), QStringLiteral("%C3%A9")},
    };
    for (const auto& [key, fileName] : cases) {
        suite->setData(QByteArray("[1]"), key);
        EXPECT_TRUE(QFileInfo::exists(keyFile(fileName))) << fileName.toStdString();
        EXPECT_EQ(suite->data(key), QByteArray("[1]")) << key.toStdString();
    }
}

TEST_F(SharedSuiteTest, ReadsWhatAnotherWriterPutInTheFile)
{
    QFile file(keyFile(QStringLiteral("userInfo")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[{\"userId\":\"u\"}]");
    file.close();
    EXPECT_EQ(suite->data(QStringLiteral("userInfo")), QByteArray("[{\"userId\":\"u\"}]"));
}

TEST_F(SharedSuiteTest, DirectoryInPlaceOfAKeyReadsAsNone)
{
    ASSERT_TRUE(QDir(config.suiteRoot()).mkdir(QStringLiteral("k")));
    EXPECT_EQ(suite->data(QStringLiteral("k")), std::nullopt);
}

TEST_F(SharedSuiteTest, PipeInPlaceOfAKeyReadsAsNoneWithoutBlocking)
{
    ASSERT_EQ(::mkfifo(QFile::encodeName(keyFile(QStringLiteral("userInfo"))).constData(), 0600),
              0);
    EXPECT_EQ(suite->data(QStringLiteral("userInfo")), std::nullopt);
}

TEST_F(SharedSuiteTest, KeyAsLongAsAFileNameMayHaveIsStored)
{
    const QString key(255, QLatin1Char('k'));
    suite->setData(QByteArray("[1]"), key);
    EXPECT_EQ(suite->data(key), QByteArray("[1]"));
}

TEST_F(SharedSuiteTest, OwnWriteNotifiesOnce)
{
    const auto observer = std::make_shared<CountingObserver>();
    suite->addObserver(observer, QStringLiteral("userInfo"));
    suite->setData(QByteArray("[null]"), QStringLiteral("userInfo"));
    ASSERT_TRUE(test::waitUntil([&] { return observer->count(QStringLiteral("userInfo")) >= 1; }));
    drain();
    EXPECT_EQ(observer->count(QStringLiteral("userInfo")), 1);
}

TEST_F(SharedSuiteTest, EveryWriteNotifiesEvenWithTheSameValue)
{
    const auto observer = std::make_shared<CountingObserver>();
    suite->addObserver(observer, QStringLiteral("k"));
    for (int i = 0; i < 5; ++i)
        suite->setData(QByteArray("[true]"), QStringLiteral("k"));
    drain();
    EXPECT_EQ(observer->count(QStringLiteral("k")), 5);
}

TEST_F(SharedSuiteTest, RemovalNotifiesOnce)
{
    suite->setData(QByteArray("[1]"), QStringLiteral("k"));
    drain();
    const auto observer = std::make_shared<CountingObserver>();
    suite->addObserver(observer, QStringLiteral("k"));
    suite->setData(std::nullopt, QStringLiteral("k"));
    drain();
    EXPECT_EQ(observer->count(QStringLiteral("k")), 1);
}

TEST_F(SharedSuiteTest, NoNotificationAtTheTimeOfAdding)
{
    suite->setData(QByteArray("[1]"), QStringLiteral("k"));
    drain();
    const auto observer = std::make_shared<CountingObserver>();
    suite->addObserver(observer, QStringLiteral("k"));
    drain();
    EXPECT_EQ(observer->count(QStringLiteral("k")), 0);
}

TEST_F(SharedSuiteTest, OtherKeysDoNotNotify)
{
    const auto observer = std::make_shared<CountingObserver>();
    suite->addObserver(observer, QStringLiteral("userInfo"));
    suite->setData(QByteArray("[1]"), QStringLiteral("companionContainerId"));
    drain();
    EXPECT_EQ(observer->count(QStringLiteral("userInfo")), 0);
}

TEST_F(SharedSuiteTest, EscapedKeysAreNotifiedUnderTheirOwnName)
{
    const QString key = QStringLiteral(".odd key/\u00e9");
    const auto observer = std::make_shared<CountingObserver>();
    suite->addObserver(observer, key);
    suite->setData(QByteArray("[1]"), key);
    drain();
    EXPECT_EQ(observer->count(key), 1);
}

TEST_F(SharedSuiteTest, FileWrittenInPlaceByAnotherWriterNotifies)
{
    const auto observer = std::make_shared<CountingObserver>();
    suite->addObserver(observer, QStringLiteral("userInfo"));
    {
        std::ofstream file(QFile::encodeName(keyFile(QStringLiteral("userInfo"))).toStdString());
        file << "[null]";
    }
    drain();
    EXPECT_EQ(observer->count(QStringLiteral("userInfo")), 1);
}

TEST_F(SharedSuiteTest, FileMovedAwayNotifies)
{
    suite->setData(QByteArray("[1]"), QStringLiteral("k"));
    drain();
    const auto observer = std::make_shared<CountingObserver>();
    suite->addObserver(observer, QStringLiteral("k"));
    ASSERT_TRUE(QFile::rename(keyFile(QStringLiteral("k")), config.path() + QStringLiteral("/k")));
    drain();
    EXPECT_EQ(observer->count(QStringLiteral("k")), 1);
}

TEST_F(SharedSuiteTest, DotFilesNeverNotify)
{
    const auto observer = std::make_shared<CountingObserver>();
    suite->addObserver(observer, QStringLiteral(".k"));
    suite->addObserver(observer, QStringLiteral("k"));
    QFile file(keyFile(QStringLiteral(".k")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[1]");
    file.close();
    drain();
    EXPECT_EQ(observer->count(QStringLiteral(".k")), 0);
    EXPECT_EQ(observer->count(QStringLiteral("k")), 0);
}

TEST_F(SharedSuiteTest, ObserverAddedTwiceIsCalledTwice)
{
    const auto observer = std::make_shared<CountingObserver>();
    suite->addObserver(observer, QStringLiteral("k"));
    suite->addObserver(observer, QStringLiteral("k"));
    suite->setData(QByteArray("[1]"), QStringLiteral("k"));
    drain();
    EXPECT_EQ(observer->count(QStringLiteral("k")), 2);
    suite->removeObserver(observer.get(), QStringLiteral("k"));
    suite->setData(QByteArray("[2]"), QStringLiteral("k"));
    drain();
    EXPECT_EQ(observer->count(QStringLiteral("k")), 3);
}

TEST_F(SharedSuiteTest, RemovedObserverIsNotCalled)
{
    const auto observer = std::make_shared<CountingObserver>();
    suite->addObserver(observer, QStringLiteral("k"));
    suite->removeObserver(observer.get(), QStringLiteral("k"));
    suite->removeObserver(observer.get(), QStringLiteral("k"));
    suite->setData(QByteArray("[1]"), QStringLiteral("k"));
    drain();
    EXPECT_EQ(observer->count(QStringLiteral("k")), 0);
}

TEST_F(SharedSuiteTest, EveryProcessOpeningTheSuiteSeesTheOthersWrites)
{
    const auto other = SharedSuite::open(suiteName);
    ASSERT_NE(other, nullptr);
    const auto observer = std::make_shared<CountingObserver>();
    suite->addObserver(observer, QStringLiteral("k"));
    other->setData(QByteArray("[\"from the other\"]"), QStringLiteral("k"));
    EXPECT_EQ(suite->data(QStringLiteral("k")), QByteArray("[\"from the other\"]"));
    drain();
    EXPECT_EQ(observer->count(QStringLiteral("k")), 1);
}

TEST_F(SharedSuiteTest, QueueOverflowNotifiesEveryObservedKey)
{
    // Hold the watcher thread inside a callback while far more events pile up than the kernel
    // queues; once let go, it reads the overflow marker.
    std::mutex mutex;
    std::condition_variable released;
    bool holding = false;
    bool release = false;
    class Blocking final : public SharedSuiteObserver {
    public:
        std::function<void()> hold;
        void observeValue(const QString&) override { hold(); }
    };
    const auto blocker = std::make_shared<Blocking>();
    blocker->hold = [&] {
        std::unique_lock lock(mutex);
        holding = true;
        released.notify_all();
        released.wait_for(lock, 60s, [&] { return release; });
    };
    suite->addObserver(blocker, QStringLiteral("block"));
    const auto quiet = std::make_shared<CountingObserver>();
    suite->addObserver(quiet, QStringLiteral("quiet"));
    suite->setData(QByteArray("[1]"), QStringLiteral("block"));
    {
        std::unique_lock lock(mutex);
        ASSERT_TRUE(released.wait_for(lock, 10s, [&] { return holding; }));
    }

    const auto root = QFile::encodeName(config.suiteRoot()).toStdString();
    std::ifstream maxEvents("/proc/sys/fs/inotify/max_queued_events");
    int limit = 16384;
    maxEvents >> limit;
    for (int i = 0; i <= limit + 16; ++i) {
        // Alternating names keep the kernel from merging consecutive events.
        std::ofstream(root + "/noise" + std::to_string(i % 2)) << i;
    }
    {
        const std::lock_guard lock(mutex);
        release = true;
    }
    released.notify_all();
    EXPECT_TRUE(test::waitUntil([&] { return quiet->count(QStringLiteral("quiet")) >= 1; }));
    suite->removeObserver(blocker.get(), QStringLiteral("block"));
}

TEST_F(SharedSuiteTest, RemovingAnObserverWaitsForItsCallInFlight)
{
    std::mutex mutex;
    std::condition_variable changed;
    bool inCall = false;
    bool letGo = false;
    bool callEnded = false;
    class Slow final : public SharedSuiteObserver {
    public:
        std::function<void()> body;
        void observeValue(const QString&) override { body(); }
    };
    const auto slow = std::make_shared<Slow>();
    slow->body = [&] {
        std::unique_lock lock(mutex);
        inCall = true;
        changed.notify_all();
        changed.wait_for(lock, 30s, [&] { return letGo; });
        callEnded = true;
    };
    suite->addObserver(slow, QStringLiteral("k"));
    suite->setData(QByteArray("[1]"), QStringLiteral("k"));
    {
        std::unique_lock lock(mutex);
        ASSERT_TRUE(changed.wait_for(lock, 10s, [&] { return inCall; }));
    }
    std::atomic<bool> removed = false;
    std::thread remover([&] {
        suite->removeObserver(slow.get(), QStringLiteral("k"));
        removed = true;
    });
    EXPECT_FALSE(test::waitUntil([&] { return removed.load(); }, 200ms));
    {
        const std::lock_guard lock(mutex);
        letGo = true;
    }
    changed.notify_all();
    remover.join();
    const std::lock_guard lock(mutex);
    EXPECT_TRUE(callEnded);
}

TEST_F(SharedSuiteTest, ObserverMayRemoveItselfInsideItsCall)
{
    std::atomic<int> calls = 0;
    class SelfRemoving final : public SharedSuiteObserver {
    public:
        std::function<void()> body;
        void observeValue(const QString&) override { body(); }
    };
    const auto observer = std::make_shared<SelfRemoving>();
    observer->body = [&, raw = observer.get()] {
        ++calls;
        suite->removeObserver(raw, QStringLiteral("k"));
    };
    suite->addObserver(observer, QStringLiteral("k"));
    suite->setData(QByteArray("[1]"), QStringLiteral("k"));
    suite->setData(QByteArray("[2]"), QStringLiteral("k"));
    drain();
    EXPECT_EQ(calls, 1);
}

TEST_F(SharedSuiteTest, SuiteLetGoInsideACallbackShutsDownCleanly)
{
    const auto writer = SharedSuite::open(suiteName);
    auto container = std::make_shared<UserDefaultsContainer>(suite);
    suite.reset();
    std::mutex mutex;
    std::shared_ptr<Unsubscriber> subscription;
    std::atomic<bool> called = false;
    {
        const std::lock_guard lock(mutex);
        subscription = container->subscribe(QStringLiteral("k"), [&] {
            std::shared_ptr<Unsubscriber> last;
            {
                const std::lock_guard held(mutex);
                last.swap(subscription);
            }
            last.reset(); // the last reference to the suite goes here, on its own watcher thread
            called = true;
        });
    }
    const std::weak_ptr<SharedSuite> watched = container->userDefaults();
    container.reset();
    writer->setData(QByteArray("[1]"), QStringLiteral("k"));
    EXPECT_TRUE(test::waitUntil([&] { return called.load(); }));
    EXPECT_TRUE(watched.expired());
}

TEST_F(SharedSuiteTest, ClosingTheSuiteLetsGoOfItsObservers)
{
    const auto observer = std::make_shared<CountingObserver>();
    suite->addObserver(observer, QStringLiteral("k"));
    suite->setData(QByteArray("[1]"), QStringLiteral("k"));
    suite.reset();
    std::ofstream(QFile::encodeName(keyFile(QStringLiteral("k"))).toStdString()) << "[2]";
    EXPECT_EQ(observer.use_count(), 1);
}

TEST(SharedSuiteOpen, RootThatCannotBeCreatedGivesNoSuite)
{
    const ScopedConfigHome config;
    ASSERT_TRUE(QDir().mkpath(config.groupContainers()));
    QFile blocker(config.suiteRoot());
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    EXPECT_EQ(SharedSuite::open(suiteName), nullptr);
    EXPECT_TRUE(QFileInfo(config.suiteRoot()).isFile());
}

TEST(SharedSuiteOpen, RootThatCannotBeCreatedLeavesSharedDataOnTheNoopContainer)
{
    const ScopedConfigHome config;
    ASSERT_TRUE(QDir().mkpath(config.groupContainers()));
    QFile blocker(config.suiteRoot());
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    SharedData shared(std::shared_ptr<SharedSuite>(SharedSuite::open(suiteName)),
                      std::shared_ptr<KeychainItems>());
    EXPECT_EQ(shared.userDefaults, nullptr);
    shared.companionContainerId.setValue("abc"s);
    EXPECT_EQ(shared.companionContainerId.value(), std::nullopt);
}

TEST(SharedSuiteOpen, NamesThatLeaveTheGroupDirectoryAreRefused)
{
    const ScopedConfigHome config;
    EXPECT_EQ(SharedSuite::open(QStringLiteral("../escape")), nullptr);
    EXPECT_EQ(SharedSuite::open(QStringLiteral("..")), nullptr);
    EXPECT_EQ(SharedSuite::open(QString()), nullptr);
}

class SharedDataOverSuiteTest : public ::testing::Test {
protected:
    ScopedConfigHome config;
    SharedData shared{std::shared_ptr<SharedSuite>(SharedSuite::open(suiteName)),
                      std::shared_ptr<KeychainItems>()};

    QByteArray onDisk(const QString& key) const
    {
        return fileContents(QDir(config.suiteRoot()).filePath(key));
    }
};

TEST_F(SharedDataOverSuiteTest, UsesTheSuiteWhenItOpens)
{
    ASSERT_NE(shared.userDefaults, nullptr);
}

TEST_F(SharedDataOverSuiteTest, StoresTheContractedBytes)
{
    shared.oauthOpenLoginTabMessage.setValue(true);
    shared.companionContainerId.setValue(std::nullopt);
    shared.userInfo.setValue(UserInfo{"u-1", true, false, "c-1"});
    EXPECT_EQ(onDisk(QStringLiteral("message.oauthOpenLoginTabMessage")), QByteArray("[true]"));
    EXPECT_EQ(onDisk(QStringLiteral("companionContainerId")), QByteArray("[null]"));
    EXPECT_EQ(
        onDisk(QStringLiteral("userInfo")),
        QByteArray(
            R"([{"userId":"u-1","isTestUser":true,"isAnonymous":false,"containerId":"c-1"}])"));
}

TEST_F(SharedDataOverSuiteTest, SubscriberInTheWritingProcessIsCalledWithTheNewValue)
{
    std::mutex mutex;
    std::vector<std::optional<UserInfo>> seen;
    const auto subscription = shared.userInfo.subscribe([&](auto info) {
        const std::lock_guard lock(mutex);
        seen.push_back(info);
    });
    shared.userInfo.setValue(UserInfo{"u-9", false, false, "c-9"});
    ASSERT_TRUE(test::waitUntil([&] {
        const std::lock_guard lock(mutex);
        return !seen.empty();
    }));
    const std::lock_guard lock(mutex);
    EXPECT_EQ(seen.front(), (UserInfo{"u-9", false, false, "c-9"}));
}

TEST_F(SharedDataOverSuiteTest, NoCallbackAfterUnsubscribe)
{
    std::atomic<int> calls = 0;
    std::atomic<int> barrier = 0;
    const auto subscription = shared.companionContainerId.subscribe([&](auto) { ++calls; });
    const auto barrierSubscription =
        shared.oauthOpenLoginTabMessage.subscribe([&](auto) { ++barrier; });
    subscription->unsubscribe();
    subscription->unsubscribe();
    shared.companionContainerId.setValue("abc"s);
    shared.oauthOpenLoginTabMessage.setValue(true);
    ASSERT_TRUE(test::waitUntil([&] { return barrier == 1; }));
    EXPECT_EQ(calls, 0);
}

TEST_F(SharedDataOverSuiteTest, GarbageUnderEveryKeyReadsAsNone)
{
    for (const auto& key : {"userInfo", "companionContainerId", "message.oauthExchangeMessage",
                            "message.oauthOpenLoginTabMessage"})
        shared.userDefaults->setData(QByteArray("\x00\xff{[garbage", 10), QString::fromUtf8(key));
    EXPECT_EQ(shared.userInfo.value(), std::nullopt);
    EXPECT_EQ(shared.companionContainerId.value(), std::nullopt);
    EXPECT_EQ(shared.oauthExchangeMessage.value(), std::nullopt);
    EXPECT_EQ(shared.oauthOpenLoginTabMessage.value(), std::nullopt);
}

TEST(EnvCommonSharedData, IsBuiltOverTheSuiteItIsGiven)
{
    const ScopedConfigHome config;
    const test::TemporaryBundle bundle;
    const std::shared_ptr<SharedSuite> suite = SharedSuite::open(suiteName);
    ASSERT_NE(suite, nullptr);
    EnvCommon common(Bundle(bundle.path()), suite, nullptr);
    EXPECT_EQ(common.sharedData.userDefaults, suite);
    common.sharedData.companionContainerId.setValue("c-env"s);
    EXPECT_EQ(suite->data(QStringLiteral("companionContainerId")), QByteArray(R"(["c-env"])"));
    EXPECT_EQ(common.sharedData.keychain.service(), std::string(keychainService));
}

TEST(EnvCommonSharedData, RunsOnTheNoopContainerWithoutASuite)
{
    const test::TemporaryBundle bundle;
    EnvCommon common(Bundle(bundle.path()), nullptr, nullptr);
    EXPECT_EQ(common.sharedData.userDefaults, nullptr);
    common.sharedData.companionContainerId.setValue("c-env"s);
    EXPECT_EQ(common.sharedData.companionContainerId.value(), std::nullopt);
    EXPECT_EQ(common.appInfo.appName, "Lexmira");
}

} // namespace

namespace {

// The suite's directory changed under a running suite, as another process of the user can.
class SharedSuiteDirectoryTest : public SharedSuiteTest {
protected:
    void removeRoot() { ASSERT_TRUE(QDir(config.suiteRoot()).removeRecursively()); }

    // Waits until the watcher has created the directory again.
    bool rootIsBack() const
    {
        return test::waitUntil([&] { return QFileInfo(config.suiteRoot()).isDir(); });
    }

    // A write of another process: a complete file renamed into place.
    void writeAsAnotherProcess(const QString& key, const QByteArray& bytes)
    {
        const QString temporary = keyFile(QStringLiteral(".other"));
        QFile file(temporary);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        file.close();
        ASSERT_EQ(::rename(QFile::encodeName(temporary).constData(),
                           QFile::encodeName(keyFile(key)).constData()),
                  0);
    }
};

TEST_F(SharedSuiteDirectoryTest, WriteAfterTheDirectoryWasRemovedIsStored)
{
    suite->setData(QByteArray("[1]"), QStringLiteral("k"));
    removeRoot();
    suite->setData(QByteArray("[2]"), QStringLiteral("k"));
    EXPECT_EQ(fileContents(keyFile(QStringLiteral("k"))), QByteArray("[2]"));
    EXPECT_EQ(suite->data(QStringLiteral("k")), QByteArray("[2]"));
}

TEST_F(SharedSuiteDirectoryTest, RemovedDirectoryIsCreatedAgainAndChangesAreStillNoticed)
{
    const auto observer = std::make_shared<CountingObserver>();
    suite->addObserver(observer, QStringLiteral("userInfo"));
    removeRoot();
    ASSERT_TRUE(rootIsBack());
    EXPECT_EQ(modeOf(config.suiteRoot()), 0700u);
    // Whatever the removal took away was announced once.
    ASSERT_TRUE(test::waitUntil([&] { return observer->count(QStringLiteral("userInfo")) >= 1; }));
    const int before = observer->count(QStringLiteral("userInfo"));
    writeAsAnotherProcess(QStringLiteral("userInfo"), "[null]");
    ASSERT_TRUE(
        test::waitUntil([&] { return observer->count(QStringLiteral("userInfo")) == before + 1; }));
}

TEST_F(SharedSuiteDirectoryTest, DirectoryReplacedByAnotherIsWatchedInstead)
{
    const auto observer = std::make_shared<CountingObserver>();
    suite->addObserver(observer, QStringLiteral("userInfo"));
    const QString replacement = config.path() + QStringLiteral("/replacement");
    ASSERT_TRUE(QDir().mkpath(replacement));
    ASSERT_TRUE(QFile::rename(config.suiteRoot(), config.path() + QStringLiteral("/old")));
    // rename(2), which may replace the empty directory the suite can have created meanwhile.
    ASSERT_EQ(::rename(QFile::encodeName(replacement).constData(),
                       QFile::encodeName(config.suiteRoot()).constData()),
              0);
    ASSERT_TRUE(test::waitUntil([&] { return observer->count(QStringLiteral("userInfo")) >= 1; }));
    const int before = observer->count(QStringLiteral("userInfo"));
    writeAsAnotherProcess(QStringLiteral("userInfo"), "[null]");
    ASSERT_TRUE(
        test::waitUntil([&] { return observer->count(QStringLiteral("userInfo")) == before + 1; }));
    suite->setData(QByteArray("[3]"), QStringLiteral("k"));
    EXPECT_EQ(fileContents(keyFile(QStringLiteral("k"))), QByteArray("[3]"));
}

TEST_F(SharedSuiteTest, RootWritableByOthersIsMadePrivate)
{
    suite.reset();
    ASSERT_EQ(::chmod(QFile::encodeName(config.suiteRoot()).constData(), 0777), 0);
    EXPECT_NE(SharedSuite::open(suiteName), nullptr);
    EXPECT_EQ(modeOf(config.suiteRoot()), 0700u);
}

TEST_F(SharedSuiteTest, RootOfAnotherUserIsNotUsed)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "giving the directory to another user needs root";
    suite.reset();
    ASSERT_EQ(::chown(QFile::encodeName(config.suiteRoot()).constData(), 65534, 65534), 0);
    EXPECT_EQ(SharedSuite::open(suiteName), nullptr);
}

TEST_F(SharedSuiteTest, RootThatIsASymlinkIsNotUsed)
{
    suite.reset();
    const QString elsewhere = config.path() + QStringLiteral("/elsewhere");
    ASSERT_TRUE(QDir(config.suiteRoot()).removeRecursively());
    ASSERT_TRUE(QDir().mkpath(elsewhere));
    ASSERT_TRUE(QFile::link(elsewhere, config.suiteRoot()));
    EXPECT_EQ(SharedSuite::open(suiteName), nullptr);
}

TEST_F(SharedSuiteTest, ValueAtTheSizeBoundIsReadAndOneByteMoreIsNot)
{
    const QByteArray atBound(SharedSuite::maxValueBytes, 'x');
    suite->setData(atBound, QStringLiteral("k"));
    EXPECT_EQ(suite->data(QStringLiteral("k")), atBound);

    QFile file(keyFile(QStringLiteral("big")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(atBound + 'x');
    file.close();
    EXPECT_EQ(suite->data(QStringLiteral("big")), std::nullopt);
}

TEST_F(SharedSuiteTest, ValueOverTheSizeBoundIsNotStored)
{
    suite->setData(QByteArray("[1]"), QStringLiteral("k"));
    suite->setData(QByteArray(SharedSuite::maxValueBytes + 1, 'x'), QStringLiteral("k"));
    EXPECT_EQ(suite->data(QStringLiteral("k")), QByteArray("[1]"));
}

TEST_F(SharedSuiteTest, StaleTemporaryFilesOfDeadWritersAreRemovedOnOpen)
{
    suite.reset();
    const auto makeTemporary = [&](const QString& name, std::chrono::seconds age) {
        QFile file(keyFile(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("[tor");
        file.close();
        const timespec then{std::time(nullptr) - age.count(), 0};
        const timespec times[2] = {then, then};
        EXPECT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(keyFile(name)).constData(), times, 0), 0);
    };
    const auto stale = SharedSuite::staleTemporaryAge + std::chrono::seconds(1);
    makeTemporary(QStringLiteral(".userInfo.123"), stale);
    makeTemporary(QStringLiteral(".userInfo.456"), std::chrono::seconds(0));
    suite = SharedSuite::open(suiteName);
    ASSERT_NE(suite, nullptr);
    EXPECT_FALSE(QFileInfo::exists(keyFile(QStringLiteral(".userInfo.123"))));
    EXPECT_TRUE(QFileInfo::exists(keyFile(QStringLiteral(".userInfo.456"))))
        << "a writer may still be working on a recent one";
}

} // namespace

namespace {

// A small file system of its own for the suite, so that it can be filled up. Mounting needs the
// right to mount, which tests running as root have.
class FullDiskTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (::geteuid() != 0)
            GTEST_SKIP() << "mounting a small tmpfs needs root";
        const QByteArray mountPoint = QFile::encodeName(dir_.path());
        if (::mount("tmpfs", mountPoint.constData(), "tmpfs", 0, "size=512k,mode=0700") != 0)
            GTEST_SKIP() << "cannot mount a tmpfs here: " << std::strerror(errno);
        mounted_ = true;
        previous_ = qgetenv("XDG_CONFIG_HOME");
        qputenv("XDG_CONFIG_HOME", mountPoint);
        suite = SharedSuite::open(suiteName);
        ASSERT_NE(suite, nullptr);
    }

    void TearDown() override
    {
        suite.reset();
        if (mounted_) {
            qputenv("XDG_CONFIG_HOME", previous_);
            ::umount2(QFile::encodeName(dir_.path()).constData(), MNT_DETACH);
        }
    }

    // Fills the file system until a write fails for want of space.
    void fillUp()
    {
        QFile filler(dir_.filePath(QStringLiteral("filler")));
        ASSERT_TRUE(filler.open(QIODevice::WriteOnly));
        const QByteArray block(4096, 'f');
        while (filler.write(block) == block.size() && filler.flush()) {
        }
        filler.close();
    }

    QString suiteRoot() const
    {
        return QDir(dir_.filePath(QStringLiteral("group-containers"))).filePath(suiteName);
    }

    QTemporaryDir dir_;
    bool mounted_ = false;
    QByteArray previous_;
    std::shared_ptr<SharedSuite> suite;
};

TEST_F(FullDiskTest, WriteOnAFullDiskKeepsTheEarlierValueWhole)
{
    const QByteArray earlier(8 * 1024, 'a');
    suite->setData(earlier, QStringLiteral("userInfo"));
    fillUp();
    for (int i = 0; i < 20; ++i)
        suite->setData(QByteArray(64 * 1024, char('b' + i)), QStringLiteral("userInfo"));
    EXPECT_EQ(suite->data(QStringLiteral("userInfo")), earlier);
    const auto entries =
        QDir(suiteRoot()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    EXPECT_EQ(entries, QStringList{QStringLiteral("userInfo")}) << "no temporary file is left";

    // Space again, and writes land again.
    ASSERT_TRUE(QFile::remove(dir_.filePath(QStringLiteral("filler"))));
    suite->setData(QByteArray("[1]"), QStringLiteral("userInfo"));
    EXPECT_EQ(suite->data(QStringLiteral("userInfo")), QByteArray("[1]"));
}

} // namespace

} // namespace lexmira
