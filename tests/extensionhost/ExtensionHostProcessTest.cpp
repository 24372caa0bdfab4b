// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "Common/EnvCommon.h"
#include "platform/ExtensionBridge.h"
#include "platform/KeychainItems.h"
#include "platform/SharedSuite.h"
#include "shared/Keychain.h"
#include "shared/SharedData.h"
#include "support/BrowserPlayer.h"
#include "support/ChildProcess.h"
#include "support/DBusContract.h"
#include "support/HttpsTestServer.h"
#include "support/PrivateBus.h"
#include "support/SanitizerBuild.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <csignal>
#include <map>
#include <memory>
#include <set>

namespace lexmira {

namespace {

using namespace std::chrono_literals;
using test::BrowserPlayer;
using Json = nlohmann::ordered_json;

const QString serviceName = QStringLiteral("com.lexmira.companion.ext");
const QString objectPath = QStringLiteral("/com/lexmira/companion/ext");
const QString hostInterface = QStringLiteral("com.lexmira.ExtensionHost1");
const QString suiteName = QString::fromUtf8(appGroupSuiteName.data(), appGroupSuiteName.size());
const QString instanceName = QStringLiteral("com.lexmira.companion");

// Extension identifiers as the two browser families spell them.
const QString chromiumId = QStringLiteral("kmdmppbcfopgdmhnhmclhfmbohbmdlcd");
const QString otherChromiumId = QStringLiteral("aopmgkkjfcbbpkcfhoddeeihnfmohocg");
const QString firefoxId = QStringLiteral("companion@lexmira.test");

// The longest frame a browser may send.
constexpr qsizetype longestFrame = 1024 * 1024;

QString hostBinary()
{
    return test::toolBinary(QStringLiteral("lexmira-extension-host"));
}

bool isOwned(const QDBusConnection& bus, const QString& name)
{
    return bus.interface()->isServiceRegistered(name).value();
}

bool isOwned(const QString& name)
{
    return isOwned(QDBusConnection::sessionBus(), name);
}

// The bytes of a literal, embedded zero bytes included.
template <std::size_t size>
QByteArray bytesOf(const char (&literal)[size])
{
    return QByteArray(literal, qsizetype(size) - 1);
}

// json behind its length as four bytes in this machine's byte order: one frame on the wire.
QByteArray withLength(const QByteArray& json)
{
    const auto length = static_cast<std::uint32_t>(json.size());
    return QByteArray(reinterpret_cast<const char*>(&length), sizeof length) + json;
}

std::string base64(const QByteArray& bytes)
{
    return bytes.toBase64().toStdString();
}

bool isDispatch(const Json& frame)
{
    return frame.value("type", "") == "dispatch";
}

bool isDispatchOf(const Json& frame, const std::string& name)
{
    return isDispatch(frame) && frame.value("name", "") == name;
}

Json replyTo(const Json& dispatch, const Json& error = nullptr)
{
    return {{"type", "reply"}, {"id", dispatch.at("id")}, {"error", error}};
}

using test::residentSizeIsTheCodes;
using test::sanitizerTimeScale;

// The host's peak resident memory in KiB, from /proc; 0 when it cannot be read.
qint64 peakMemoryKiB(qint64 pid)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').value(0).toLongLong();
    return 0;
}

// The broker as a process of its own on the test's session bus. Started by the constructor,
// which waits until it owns the extension's name; stopped by the destructor, which waits until
// the name is free again.
class BrokerProcess {
public:
    explicit BrokerProcess(const QProcessEnvironment& environment, const QStringList& options = {})
        : process_(std::make_unique<test::ChildProcess>(
              hostBinary(), QStringList{QStringLiteral("--broker")} + options, environment))
    {
        serving_ =
            test::waitUntil([this] { return isOwned(serviceName) || !process_->running(); }) &&
            isOwned(serviceName);
    }

    ~BrokerProcess()
    {
        process_.reset();
        test::waitUntil([] { return !isOwned(serviceName); });
    }

    BrokerProcess(const BrokerProcess&) = delete;
    BrokerProcess& operator=(const BrokerProcess&) = delete;

    bool isServing() const { return serving_; }
    bool running() const { return process_->running(); }

private:
    std::unique_ptr<test::ChildProcess> process_;
    bool serving_ = false;
};

// The companion's client of the extension, with its answers waited for. Answers are kept in
// shared state, so a call still in flight when a test gives up completes harmlessly.
class Companion {
public:
    struct Answer {
        bool done = false;
        std::optional<bool> enabled;
        std::optional<ExtensionError> error;
    };

    // The state, or none when the call failed or answered nothing usable.
    std::optional<bool> state()
    {
        const auto answer = std::make_shared<Answer>();
        bridge_->getState(
            serviceName, &context_,
            [answer](std::optional<bool> enabled, std::optional<ExtensionError> error) {
                answer->done = true;
                answer->enabled = enabled;
                answer->error = std::move(error);
            });
        if (!test::waitUntil([&] { return answer->done; }))
            return std::nullopt;
        EXPECT_FALSE(answer->error) << answer->error->localizedDescription.toStdString();
        return answer->enabled;
    }

    // Asks for the state until it is expected; false when it was not within timeout.
    bool waitForState(bool expected, std::chrono::milliseconds timeout = 10s)
    {
        return test::waitUntil([&] { return state() == expected; }, timeout);
    }

    std::shared_ptr<Answer> dispatch(const QString& name, const std::optional<Json>& userInfo)
    {
        const auto answer = std::make_shared<Answer>();
        bridge_->dispatchMessage(name, serviceName, userInfo, &context_,
                                 [answer](std::optional<ExtensionError> error) {
                                     answer->done = true;
                                     answer->error = std::move(error);
                                 });
        return answer;
    }

