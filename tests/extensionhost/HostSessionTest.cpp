// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "extensionhost/HostSession.h"
#include "extensionhost/AsyncKeychain.h"
#include "extensionhost/HostProtocol.h"
#include "fakes/FakeBrokerLink.h"
#include "fakes/MemorySharedSuite.h"
#include "fakes/ScriptedKeychainItems.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>

namespace lexmira {

namespace {

using namespace std::chrono_literals;
using Json = nlohmann::ordered_json;

// Keychain items whose calls wait until the test opens the gate.
class GatedKeychainItems final : public KeychainItems {
public:
    Status add(const Query&) override { return pass(); }
    Status copyMatching(const Query&, QVariant*) override { return pass(); }
    Status remove(const Query&) override { return pass(); }

    void open()
    {
        std::lock_guard lock(mutex_);
        open_ = true;
        changed_.notify_all();
    }

private:
    Status pass()
    {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return open_; });
        return itemNotFound;
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    bool open_ = false;
};

class HostSessionTest : public ::testing::Test {
protected:
    explicit HostSessionTest(
        std::shared_ptr<KeychainItems> keychainItems = std::make_shared<ScriptedKeychainItems>())
        : items(keychainItems)
        , keychain(std::move(keychainItems))
        , session(BrokerLink::Peer{QStringLiteral("chromium"), QStringLiteral("Chromium"),
                                   QStringLiteral("abcdefghijklmnopabcdefghijklmnop")},
                  {suite, &keychain, &broker})
    {
        QObject::connect(&session, &HostSession::frameReady, [this](const QByteArray& bytes) {
            raw.push_back(bytes);
            frames.push_back(Json::parse(bytes.toStdString()));
        });
        QObject::connect(&session, &HostSession::finished,
                         [this](const QString& reason) { finishedReason = reason; });
    }

    void send(const Json& request) { sendBytes(QByteArray::fromStdString(request.dump())); }
    void sendBytes(const QByteArray& bytes) { session.receive(bytes); }

    // Waits for the next frame the session sends and takes it.
    Json next()
    {
        if (!test::waitUntil([this] { return taken < frames.size(); }, 5s))
            return Json();
        return frames[taken++];
    }

    void sayHello()
    {
        send({{"type", "hello"}, {"version", 1}});
        ASSERT_EQ(next().value("type", ""), "welcome");
    }

    Json errorFor(std::int64_t id, const std::string& message)
    {
        return {{"type", "error"}, {"id", id}, {"message", message}};
    }