    static bool waitFor(const std::shared_ptr<Answer>& answer,
                        std::chrono::milliseconds timeout = 10s)
    {
        return test::waitUntil([&] { return answer->done; }, timeout);
    }

private:
    QObject context_;
    std::unique_ptr<ExtensionBridge> bridge_ = ExtensionBridge::create();
};

// One broker on the test's session bus, hosts started as a browser starts them, and the
// companion's view of the same state: its client of the extension, the shared suite and the
// keychain. Every test has a configuration directory (so a shared suite) of its own.
class ExtensionHostProcess : public ::testing::Test {
protected:
    ExtensionHostProcess()
    {
        environment = test::childEnvironment();
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), config.path());
    }

    void SetUp() override
    {
        ASSERT_TRUE(test::waitUntil([] { return !isOwned(serviceName); }, 20s))
            << "a broker of an earlier test still runs";
        suite = openSuite();
        ASSERT_TRUE(suite);
        broker = std::make_unique<BrokerProcess>(environment);
        ASSERT_TRUE(broker->isServing());
    }

    void TearDown() override
    {
        players.clear();
        broker.reset();
        const Keychain keychain = companionKeychain();
        for (const auto& account : accounts)
            keychain.deleteItem(account);
    }

    // The suite as the companion opens it, in this test's configuration directory.
    std::unique_ptr<SharedSuite> openSuite() const
    {
        // The suite finds its place through the environment when it is opened; this process
        // opens it for the test's directory and then puts the environment back.
        const QByteArray previous = qgetenv("XDG_CONFIG_HOME");
        qputenv("XDG_CONFIG_HOME", config.path().toUtf8());
        auto opened = SharedSuite::open(suiteName);
        qputenv("XDG_CONFIG_HOME", previous);
        return opened;
    }

    QString suiteFile(const QString& key) const
    {
        return QDir(config.path())
            .filePath(QStringLiteral("group-containers/") + suiteName + QLatin1Char('/') + key);
    }

    static Keychain companionKeychain()
    {
        return Keychain(std::string(keychainService), std::string(keychainAccessGroup),
                        KeychainItems::create());
    }

    // An account of this test's own in the session's keychain, removed after the test.
    std::string account(const std::string& name)
    {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        std::string account = "host-process-test." + std::string(info->name()) + "." + name + "." +
                              std::to_string(QCoreApplication::applicationPid());
        accounts.push_back(account);
        return account;
    }

    BrowserPlayer& startHost(BrowserPlayer::Form form = BrowserPlayer::Form::chromium,
                             const QString& extensionId = chromiumId)
    {
        players.push_back(std::make_unique<BrowserPlayer>(form, extensionId, environment));
        return *players.back();
    }

    // A host that said hello and was welcomed: the extension enabled in one more browser.
    BrowserPlayer& connectHost(const QString& extensionId = chromiumId)
    {
        BrowserPlayer& player = startHost(BrowserPlayer::Form::chromium, extensionId);
        const auto welcome = player.hello();
        EXPECT_TRUE(welcome);
        return player;
    }

    // The extension identifiers of the connections the broker counts, oldest first.
    static std::vector<std::string> connectedExtensions()
    {
        const auto reply = QDBusConnection::sessionBus().call(QDBusMessage::createMethodCall(
            serviceName, objectPath, hostInterface, QStringLiteral("Connections")));
        std::vector<std::string> extensions;
        if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().size() != 1)
            return {"(no answer)"};
        const auto records = reply.arguments().front().value<QDBusArgument>();
        records.beginArray();
        while (!records.atEnd()) {
            QString connection, browser, browserName, extensionId;
            qint64 since = 0;
            records.beginStructure();
            records >> connection >> browser >> browserName >> extensionId >> since;
            records.endStructure();
            extensions.push_back(extensionId.toStdString());
        }
        records.endArray();
        return extensions;
    }

    // Bad input from one connection: before it, a value stored and a second connection that
    // said hello.
    void prepareBystander()
    {
        suite->setData(keptValue, keptKey);
        bystander = &connectHost(otherChromiumId);
    }

    // That connection ended cleanly and by itself: its host exited, and within a second the
    // broker counts only the bystander. The broker still serves, the bystander still works, the
    // stored value is still there, and once the bystander goes too the state is false.
    void expectOnlyThatConnectionEnded(BrowserPlayer& ended, const QElapsedTimer& sinceBadInput)
    {
        ASSERT_TRUE(ended.waitForExit());
        EXPECT_TRUE(ended.exitedNormally()) << "the host ended its process itself";
        ASSERT_TRUE(test::waitUntil(
            [] { return connectedExtensions() == std::vector{otherChromiumId.toStdString()}; },
            5s));
        EXPECT_LT(sinceBadInput.elapsed(), 1000 * sanitizerTimeScale);

        EXPECT_TRUE(broker->running());
        EXPECT_EQ(companion.state(), true);
        const auto welcome = bystander->hello();
        ASSERT_TRUE(welcome);
        EXPECT_EQ(welcome->value("browser", ""), "Chromium");
        const auto kept =
            bystander->request({{"type", "suite.get"}, {"key", keptKey.toStdString()}});
        ASSERT_TRUE(kept);
        EXPECT_EQ((*kept)["data"], base64(keptValue));
        EXPECT_EQ(suite->data(keptKey), keptValue);

        bystander->closeInput();
        QElapsedTimer sinceClosed;
        sinceClosed.start();
        ASSERT_TRUE(companion.waitForState(false));
        EXPECT_LT(sinceClosed.elapsed(), 1000 * sanitizerTimeScale);
    }

    const QString keptKey = QStringLiteral("kept");
    const QByteArray keptValue = QByteArray("[\"stays\"]");

    QTemporaryDir config;
    QProcessEnvironment environment;
    std::unique_ptr<SharedSuite> suite;
    std::unique_ptr<BrokerProcess> broker;
    std::vector<std::unique_ptr<BrowserPlayer>> players;
    BrowserPlayer* bystander = nullptr;
    Companion companion;
    std::vector<std::string> accounts;
};

// Framing and the handshake.

TEST_F(ExtensionHostProcess, TheChromiumFormIsWelcomedAsChromiumInExactFrames)
{
    BrowserPlayer& player = startHost(BrowserPlayer::Form::chromium, chromiumId);
    player.writeRaw(withLength(R"({"type":"hello","version":1})"));
    ASSERT_TRUE(test::waitUntil([&] { return !player.frames().empty(); }));
    test::spin(200ms);
    EXPECT_EQ(player.output(),
              withLength(R"({"type":"welcome","version":1,"browser":"Chromium"})"));
}

TEST_F(ExtensionHostProcess, TheFirefoxFormIsWelcomedAsFirefoxInExactFrames)
{
    BrowserPlayer& player = startHost(BrowserPlayer::Form::firefox, firefoxId);
    player.writeRaw(withLength(R"({"type":"hello","version":1})"));
    ASSERT_TRUE(test::waitUntil([&] { return !player.frames().empty(); }));
    test::spin(200ms);
    EXPECT_EQ(player.output(), withLength(R"({"type":"welcome","version":1,"browser":"Firefox"})"));
}

TEST_F(ExtensionHostProcess, AFrameArrivingInPiecesIsReadAsOneFrame)
{
    BrowserPlayer& player = startHost();
    const QByteArray frame = BrowserPlayer::encode(R"({"type":"hello","version":1})");
    for (const QByteArray& piece : {frame.left(2), frame.mid(2, 5), frame.mid(7)}) {
        player.writeRaw(piece);
        test::spin(150ms);
    }
    ASSERT_TRUE(test::waitUntil([&] { return !player.frames().empty(); }));
    EXPECT_EQ(player.frames().front().bytes,
              QByteArray(R"({"type":"welcome","version":1,"browser":"Chromium"})"));
    EXPECT_TRUE(player.running());
}

// The extension's state as the companion sees it.

TEST_F(ExtensionHostProcess, TheStateIsTrueWithinASecondOfHelloAndFalseWithinASecondOfTheEnd)
{
    EXPECT_EQ(companion.state(), false);
    BrowserPlayer& player = startHost();
    test::spin(300ms);
    EXPECT_EQ(companion.state(), false) << "a host that has not been greeted does not count";

    QElapsedTimer sinceHello;
    sinceHello.start();
    ASSERT_TRUE(player.hello());
    ASSERT_TRUE(companion.waitForState(true));
    EXPECT_LT(sinceHello.elapsed(), 1000 * sanitizerTimeScale);

    player.closeInput();
    QElapsedTimer sinceClosed;
    sinceClosed.start();
    ASSERT_TRUE(companion.waitForState(false));
    EXPECT_LT(sinceClosed.elapsed(), 1000 * sanitizerTimeScale);
    EXPECT_TRUE(player.waitForExit());
    EXPECT_TRUE(player.exitedNormally());
}

// Messages from the companion.

TEST_F(ExtensionHostProcess, ADispatchReachesTheExtensionAsExactlyTheDispatchFrame)
{
    BrowserPlayer& player = connectHost();
    const auto answer = companion.dispatch(QStringLiteral("oauthExchange"), Json{{"code", "x"}});
    const auto frame = player.takeFrame(isDispatch);
    ASSERT_TRUE(frame);
    EXPECT_EQ(
        frame->bytes,
        QByteArray(R"({"type":"dispatch","id":1,"name":"oauthExchange","userInfo":{"code":"x"}})"));
    player.send(replyTo(frame->json));
    ASSERT_TRUE(Companion::waitFor(answer));
}

TEST_F(ExtensionHostProcess, ADispatchWithoutUserInfoCarriesNull)
{
    BrowserPlayer& player = connectHost();
    const auto answer = companion.dispatch(QStringLiteral("oauthOpenLoginTab"), std::nullopt);
    const auto frame = player.takeFrame(isDispatch);
    ASSERT_TRUE(frame);
    EXPECT_EQ(
        frame->bytes,
        QByteArray(R"({"type":"dispatch","id":1,"name":"oauthOpenLoginTab","userInfo":null})"));
    player.send(replyTo(frame->json));
    ASSERT_TRUE(Companion::waitFor(answer));
}

TEST_F(ExtensionHostProcess, AReplyWithoutErrorCompletesTheCompanionsCall)
{
    BrowserPlayer& player = connectHost();
    const auto answer = companion.dispatch(QStringLiteral("oauthExchange"), Json{{"code", "x"}});
    const auto frame = player.takeFrame(isDispatch);
    ASSERT_TRUE(frame);
    test::spin(300ms);
    EXPECT_FALSE(answer->done) << "the call waits for the extension's reply";
    player.send(replyTo(frame->json));
    ASSERT_TRUE(Companion::waitFor(answer));
    EXPECT_FALSE(answer->error) << answer->error->localizedDescription.toStdString();
}

TEST_F(ExtensionHostProcess, AReplyWithAnErrorFailsTheCompanionsCallWithExactlyItsText)
{
    BrowserPlayer& player = connectHost();
    const auto answer = companion.dispatch(QStringLiteral("oauthExchange"), Json{{"code", "x"}});
    const auto frame = player.takeFrame(isDispatch);
    ASSERT_TRUE(frame);
    player.send(replyTo(frame->json, "The sign-in could not be completed: é \"quoted\""));
    ASSERT_TRUE(Companion::waitFor(answer));
    ASSERT_TRUE(answer->error);
    EXPECT_EQ(answer->error->localizedDescription.toStdString(),
              "The sign-in could not be completed: é \"quoted\"");
}

TEST_F(ExtensionHostProcess, ADispatchNotAnsweredWithinFourSecondsFailsSayingSo)
{
    BrowserPlayer& player = connectHost();
    QElapsedTimer sinceSent;
    sinceSent.start();
    const auto answer = companion.dispatch(QStringLiteral("oauthExchange"), Json{{"code", "x"}});
    ASSERT_TRUE(player.takeFrame(isDispatch));
    ASSERT_TRUE(Companion::waitFor(answer, 10s));
    const qint64 after = sinceSent.elapsed();
    EXPECT_GE(after, 3900);
    EXPECT_LT(after, 5000) << "the extension's side gives up before the companion's own time-out";
    ASSERT_TRUE(answer->error);
    const std::string message = answer->error->localizedDescription.toStdString();
    EXPECT_NE(message.find("did not answer within 4 seconds"), std::string::npos) << message;
    EXPECT_TRUE(player.running()) << "a slow extension keeps its connection";
}

TEST_F(ExtensionHostProcess, ADispatchWithNoConnectionFailsSayingSo)
{
    const auto answer = companion.dispatch(QStringLiteral("oauthExchange"), Json{{"code", "x"}});
    ASSERT_TRUE(Companion::waitFor(answer));
    ASSERT_TRUE(answer->error);
    const std::string message = answer->error->localizedDescription.toStdString();
    EXPECT_NE(message.find("not connected"), std::string::npos) << message;
}

TEST_F(ExtensionHostProcess, AConnectionThatEndsDuringADispatchFailsTheCallAtOnce)
{
    BrowserPlayer& player = connectHost();
    const auto answer = companion.dispatch(QStringLiteral("oauthExchange"), Json{{"code", "x"}});
    ASSERT_TRUE(player.takeFrame(isDispatch));
    QElapsedTimer sinceClosed;
    sinceClosed.start();
    player.closeInput();
    ASSERT_TRUE(Companion::waitFor(answer));
    EXPECT_LT(sinceClosed.elapsed(), 1000 * sanitizerTimeScale);
    ASSERT_TRUE(answer->error);
    const std::string message = answer->error->localizedDescription.toStdString();
    EXPECT_NE(message.find("connection has ended"), std::string::npos) << message;
    EXPECT_TRUE(player.waitForExit());
}