    std::shared_ptr<KeychainItems> items;
    std::shared_ptr<MemorySharedSuite> suite = std::make_shared<MemorySharedSuite>();
    AsyncKeychain keychain;
    FakeBrokerLink broker;
    HostSession session;
    std::vector<QByteArray> raw;
    std::vector<Json> frames;
    std::size_t taken = 0;
    std::optional<QString> finishedReason;
};

ScriptedKeychainItems& scripted(const std::shared_ptr<KeychainItems>& items)
{
    return static_cast<ScriptedKeychainItems&>(*items);
}

// Greeting.

TEST_F(HostSessionTest, GreetsTheExtensionWithTheBrowsersNameOnceTheBrokerCountsIt)
{
    send({{"type", "hello"}, {"version", 1}});
    ASSERT_EQ(broker.attached.size(), 1u);
    EXPECT_EQ(broker.attached.front().browserName, QStringLiteral("Chromium"));
    EXPECT_TRUE(frames.empty()) << "the welcome waits for the broker";
    next();
    EXPECT_EQ(raw.back(),
              QByteArrayLiteral(R"({"type":"welcome","version":1,"browser":"Chromium"})"));
    EXPECT_TRUE(session.hasSaidHello());
}

TEST_F(HostSessionTest, ASecondHelloIsWelcomedWithoutCountingTheConnectionTwice)
{
    sayHello();
    send({{"type", "hello"}, {"version", 1}});
    EXPECT_EQ(next().value("type", ""), "welcome");
    EXPECT_EQ(broker.attached.size(), 1u);
}

TEST_F(HostSessionTest, AnotherProtocolVersionIsRefusedAndEndsTheConnection)
{
    send({{"type", "hello"}, {"version", 2}});
    EXPECT_EQ(next(), (Json{{"type", "error"},
                            {"id", nullptr},
                            {"message", "This host speaks protocol version 1 only."}}));
    EXPECT_TRUE(finishedReason);
    EXPECT_TRUE(broker.attached.empty());
}

TEST_F(HostSessionTest, ABrokerThatCannotBeReachedEndsTheConnection)
{
    broker.attachError = QStringLiteral("no bus");
    send({{"type", "hello"}, {"version", 1}});
    const Json error = next();
    EXPECT_EQ(error.value("type", ""), "error");
    EXPECT_EQ(error.value("message", ""), "The Lexmira broker cannot be reached: no bus");
    EXPECT_TRUE(finishedReason);
}

TEST_F(HostSessionTest, ARequestBeforeHelloIsAnsweredWithAnError)
{
    send({{"type", "suite.get"}, {"id", 7}, {"key", "userInfo"}});
    EXPECT_EQ(next(), errorFor(7, "Say hello first."));
    EXPECT_FALSE(finishedReason);
}

// Input the session cannot serve.

TEST_F(HostSessionTest, BytesThatAreNotJsonEndTheConnection)
{
    sayHello();
    sendBytes(QByteArrayLiteral("{\"type\":\"suite.get\",\"id\":1,"));
    EXPECT_EQ(finishedReason, QStringLiteral("a frame is not JSON"));
    EXPECT_EQ(broker.detachCount, 1);
    sendBytes(
        QByteArray::fromStdString(Json{{"type", "suite.get"}, {"id", 2}, {"key", "k"}}.dump()));
    EXPECT_EQ(frames.size(), 1u) << "nothing is answered after the end";
}

TEST_F(HostSessionTest, BytesThatAreNotUtf8EndTheConnection)
{
    sayHello();
    sendBytes(QByteArrayLiteral("{\"type\":\"suite.get\",\"id\":1,\"key\":\"\xff\xfe\"}"));
    EXPECT_EQ(finishedReason, QStringLiteral("a frame is not JSON"));
}

TEST_F(HostSessionTest, JsonThatIsNotAnObjectEndsTheConnection)
{
    sayHello();
    sendBytes(QByteArrayLiteral("[1,2,3]"));
    EXPECT_EQ(finishedReason, QStringLiteral("a frame is not a JSON object"));
}

TEST_F(HostSessionTest, ARequestWithoutAnIdEndsTheConnection)
{
    sayHello();
    send({{"type", "suite.get"}, {"key", "userInfo"}});
    EXPECT_TRUE(finishedReason);
}

TEST_F(HostSessionTest, AnIdThatIsNotAnIntegerEndsTheConnection)
{
    for (const Json& id : {Json("1"), Json(1.5), Json(true), Json(nullptr)}) {
        FakeBrokerLink otherBroker;
        HostSession other(BrokerLink::Peer{}, {suite, &keychain, &otherBroker});
        std::optional<QString> reason;
        QObject::connect(&other, &HostSession::finished, [&](const QString& why) { reason = why; });
        other.receive(QByteArray::fromStdString(Json{{"type", "suite.get"}, {"id", id}}.dump()));
        EXPECT_EQ(reason, QStringLiteral("a request's id is not an integer")) << id.dump();
    }
}

TEST_F(HostSessionTest, AnUnknownTypeIsAnsweredWithAnError)
{
    sayHello();
    send({{"type", "suite.erase"}, {"id", 3}, {"key", "userInfo"}});
    EXPECT_EQ(next(), errorFor(3, "Unknown request type \"suite.erase\"."));
    EXPECT_FALSE(finishedReason);
}

TEST_F(HostSessionTest, AnUnknownTypeWithoutAnIdEndsTheConnection)
{
    sayHello();
    send({{"type", "goodbye"}});
    EXPECT_TRUE(finishedReason);
}

TEST_F(HostSessionTest, AMissingOrWrongTypedTypeIsAnsweredWithAnErrorWhenThereIsAnId)
{
    sayHello();
    send({{"id", 4}});
    EXPECT_EQ(next(), errorFor(4, "The request has no type."));
    send({{"type", 12}, {"id", 5}});
    EXPECT_EQ(next(), errorFor(5, "The request has no type."));
    EXPECT_FALSE(finishedReason);
}

TEST_F(HostSessionTest, AMissingOrWrongTypedKeyIsAnsweredWithAnError)
{
    sayHello();
    const std::string message = "A suite request needs \"key\": a text of 1 to 80 bytes.";
    send({{"type", "suite.get"}, {"id", 1}});
    EXPECT_EQ(next(), errorFor(1, message));
    send({{"type", "suite.get"}, {"id", 2}, {"key", 42}});
    EXPECT_EQ(next(), errorFor(2, message));
    send({{"type", "suite.observe"}, {"id", 3}, {"key", ""}});
    EXPECT_EQ(next(), errorFor(3, message));
    send({{"type", "suite.set"}, {"id", 4}, {"key", nullptr}, {"data", nullptr}});
    EXPECT_EQ(next(), errorFor(4, message));
    EXPECT_FALSE(finishedReason);
}

TEST_F(HostSessionTest, AKeyOfTheLimitIsTakenAndOneByteMoreIsNot)
{
    sayHello();
    const std::string longest(HostProtocol::maxKeyBytes, 'k');
    send({{"type", "suite.set"}, {"id", 1}, {"key", longest}, {"data", "AA=="}});
    EXPECT_EQ(next(), (Json{{"type", "result"}, {"id", 1}}));
    EXPECT_EQ(suite->data(QString::fromStdString(longest)), QByteArray(1, '\0'));
    send({{"type", "suite.set"}, {"id", 2}, {"key", longest + "k"}, {"data", "AA=="}});
    EXPECT_EQ(next().value("type", ""), "error");
}

// The shared suite.

TEST_F(HostSessionTest, SuiteValuesAreStoredAndReadAsBase64)
{
    sayHello();
    send({{"type", "suite.set"}, {"id", 1}, {"key", "userInfo"}, {"data", "W251bGxd"}});
    EXPECT_EQ(next(), (Json{{"type", "result"}, {"id", 1}}));
    EXPECT_EQ(suite->data(QStringLiteral("userInfo")), QByteArrayLiteral("[null]"));

    suite->setData(QByteArrayLiteral("\x00\xff\x10"), QStringLiteral("companionContainerId"));
    send({{"type", "suite.get"}, {"id", 2}, {"key", "companionContainerId"}});
    EXPECT_EQ(next(), (Json{{"type", "result"}, {"id", 2}, {"data", "AP8Q"}}));

    send({{"type", "suite.get"}, {"id", 3}, {"key", "missing"}});
    EXPECT_EQ(next(), (Json{{"type", "result"}, {"id", 3}, {"data", nullptr}}));
}

TEST_F(HostSessionTest, SuiteSetWithNullRemovesTheKey)
{
    suite->setData(QByteArrayLiteral("[true]"), QStringLiteral("message.oauthOpenLoginTabMessage"));
    sayHello();
    send({{"type", "suite.set"},
          {"id", 1},
          {"key", "message.oauthOpenLoginTabMessage"},
          {"data", nullptr}});
    EXPECT_EQ(next(), (Json{{"type", "result"}, {"id", 1}}));
    EXPECT_FALSE(suite->data(QStringLiteral("message.oauthOpenLoginTabMessage")));
}

TEST_F(HostSessionTest, DataThatIsNotBase64OrMissingIsAnsweredWithAnErrorAndStoresNothing)
{
    suite->setData(QByteArrayLiteral("kept"), QStringLiteral("k"));
    sayHello();
    send({{"type", "suite.set"}, {"id", 1}, {"key", "k"}, {"data", "not base64!"}});
    EXPECT_EQ(next(), errorFor(1, "\"data\" is not base64."));
    send({{"type", "suite.set"}, {"id", 2}, {"key", "k"}});
    EXPECT_EQ(next().value("type", ""), "error");
    send({{"type", "suite.set"}, {"id", 3}, {"key", "k"}, {"data", 5}});
    EXPECT_EQ(next().value("type", ""), "error");
    EXPECT_EQ(suite->data(QStringLiteral("k")), QByteArrayLiteral("kept"));
}

TEST_F(HostSessionTest, EveryChangeOfAnObservedKeyIsTold)
{
    sayHello();
    send({{"type", "suite.observe"}, {"id", 1}, {"key", "userInfo"}});
    EXPECT_EQ(next(), (Json{{"type", "result"}, {"id", 1}}));
    send({{"type", "suite.observe"}, {"id", 2}, {"key", "userInfo"}});
    EXPECT_EQ(next(), (Json{{"type", "result"}, {"id", 2}}));
    EXPECT_EQ(suite->observerCount(), 1u) << "observing twice is observing once";

    suite->setData(QByteArrayLiteral("[1]"), QStringLiteral("userInfo"));
    suite->setData(QByteArrayLiteral("[2]"), QStringLiteral("other"));
    suite->setData(std::nullopt, QStringLiteral("userInfo"));
    EXPECT_EQ(next(), (Json{{"type", "suite.changed"}, {"key", "userInfo"}}));
    EXPECT_EQ(next(), (Json{{"type", "suite.changed"}, {"key", "userInfo"}}));
    test::spin(50ms);
    EXPECT_EQ(frames.size(), taken);
}

TEST_F(HostSessionTest, AtMostTheLimitOfKeysIsObserved)
{
    sayHello();
    for (std::size_t i = 0; i < HostProtocol::maxObservedKeys; ++i) {
        send({{"type", "suite.observe"}, {"id", i}, {"key", "key" + std::to_string(i)}});
        ASSERT_EQ(next().value("type", ""), "result");
    }
    send({{"type", "suite.observe"}, {"id", 1000}, {"key", "one.more"}});
    EXPECT_EQ(next(), errorFor(1000, "Too many keys are observed on this connection."));
    EXPECT_EQ(session.observedKeys(), HostProtocol::maxObservedKeys);
}

TEST_F(HostSessionTest, EndingStopsObservingAndDetachesFromTheBroker)
{
    sayHello();
    send({{"type", "suite.observe"}, {"id", 1}, {"key", "userInfo"}});
    next();
    session.finish(QStringLiteral("test"));
    EXPECT_EQ(suite->observerCount(), 0u);
    EXPECT_EQ(broker.detachCount, 1);
    suite->setData(QByteArrayLiteral("[1]"), QStringLiteral("userInfo"));
    test::spin(50ms);
    EXPECT_EQ(frames.size(), taken);
}

TEST_F(HostSessionTest, AValueTooLargeForAFrameIsRefusedNotCut)
{
    sayHello();
    suite->setData(QByteArray(qsizetype(HostProtocol::maxFrameSize) * 3 / 4, 'v'),
                   QStringLiteral("big"));
    send({{"type", "suite.get"}, {"id", 1}, {"key", "big"}});
    EXPECT_EQ(next(), errorFor(1, "The value is too large to send."));
    suite->setData(QByteArray(700'000, 'v'), QStringLiteral("big"));
    send({{"type", "suite.get"}, {"id", 2}, {"key", "big"}});
    EXPECT_EQ(next().value("type", ""), "result");
    EXPECT_LE(std::size_t(raw.back().size()), HostProtocol::maxFrameSize);
}

// The keychain.

TEST_F(HostSessionTest, KeychainGetAnswersTheStatusAndTheData)
{
    scripted(items).copyResult = QByteArrayLiteral("secret");
    sayHello();
    send({{"type", "keychain.get"}, {"id", 1}, {"account", "token"}, {"persistentRef", false}});
    EXPECT_EQ(next(), (Json{{"type", "result"}, {"id", 1}, {"status", 0}, {"data", "c2VjcmV0"}}));
    ASSERT_EQ(scripted(items).calls.size(), 1u);
    const auto& query = scripted(items).calls.front().query;
    EXPECT_EQ(query.at(KeychainItems::Key::account).toString(), QStringLiteral("token"));
    EXPECT_TRUE(query.at(KeychainItems::Key::synchronizable).toBool());
    EXPECT_TRUE(query.contains(KeychainItems::Key::returnData));
}

TEST_F(HostSessionTest, KeychainGetOfAPersistentReferenceAsksForOne)
{
    scripted(items).copyResult = QByteArrayLiteral("/org/freedesktop/secrets/1");
    sayHello();
    send({{"type", "keychain.get"}, {"id", 1}, {"account", "token"}, {"persistentRef", true}});
    EXPECT_EQ(next().value("status", 1), 0);
    EXPECT_TRUE(
        scripted(items).calls.front().query.contains(KeychainItems::Key::returnPersistentRef));
}

TEST_F(HostSessionTest, KeychainGetOfAMissingItemAnswersNotFound)
{
    scripted(items).copyStatus = KeychainItems::itemNotFound;
    sayHello();
    send({{"type", "keychain.get"}, {"id", 1}, {"account", "token"}, {"persistentRef", false}});
    EXPECT_EQ(next(), (Json{{"type", "result"}, {"id", 1}, {"status", -25300}, {"data", nullptr}}));
}

TEST_F(HostSessionTest, KeychainSetDeletesThenAddsAndAnswersTheAddsStatus)
{
    scripted(items).addStatus = KeychainItems::duplicateItem;
    sayHello();
    send({{"type", "keychain.set"}, {"id", 1}, {"account", "token"}, {"data", "c2VjcmV0"}});
    EXPECT_EQ(next(), (Json{{"type", "result"}, {"id", 1}, {"status", -25299}, {"data", nullptr}}));
    ASSERT_EQ(scripted(items).calls.size(), 2u);
    EXPECT_EQ(scripted(items).calls[0].operation, "remove");
    EXPECT_EQ(scripted(items).calls[1].operation, "add");
    EXPECT_EQ(scripted(items).calls[1].query.at(KeychainItems::Key::valueData).toByteArray(),
              QByteArrayLiteral("secret"));
}

TEST_F(HostSessionTest, KeychainSetWithNullOnlyDeletes)
{
    sayHello();
    send({{"type", "keychain.set"}, {"id", 1}, {"account", "token"}, {"data", nullptr}});
    EXPECT_EQ(next().value("status", 1), 0);
    ASSERT_EQ(scripted(items).calls.size(), 1u);
    EXPECT_EQ(scripted(items).calls[0].operation, "remove");
}

TEST_F(HostSessionTest, KeychainDeleteAnswersItsStatus)
{
    scripted(items).removeStatus = KeychainItems::itemNotFound;
    sayHello();
    send({{"type", "keychain.delete"}, {"id", 9}, {"account", "token"}});
    EXPECT_EQ(next(), (Json{{"type", "result"}, {"id", 9}, {"status", -25300}, {"data", nullptr}}));
}

TEST_F(HostSessionTest, AKeychainRequestWithoutAccountOrWithBadFieldsIsAnsweredWithAnError)
{
    sayHello();
    send({{"type", "keychain.delete"}, {"id", 1}});
    EXPECT_EQ(next().value("type", ""), "error");
    send({{"type", "keychain.get"}, {"id", 2}, {"account", "a"}, {"persistentRef", "yes"}});
    EXPECT_EQ(next().value("type", ""), "error");
    send({{"type", "keychain.set"}, {"id", 3}, {"account", "a"}, {"data", "%%%"}});
    EXPECT_EQ(next().value("type", ""), "error");
    send({{"type", "keychain.set"},
          {"id", 4},
          {"account", std::string(1025, 'a')},
          {"data", nullptr}});
    EXPECT_EQ(next().value("type", ""), "error");
    EXPECT_TRUE(scripted(items).calls.empty());
}

class GatedKeychainTest : public HostSessionTest {
protected:
    GatedKeychainTest()
        : HostSessionTest(std::make_shared<GatedKeychainItems>())
    {
    }
    ~GatedKeychainTest() override { static_cast<GatedKeychainItems&>(*items).open(); }
};

TEST_F(GatedKeychainTest, KeychainRequestsWaitingAreBoundedAndTheRestAnsweredLater)
{
    sayHello();
    const auto limit = HostProtocol::maxKeychainRequestsInFlight;
    for (std::size_t i = 0; i <= limit; ++i)
        send({{"type", "keychain.delete"}, {"id", i}, {"account", "a"}});
    EXPECT_EQ(session.keychainRequestsInFlight(), limit);
    EXPECT_EQ(next(), errorFor(std::int64_t(limit),
                               "Too many keychain requests are waiting; try again later."));
    static_cast<GatedKeychainItems&>(*items).open();
    for (std::size_t i = 0; i < limit; ++i) {
        const Json result = next();
        EXPECT_EQ(result.value("id", -1), std::int64_t(i)) << "answered in order";
        EXPECT_EQ(result.value("status", 0), -25300);
    }
    EXPECT_EQ(session.keychainRequestsInFlight(), 0u);
}

// Messages from the companion.

TEST_F(HostSessionTest, AMessageReachesTheExtensionAsADispatchFrame)
{
    sayHello();
    const auto answer = broker.dispatch(QStringLiteral("oauthExchange"),
                                        QStringLiteral(R"({"code":"c\/1","codeChallenge":null})"));
    ASSERT_TRUE(test::waitUntil([&] { return frames.size() > taken; }));
    EXPECT_EQ(raw.back(), QByteArrayLiteral(R"({"type":"dispatch","id":1,"name":"oauthExchange",)"
                                            R"("userInfo":{"code":"c/1","codeChallenge":null}})"));
    next();
    EXPECT_FALSE(*answer);
    send({{"type", "reply"}, {"id", 1}, {"error", nullptr}});
    ASSERT_TRUE(*answer);
    EXPECT_EQ(**answer, std::nullopt);
}

TEST_F(HostSessionTest, AMessageWithoutUserInfoCarriesNull)
{
    sayHello();
    broker.dispatch(QStringLiteral("openSafari"), QString());
    EXPECT_EQ(
        next(),
        (Json{{"type", "dispatch"}, {"id", 1}, {"name", "openSafari"}, {"userInfo", nullptr}}));
}

TEST_F(HostSessionTest, AReplyWithAnErrorTextFailsTheMessageWithThatText)
{
    sayHello();
    const auto answer = broker.dispatch(QStringLiteral("oauthExchange"), QString());
    next();
    send({{"type", "reply"}, {"id", 1}, {"error", "Sign-in failed: code expired"}});
    ASSERT_TRUE(*answer);
    EXPECT_EQ(**answer, QStringLiteral("Sign-in failed: code expired"));
    EXPECT_EQ(session.dispatchesInFlight(), 0u);
}

TEST_F(HostSessionTest, AReplyWithAWrongTypedErrorIsAnsweredWithAnErrorAndKeepsTheMessageWaiting)
{
    sayHello();
    const auto answer = broker.dispatch(QStringLiteral("oauthExchange"), QString());
    next();
    send({{"type", "reply"}, {"id", 1}, {"error", 5}});
    EXPECT_EQ(next(), errorFor(1, "A reply needs \"error\": null or a text."));
    EXPECT_FALSE(*answer);
    send({{"type", "reply"}, {"id", 1}});
    EXPECT_EQ(next().value("type", ""), "error");
    EXPECT_EQ(session.dispatchesInFlight(), 1u);
}

TEST_F(HostSessionTest, AReplyToNoMessageIsAnsweredWithAnError)
{
    sayHello();
    send({{"type", "reply"}, {"id", 41}, {"error", nullptr}});
    EXPECT_EQ(next(), errorFor(41, "No message is waiting for a reply with this id."));
}

TEST_F(HostSessionTest, AMessageWithoutReplyFailsAfterTheReplyTime)
{
    sayHello();
    const auto answer = broker.dispatch(QStringLiteral("oauthExchange"), QString());
    next();
    test::spin(HostProtocol::replyTimeout - 500ms);
    EXPECT_FALSE(*answer);
    ASSERT_TRUE(test::waitUntil([&] { return answer->has_value(); }, 2s));
    EXPECT_EQ(**answer, QStringLiteral("The extension did not answer within 4 seconds."));
    send({{"type", "reply"}, {"id", 1}, {"error", nullptr}});
    EXPECT_EQ(next().value("type", ""), "error") << "a late reply finds no message";
}

TEST_F(HostSessionTest, MessagesWaitingForTheirReplyAreBounded)
{
    sayHello();
    for (std::size_t i = 0; i < HostProtocol::maxDispatchesInFlight; ++i)
        broker.dispatch(QStringLiteral("oauthExchange"), QString());
    const auto refused = broker.dispatch(QStringLiteral("oauthExchange"), QString());
    ASSERT_TRUE(*refused);
    EXPECT_EQ(**refused, QStringLiteral("Too many messages are waiting for the extension."));
    EXPECT_EQ(session.dispatchesInFlight(), HostProtocol::maxDispatchesInFlight);
}

TEST_F(HostSessionTest, AMessageBeforeHelloFails)
{
    const auto answer = broker.dispatch(QStringLiteral("oauthExchange"), QString());
    ASSERT_TRUE(*answer);
    EXPECT_EQ(**answer, QStringLiteral("The extension is not connected."));
    EXPECT_TRUE(frames.empty());
}

TEST_F(HostSessionTest, UserInfoThatIsNotAJsonObjectFailsTheMessage)
{
    sayHello();
    for (const auto& userInfo : {QStringLiteral("[1]"), QStringLiteral("{"), QStringLiteral("7")}) {
        const auto answer = broker.dispatch(QStringLiteral("oauthExchange"), userInfo);
        ASSERT_TRUE(*answer);
        EXPECT_EQ(**answer, QStringLiteral("The message's user info is not a JSON object."));
    }
    EXPECT_EQ(frames.size(), taken);
}

TEST_F(HostSessionTest, EndingFailsTheMessagesWaitingForTheirReply)
{
    sayHello();
    const auto answer = broker.dispatch(QStringLiteral("oauthExchange"), QString());
    next();
    sendBytes(QByteArrayLiteral("not json"));
    ASSERT_TRUE(*answer);
    EXPECT_EQ(**answer, QStringLiteral("The extension's connection has ended."));
    EXPECT_EQ(broker.detachCount, 1);
}

} // namespace

} // namespace lexmira