TEST_F(ExtensionHostProcess, AReplyAfterTheTimeOutIsAnsweredWithAnErrorAndTheConnectionGoesOn)
{
    BrowserPlayer& player = connectHost();
    const auto answer = companion.dispatch(QStringLiteral("oauthExchange"), Json{{"code", "x"}});
    const auto frame = player.takeFrame(isDispatch);
    ASSERT_TRUE(frame);
    ASSERT_TRUE(Companion::waitFor(answer));
    ASSERT_TRUE(answer->error);
    // The host's own wait began a moment after the broker's; let it run out too.
    test::spin(300ms);

    player.send(replyTo(frame->json));
    const auto late = player.takeFrame([](const Json& json) { return json.value("id", 0) == 1; });
    ASSERT_TRUE(late);
    EXPECT_EQ(late->json.value("type", ""), "error");
    EXPECT_FALSE(late->json.value("message", "").empty());
    EXPECT_TRUE(player.running());
    EXPECT_EQ(companion.state(), true);
}

TEST_F(ExtensionHostProcess, SixteenMessagesWaitForTheExtensionAndASeventeenthIsRefused)
{
    constexpr int waiting = 16;
    BrowserPlayer& player = connectHost();
    std::vector<std::shared_ptr<Companion::Answer>> answers;
    for (int i = 0; i < waiting; ++i)
        answers.push_back(
            companion.dispatch(QStringLiteral("oauthExchange"), Json{{"code", std::to_string(i)}}));
    std::vector<Json> frames;
    for (int i = 0; i < waiting; ++i) {
        const auto frame = player.takeFrame(isDispatch);
        ASSERT_TRUE(frame) << "message " << i;
        frames.push_back(frame->json);
    }

    const auto refused = companion.dispatch(QStringLiteral("oauthExchange"), Json{{"code", "x"}});
    ASSERT_TRUE(Companion::waitFor(refused, 3s)) << "refused at once, not after a time-out";
    ASSERT_TRUE(refused->error);
    const std::string message = refused->error->localizedDescription.toStdString();
    EXPECT_NE(message.find("Too many messages"), std::string::npos) << message;

    for (const auto& frame : frames)
        player.send(replyTo(frame));
    for (const auto& answer : answers) {
        ASSERT_TRUE(Companion::waitFor(answer));
        EXPECT_FALSE(answer->error) << answer->error->localizedDescription.toStdString();
    }
}

// The shared suite, as the companion and the extension share it.

TEST_F(ExtensionHostProcess, AValueSetThroughTheHostIsTheSameBytesForTheCompanion)
{
    BrowserPlayer& player = connectHost();
    const QByteArray bytes = bytesOf("[{\"userId\":\"u-1\"}]\0\xff\xfe end");
    const auto result =
        player.request({{"type", "suite.set"}, {"key", "userInfo"}, {"data", base64(bytes)}});
    ASSERT_TRUE(result);
    EXPECT_EQ(*result, (Json{{"type", "result"}, {"id", 1}}));

    QFile file(suiteFile(QStringLiteral("userInfo")));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), bytes);
    EXPECT_EQ(suite->data(QStringLiteral("userInfo")), bytes);
}

TEST_F(ExtensionHostProcess, SettingNullThroughTheHostRemovesTheKey)
{
    suite->setData(QByteArray("[true]"), QStringLiteral("message.oauthOpenLoginTabMessage"));
    BrowserPlayer& player = connectHost();
    const auto result = player.request(
        {{"type", "suite.set"}, {"key", "message.oauthOpenLoginTabMessage"}, {"data", nullptr}});
    ASSERT_TRUE(result);
    EXPECT_EQ(result->value("type", ""), "result");
    EXPECT_FALSE(suite->data(QStringLiteral("message.oauthOpenLoginTabMessage")));
    EXPECT_FALSE(QFile::exists(suiteFile(QStringLiteral("message.oauthOpenLoginTabMessage"))));
}

TEST_F(ExtensionHostProcess, AValueTheCompanionStoredIsReadThroughTheHostAsBase64)
{
    const QByteArray bytes = bytesOf("[\"c-42\"]\x01\x80");
    suite->setData(bytes, QStringLiteral("companionContainerId"));
    BrowserPlayer& player = connectHost();
    const auto stored = player.request({{"type", "suite.get"}, {"key", "companionContainerId"}});
    ASSERT_TRUE(stored);
    EXPECT_EQ(*stored, (Json{{"type", "result"}, {"id", 1}, {"data", base64(bytes)}}));

    const auto missing = player.request({{"type", "suite.get"}, {"key", "userInfo"}});
    ASSERT_TRUE(missing);
    EXPECT_EQ(*missing, (Json{{"type", "result"}, {"id", 2}, {"data", nullptr}}));
}

TEST_F(ExtensionHostProcess, AnObservedKeyChangedByTheCompanionIsReportedToTheExtension)
{
    BrowserPlayer& player = connectHost();
    const auto observed =
        player.request({{"type", "suite.observe"}, {"key", "companionContainerId"}});
    ASSERT_TRUE(observed);
    EXPECT_EQ(*observed, (Json{{"type", "result"}, {"id", 1}}));

    std::shared_ptr<SharedSuite> shared = openSuite();
    SharedData sharedData(shared, nullptr);
    sharedData.userInfo.setValue(std::nullopt); // not observed: no notification
    sharedData.companionContainerId.setValue("c-7");

    const auto changed = player.takeFrame(
        [](const Json& frame) { return frame.value("type", "") == "suite.changed"; });
    ASSERT_TRUE(changed);
    EXPECT_EQ(changed->bytes,
              QByteArray(R"({"type":"suite.changed","key":"companionContainerId"})"));
    test::spin(500ms);
    for (const auto& frame : player.frames())
        EXPECT_NE(frame.json.value("key", ""), "userInfo") << frame.bytes.toStdString();
}

// The keychain, as the companion and the extension share it.

TEST_F(ExtensionHostProcess, AnItemSetThroughTheHostIsTheSameBytesForTheCompanion)
{
    const std::string name = account("set");
    BrowserPlayer& player = connectHost();
    const QByteArray secret = bytesOf("token\0\xff secret");
    const auto result =
        player.request({{"type", "keychain.set"}, {"account", name}, {"data", base64(secret)}});
    ASSERT_TRUE(result);
    EXPECT_EQ(*result, (Json{{"type", "result"}, {"id", 1}, {"status", 0}, {"data", nullptr}}));
    EXPECT_EQ(companionKeychain().get(name, false), secret);
}

TEST_F(ExtensionHostProcess, AnItemTheCompanionStoredIsReadThroughTheHost)
{
    const std::string name = account("get");
    const QByteArray secret = bytesOf("\x01\x02 refresh token");
    ASSERT_TRUE(
        companionKeychain().set(name, secret, Keychain::Access::accessibleAfterFirstUnlock));
    BrowserPlayer& player = connectHost();
    const auto result =
        player.request({{"type", "keychain.get"}, {"account", name}, {"persistentRef", false}});
    ASSERT_TRUE(result);
    EXPECT_EQ(*result,
              (Json{{"type", "result"}, {"id", 1}, {"status", 0}, {"data", base64(secret)}}));
}

TEST_F(ExtensionHostProcess, AnItemDeletedThroughTheHostIsGoneForTheCompanion)
{
    const std::string name = account("delete");
    ASSERT_TRUE(companionKeychain().set(name, QByteArray("gone soon"),
                                        Keychain::Access::accessibleAfterFirstUnlock));
    BrowserPlayer& player = connectHost();
    const auto result = player.request({{"type", "keychain.delete"}, {"account", name}});
    ASSERT_TRUE(result);
    EXPECT_EQ(result->value("status", 1), 0);
    EXPECT_FALSE(companionKeychain().get(name, false));
}

TEST_F(ExtensionHostProcess, GettingAMissingItemAnswersNotFoundWithNullData)
{
    const std::string name = account("missing");
    BrowserPlayer& player = connectHost();
    const auto result =
        player.request({{"type", "keychain.get"}, {"account", name}, {"persistentRef", false}});
    ASSERT_TRUE(result);
    EXPECT_EQ(*result,
              (Json{{"type", "result"}, {"id", 1}, {"status", -25300}, {"data", nullptr}}));
}

// Input a browser should never send: it ends that connection and nothing else.

TEST_F(ExtensionHostProcess, AFrameOverOneMebibyteEndsOnlyThatConnection)
{
    prepareBystander();
    BrowserPlayer& player = connectHost();
    QElapsedTimer sinceBadInput;
    sinceBadInput.start();
    player.writeRaw(withLength(QByteArray(longestFrame + 1, ' ')));
    expectOnlyThatConnectionEnded(player, sinceBadInput);
}

TEST_F(ExtensionHostProcess, AFrameOfExactlyOneMebibyteIsServed)
{
    BrowserPlayer& player = connectHost();
    QByteArray frame = R"({"type":"suite.get","id":7,"key":"kept","padding":")";
    frame += QByteArray(longestFrame - frame.size() - 2, 'p') + "\"}";
    ASSERT_EQ(frame.size(), longestFrame);
    suite->setData(keptValue, keptKey);
    player.sendFrame(frame);
    const auto result = player.takeFrame([](const Json& json) { return json.value("id", 0) == 7; });
    ASSERT_TRUE(result);
    EXPECT_EQ(result->json, (Json{{"type", "result"}, {"id", 7}, {"data", base64(keptValue)}}));
    EXPECT_TRUE(player.running());
}

TEST_F(ExtensionHostProcess, AFrameCutShortEndsOnlyThatConnection)
{
    prepareBystander();
    BrowserPlayer& player = connectHost();
    player.writeRaw(withLength(QByteArray(40, ' ')).left(4));
    test::spin(200ms);
    EXPECT_TRUE(player.running()) << "the rest of the frame may still come";
    QElapsedTimer sinceBadInput;
    sinceBadInput.start();
    player.closeInput();
    expectOnlyThatConnectionEnded(player, sinceBadInput);
}

TEST_F(ExtensionHostProcess, AFrameThatIsNotJsonEndsOnlyThatConnection)
{
    prepareBystander();
    BrowserPlayer& player = connectHost();
    QElapsedTimer sinceBadInput;
    sinceBadInput.start();
    player.sendFrame(QByteArray("{\"type\":\"suite.get\",\"id\":1,\"key\":\xff}"));
    expectOnlyThatConnectionEnded(player, sinceBadInput);
}

TEST_F(ExtensionHostProcess, JsonThatIsNotAnObjectEndsOnlyThatConnection)
{
    prepareBystander();
    BrowserPlayer& player = connectHost();
    QElapsedTimer sinceBadInput;
    sinceBadInput.start();
    player.sendFrame(R"([{"type":"suite.get","id":1,"key":"kept"}])");
    expectOnlyThatConnectionEnded(player, sinceBadInput);
}

// Requests the host cannot serve are answered, and the connection goes on.

TEST_F(ExtensionHostProcess, AnUnknownRequestTypeIsAnsweredWithAnErrorForItsId)
{
    BrowserPlayer& player = connectHost();
    const auto answer = player.request({{"type", "suite.clear"}, {"key", "kept"}});
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->value("type", ""), "error");
    EXPECT_EQ(answer->value("id", 0), 1);
    EXPECT_FALSE(answer->value("message", "").empty());
    ASSERT_TRUE(player.request({{"type", "suite.get"}, {"key", "kept"}}));
    EXPECT_EQ(companion.state(), true);
}

TEST_F(ExtensionHostProcess, ARequestMissingAFieldIsAnsweredWithAnErrorForItsId)
{
    BrowserPlayer& player = connectHost();
    const auto answer = player.request({{"type", "suite.set"}, {"key", "kept"}});
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->value("type", ""), "error");
    EXPECT_EQ(answer->value("id", 0), 1);
    EXPECT_FALSE(answer->value("message", "").empty());
    EXPECT_FALSE(suite->data(keptKey));
    ASSERT_TRUE(player.request({{"type", "suite.get"}, {"key", "kept"}}));
    EXPECT_EQ(companion.state(), true);
}

TEST_F(ExtensionHostProcess, ARequestWithAFieldOfTheWrongTypeIsAnsweredWithAnErrorForItsId)
{
    BrowserPlayer& player = connectHost();
    const auto answer = player.request({{"type", "keychain.get"}, {"account", 42}});
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->value("type", ""), "error");
    EXPECT_EQ(answer->value("id", 0), 1);
    EXPECT_FALSE(answer->value("message", "").empty());
    ASSERT_TRUE(player.request({{"type", "suite.get"}, {"key", "kept"}}));
    EXPECT_EQ(companion.state(), true);
}

TEST_F(ExtensionHostProcess, TenThousandRequestsWrittenAtOnceAreAllAnsweredInOrder)
{
    constexpr int count = 10'000;
    suite->setData(keptValue, keptKey);
    BrowserPlayer& player = connectHost();
    const std::size_t before = player.frames().size();
    QByteArray flood;
    for (int id = 1; id <= count; ++id)
        flood += BrowserPlayer::encode(QByteArray(R"({"type":"suite.get","id":)") +
                                       QByteArray::number(id) + R"(,"key":"kept"})");
    player.writeRaw(flood);
    ASSERT_TRUE(test::waitUntil([&] { return player.frames().size() >= before + count; }, 60s));

    const Json data = base64(keptValue);
    int wrong = 0;
    for (int id = 1; id <= count; ++id) {
        const Json& frame = player.frames()[before + std::size_t(id) - 1].json;
        if (frame != Json{{"type", "result"}, {"id", id}, {"data", data}} && wrong++ < 3)
            ADD_FAILURE() << "answer " << id << ": " << frame.dump();
    }
    EXPECT_EQ(wrong, 0);
    test::spin(200ms);
    EXPECT_EQ(player.frames().size(), before + count) << "one answer per request";
    EXPECT_TRUE(player.running());
    const qint64 peak = peakMemoryKiB(player.processId());
    EXPECT_GT(peak, 0);
    // About 13 MiB at rest; what waits to be read is bounded far below what this would allow.
    if (residentSizeIsTheCodes) {
        EXPECT_LT(peak, 32 * 1024) << "the host's peak memory, in KiB";
    }
    EXPECT_EQ(companion.state(), true);
}

TEST_F(ExtensionHostProcess, AHostKilledDuringADispatchFailsTheCallAndTheBrokerGoesOn)
{
    BrowserPlayer& player = connectHost();
    const auto answer = companion.dispatch(QStringLiteral("oauthExchange"), Json{{"code", "x"}});
    ASSERT_TRUE(player.takeFrame(isDispatch));
    QElapsedTimer sinceKilled;
    sinceKilled.start();
    player.kill();
    ASSERT_TRUE(Companion::waitFor(answer));
    EXPECT_LT(sinceKilled.elapsed(), 1000 * sanitizerTimeScale)
        << "the call fails as the connection ends";
    ASSERT_TRUE(answer->error);
    const std::string message = answer->error->localizedDescription.toStdString();
    EXPECT_NE(message.find("connection ended"), std::string::npos) << message;
    ASSERT_TRUE(companion.waitForState(false));
    EXPECT_LT(sinceKilled.elapsed(), 1000 * sanitizerTimeScale);
    EXPECT_TRUE(broker->running());
    EXPECT_TRUE(isOwned(serviceName));

    BrowserPlayer& next = connectHost();
    EXPECT_EQ(companion.state(), true);
    const auto again = companion.dispatch(QStringLiteral("oauthExchange"), Json{{"code", "y"}});
    const auto frame = next.takeFrame(isDispatch);
    ASSERT_TRUE(frame);
    next.send(replyTo(frame->json));
    ASSERT_TRUE(Companion::waitFor(again));
    EXPECT_FALSE(again->error);
}

// Several browsers at once.

// The browser the companion names in its texts, as the broker reports it.
QString browserName()
{
    const auto reply = QDBusConnection::sessionBus().call(
        QDBusMessage::createMethodCall(serviceName, objectPath,
                                       QStringLiteral("org.freedesktop.DBus.Properties"),
                                       QStringLiteral("Get"))
        << QStringLiteral("com.lexmira.Extension1") << QStringLiteral("BrowserName"));
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return QStringLiteral("(no answer)");
    return reply.arguments().front().value<QDBusVariant>().variant().toString();
}

TEST_F(ExtensionHostProcess, TheBrowserNameIsThatOfTheMostRecentConnection)
{
    EXPECT_EQ(browserName().toStdString(), "");
    BrowserPlayer& firefox = startHost(BrowserPlayer::Form::firefox, firefoxId);
    ASSERT_TRUE(firefox.hello());
    EXPECT_EQ(browserName().toStdString(), "Firefox");
    BrowserPlayer& chromium = connectHost();
    EXPECT_EQ(browserName().toStdString(), "Chromium");
    chromium.closeInput();
    ASSERT_TRUE(test::waitUntil([] { return browserName() == QStringLiteral("Firefox"); }));
}

// The broker tells the bus what its two contract files declare, member for member: the
// extension's interface the companion calls, and the one its hosts attach through.
TEST_F(ExtensionHostProcess, TheBrokerDeclaresExactlyTheMembersOfItsContractFiles)
{
    const auto declared = test::interfacesIn(
        test::introspect(QDBusConnection::sessionBus(), serviceName, objectPath));
    EXPECT_TRUE(test::declaresContract(declared, QStringLiteral("com.lexmira.Extension1.xml")));
    EXPECT_TRUE(
        test::declaresContract(declared, QStringLiteral("com.lexmira.ExtensionHost1.xml")));
}

TEST_F(ExtensionHostProcess, TheMostRecentConnectionReceivesDispatches)
{
    BrowserPlayer& older = connectHost(chromiumId);
    BrowserPlayer& newer = connectHost(otherChromiumId);
    const auto answer = companion.dispatch(QStringLiteral("oauthExchange"), Json{{"code", "x"}});
    const auto frame = newer.takeFrame(isDispatch);
    ASSERT_TRUE(frame);
    newer.send(replyTo(frame->json));
    ASSERT_TRUE(Companion::waitFor(answer));
    EXPECT_FALSE(answer->error);
    for (const auto& received : older.frames())
        EXPECT_FALSE(isDispatch(received.json)) << received.bytes.toStdString();
}

TEST_F(ExtensionHostProcess, TheStateStaysTrueUntilTheLastConnectionEnds)
{
    BrowserPlayer& older = connectHost(chromiumId);
    BrowserPlayer& newer = connectHost(otherChromiumId);
    ASSERT_TRUE(companion.waitForState(true));

    newer.closeInput();
    ASSERT_TRUE(newer.waitForExit());
    ASSERT_TRUE(test::waitUntil(
        [] { return connectedExtensions() == std::vector{chromiumId.toStdString()}; }));
    EXPECT_EQ(companion.state(), true);

    older.closeInput();
    QElapsedTimer sinceClosed;
    sinceClosed.start();
    ASSERT_TRUE(companion.waitForState(false));
    EXPECT_LT(sinceClosed.elapsed(), 1000 * sanitizerTimeScale);
}

TEST_F(ExtensionHostProcess, WhenTheNewestConnectionEndsTheOlderOneReceivesDispatches)
{
    BrowserPlayer& older = connectHost(chromiumId);
    BrowserPlayer& newer = connectHost(otherChromiumId);
    newer.closeInput();
    ASSERT_TRUE(newer.waitForExit());
    ASSERT_TRUE(test::waitUntil(
        [] { return connectedExtensions() == std::vector{chromiumId.toStdString()}; }));

    const auto answer = companion.dispatch(QStringLiteral("oauthExchange"), Json{{"code", "x"}});
    const auto frame = older.takeFrame(isDispatch);
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->json, (Json{{"type", "dispatch"},
                                 {"id", 1},
                                 {"name", "oauthExchange"},
                                 {"userInfo", {{"code", "x"}}}}));
    older.send(replyTo(frame->json));
    ASSERT_TRUE(Companion::waitFor(answer));
    EXPECT_FALSE(answer->error);
}

// A broker that goes away and comes back.

TEST_F(ExtensionHostProcess, ConnectedHostsAttachAgainToABrokerThatCameBack)
{
    BrowserPlayer& player = connectHost();
    ASSERT_TRUE(companion.waitForState(true));
    broker.reset();

    broker = std::make_unique<BrokerProcess>(environment);
    ASSERT_TRUE(broker->isServing());
    QElapsedTimer sinceBack;
    sinceBack.start();
    ASSERT_TRUE(companion.waitForState(true, 5s));
    EXPECT_LT(sinceBack.elapsed(), 1000 * sanitizerTimeScale);

    const auto answer = companion.dispatch(QStringLiteral("oauthExchange"), Json{{"code", "x"}});
    const auto frame = player.takeFrame(isDispatch);
    ASSERT_TRUE(frame);
    player.send(replyTo(frame->json));
    ASSERT_TRUE(Companion::waitFor(answer));
    EXPECT_FALSE(answer->error);
}

// The companion itself, with the extension connected through a host.

const QString signInCallback = QStringLiteral(
    "lexmira.extension://"
    "oauth?code=4%2FP7q-xZ&code_challenge=E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM");

bool instanceRunning()
{
    return isOwned(instanceName);
}

// The companion as its own process beside the broker, sharing the test's configuration directory
// with the hosts, and logging remotely to a loopback service of the test.
class CompanionWithHost : public ExtensionHostProcess {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(test::waitUntil([] { return !instanceRunning(); }, 20s));
        ExtensionHostProcess::SetUp();
        environment.insert(QStringLiteral("LEXMIRA_LOG_HOST"), log.hostAndPort());
        environment.insert(QStringLiteral("LEXMIRA_EXTRA_CA_FILE"),
                           test::HttpsTestServer::caFile());
    }

    void TearDown() override
    {
        instance.reset();
        EXPECT_TRUE(test::waitUntil([] { return !instanceRunning(); }, 20s));
        ExtensionHostProcess::TearDown();
    }

    void startCompanion()
    {
        instance = std::make_unique<test::ChildProcess>(test::companionBinary(), QStringList{},
                                                        environment);
        ASSERT_TRUE(test::waitUntil(instanceRunning, 20s));
    }

    test::HttpsTestServer log;
    std::unique_ptr<test::ChildProcess> instance;
};

TEST_F(CompanionWithHost, AConnectedExtensionBringsUpTheEnabledPanelWhichAsksForTheLoginTabOnce)
{
    BrowserPlayer& player = connectHost();
    startCompanion();

    // The enabled panel, with no user signed in, asks the extension for the login tab.
    const auto frame = player.takeFrame(
        [](const Json& json) { return isDispatchOf(json, "oauthOpenLoginTab"); }, 20s);
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->json["userInfo"], nullptr);
    player.send(replyTo(frame->json));
    EXPECT_EQ(suite->data(QStringLiteral("message.oauthOpenLoginTabMessage")),
              QByteArray("[true]"));

    test::spin(3s);
    int asked = 0;
    for (const auto& received : player.frames())
        asked += isDispatchOf(received.json, "oauthOpenLoginTab");
    EXPECT_EQ(asked, 1);
    EXPECT_TRUE(instance->running());
}

TEST_F(CompanionWithHost, ASignInCallbackReachesTheExtensionAsAnExchangeDispatch)
{
    BrowserPlayer& player = connectHost();
    startCompanion();
    const auto openTab = player.takeFrame(
        [](const Json& json) { return isDispatchOf(json, "oauthOpenLoginTab"); }, 20s);
    ASSERT_TRUE(openTab);
    player.send(replyTo(openTab->json));

    QProcess launch;
    launch.setProcessEnvironment(environment);
    launch.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    launch.start(test::companionBinary(), {signInCallback});
    ASSERT_TRUE(launch.waitForFinished(30000));
    EXPECT_EQ(launch.exitCode(), 0);

    const auto exchange =
        player.takeFrame([](const Json& json) { return isDispatchOf(json, "oauthExchange"); }, 20s);
    ASSERT_TRUE(exchange);
    EXPECT_EQ(exchange->json["userInfo"],
              (Json{{"code", "4/P7q-xZ"},
                    {"codeChallenge", "E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM"}}));
    // The record the extension goes on with is in the shared suite, read through the host.
    const auto record =
        player.request({{"type", "suite.get"}, {"key", "message.oauthExchangeMessage"}});
    ASSERT_TRUE(record);
    EXPECT_EQ(
        (*record)["data"],
        base64(
            R"([{"code":"4\/P7q-xZ","codeChallenge":"E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM"}])"));
    player.send(replyTo(exchange->json));
    test::spin(1s);
    EXPECT_TRUE(log.requests().empty()) << "the hand-off succeeded, so nothing was logged";
}

// A session bus of the test's own that starts the broker from a service file, as an installed
// system does; no other test sees it.
class BrokerBus {
public:
    explicit BrokerBus(const QStringList& brokerOptions)
        : daemon_(std::map<QString, QString>{
              {serviceName,
               (QStringList{hostBinary(), QStringLiteral("--broker")} + brokerOptions)
                   .join(u' ')}})
        , address_(daemon_.address())
    {
        if (!address_.isEmpty())
            bus_ = std::make_unique<QDBusConnection>(
                QDBusConnection::connectToBus(address_, connectionName()));
    }

    ~BrokerBus()
    {
        // The broker the bus started is the bus's child, not this test's: end it by its id.
        if (bus_ && bus_->isConnected() && isOwned(*bus_, serviceName)) {
            const auto pid = bus_->interface()->servicePid(serviceName).value();
            if (pid > 0)
                ::kill(pid_t(pid), SIGTERM);
        }
        bus_.reset();
        QDBusConnection::disconnectFromBus(connectionName());
    }

    BrokerBus(const BrokerBus&) = delete;
    BrokerBus& operator=(const BrokerBus&) = delete;

    bool isRunning() const { return bus_ && bus_->isConnected(); }
    const QString& address() const { return address_; }
    QDBusConnection& bus() { return *bus_; }

    // The broker's process id, or 0 when nothing owns the extension's name.
    uint brokerPid() { return bus_->interface()->servicePid(serviceName).value(); }

    // "gdbus call" of one method of the extension's interface; its output, or "" on failure.
    QString callExtension(const QString& method) const
    {
        return call(QStringLiteral("com.lexmira.Extension1.") + method);
    }

    // The same for a method named with its interface.
    QString call(const QString& method) const
    {
        QProcess gdbus;
        gdbus.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        gdbus.start(QStringLiteral("gdbus"),
                    {QStringLiteral("call"), QStringLiteral("--address"), address_,
                     QStringLiteral("--dest"), serviceName, QStringLiteral("--object-path"),
                     objectPath, QStringLiteral("--method"), method});
        if (!gdbus.waitForFinished(30000) || gdbus.exitCode() != 0)
            return QString();
        return QString::fromUtf8(gdbus.readAllStandardOutput()).trimmed();
    }

private:
    static QString connectionName() { return QStringLiteral("lexmira-test-private-bus"); }

    test::PrivateBus daemon_;
    QString address_;
    std::unique_ptr<QDBusConnection> bus_;
};

TEST(ExtensionHostActivation, TheCompanionsFirstStateQueryStartsTheBrokerAndIsAnsweredFalse)
{
    BrokerBus bus({QStringLiteral("--idle-timeout"), QStringLiteral("2000")});
    ASSERT_TRUE(bus.isRunning());
    ASSERT_FALSE(isOwned(bus.bus(), serviceName));

    QTemporaryDir config;
    test::HttpsTestServer log;
    auto environment = test::childEnvironment();
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), bus.address());
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), config.path());
    environment.insert(QStringLiteral("LEXMIRA_LOG_HOST"), log.hostAndPort());
    environment.insert(QStringLiteral("LEXMIRA_EXTRA_CA_FILE"), test::HttpsTestServer::caFile());
    test::ChildProcess companion(test::companionBinary(), {}, environment);

    ASSERT_TRUE(test::waitUntil([&] { return isOwned(bus.bus(), serviceName); }, 20s));
    EXPECT_FALSE(isOwned(serviceName)) << "the broker started on the companion's bus only";
    test::spin(3s);
    EXPECT_TRUE(log.requests().empty()) << "an unanswered state query would have been logged: "
                                        << log.requests().front().body.toStdString();
    EXPECT_TRUE(companion.running());
    EXPECT_EQ(bus.callExtension(QStringLiteral("GetState")), QStringLiteral("(false,)"));
}

TEST(ExtensionHostActivation, AStartedBrokerExitsByItselfOnceIdle)
{
    BrokerBus bus({QStringLiteral("--idle-timeout"), QStringLiteral("2000")});
    ASSERT_TRUE(bus.isRunning());
    EXPECT_EQ(bus.callExtension(QStringLiteral("GetState")), QStringLiteral("(false,)"));
    QElapsedTimer sinceCalled;
    sinceCalled.start();
    const uint pid = bus.brokerPid();
    ASSERT_GT(pid, 0u);

    ASSERT_TRUE(test::waitUntil([&] { return !isOwned(bus.bus(), serviceName); }, 10s));
    EXPECT_GE(sinceCalled.elapsed(), 1500) << "not before its idle time";
    EXPECT_LT(sinceCalled.elapsed(), 4000);
    EXPECT_TRUE(test::waitUntil([&] {
        return !QFile::exists(QStringLiteral("/proc/%1").arg(pid));
    })) << "the broker's process ended";
}

TEST(ExtensionHostActivation, AHostsHelloStartsTheBroker)
{
    BrokerBus bus({});
    ASSERT_TRUE(bus.isRunning());
    QTemporaryDir config;
    auto environment = test::childEnvironment();
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), bus.address());
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), config.path());
    BrowserPlayer player(BrowserPlayer::Form::chromium, chromiumId, environment);

    const auto welcome = player.hello(20s);
    ASSERT_TRUE(welcome);
    EXPECT_EQ(welcome->value("browser", ""), "Chromium");
    EXPECT_GT(bus.brokerPid(), 0u);
    EXPECT_EQ(bus.callExtension(QStringLiteral("GetState")), QStringLiteral("(true,)"));
}

TEST(ExtensionHostActivation, AConnectedHostStartsANewBrokerWhenItsBrokerDies)
{
    BrokerBus bus({});
    ASSERT_TRUE(bus.isRunning());
    QTemporaryDir config;
    auto environment = test::childEnvironment();
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), bus.address());
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), config.path());
    BrowserPlayer player(BrowserPlayer::Form::firefox, firefoxId, environment);
    ASSERT_TRUE(player.hello(20s));
    const uint first = bus.brokerPid();
    ASSERT_GT(first, 0u);

    ::kill(pid_t(first), SIGKILL);
    ASSERT_TRUE(test::waitUntil(
        [&] {
            const uint pid = isOwned(bus.bus(), serviceName) ? bus.brokerPid() : 0;
            return pid > 0 && pid != first;
        },
        10s));
    EXPECT_EQ(bus.callExtension(QStringLiteral("GetState")), QStringLiteral("(true,)"));
    const QString connections = bus.call(QStringLiteral("com.lexmira.ExtensionHost1.Connections"));
    EXPECT_EQ(connections.count(QStringLiteral("companion@lexmira.test")), 1)
        << connections.toStdString();
    EXPECT_TRUE(player.running());
}

} // namespace

} // namespace lexmira
