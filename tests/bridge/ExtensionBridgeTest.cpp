// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/ExtensionBridge.h"
#include "QtPrinters.h"
#include "support/ContextThread.h"
#include "support/DevExtensionPeer.h"
#include "support/TestSupport.h"
#include "util/Json.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QThread>

#include <algorithm>
#include <mutex>

namespace lexmira {

namespace {

using namespace std::chrono_literals;

const QString extensionId = QStringLiteral("com.lexmira.companion.ext");

// The context of calls whose answers belong to the test's own (main) thread.
QObject* here()
{
    return QCoreApplication::instance();
}

// What one call's completion delivered, and how often it was called.
struct Answer {
    int calls = 0;
    std::optional<bool> enabled;
    std::optional<ExtensionError> error;
};

ExtensionBridge::Completion recordInto(Answer& answer)
{
    return [&answer](std::optional<ExtensionError> error) {
        ++answer.calls;
        answer.error = std::move(error);
    };
}

ExtensionBridge::StateCompletion recordStateInto(Answer& answer)
{
    return [&answer](std::optional<bool> enabled, std::optional<ExtensionError> error) {
        ++answer.calls;
        answer.enabled = enabled;
        answer.error = std::move(error);
    };
}

bool answered(const Answer& answer)
{
    return test::waitUntil([&] { return answer.calls > 0; });
}

TEST(ExtensionBridge, GetStateAnswersWhetherTheExtensionIsEnabled)
{
    test::DevExtensionPeer peer;
    ASSERT_TRUE(peer.isServing());
    const auto bridge = ExtensionBridge::create();

    Answer enabled;
    bridge->getState(extensionId, here(), recordStateInto(enabled));
    ASSERT_TRUE(answered(enabled));
    EXPECT_EQ(enabled.enabled, true);
    EXPECT_FALSE(enabled.error);

    ASSERT_TRUE(peer.control({QStringLiteral("disable")}));
    Answer disabled;
    bridge->getState(extensionId, here(), recordStateInto(disabled));
    ASSERT_TRUE(answered(disabled));
    EXPECT_EQ(disabled.enabled, false);
    EXPECT_FALSE(disabled.error);
}

TEST(ExtensionBridge, APeerStartedDisabledAnswersFalse)
{
    test::DevExtensionPeer peer({QStringLiteral("--disabled")});
    ASSERT_TRUE(peer.isServing());
    Answer state;
    ExtensionBridge::create()->getState(extensionId, here(), recordStateInto(state));
    ASSERT_TRUE(answered(state));
    EXPECT_EQ(state.enabled, false);
}

TEST(ExtensionBridge, DispatchCarriesTheNameAndTheUserInfoAsOneJsonObject)
{
    test::DevExtensionPeer peer;
    ASSERT_TRUE(peer.isServing());
    Answer answer;
    ExtensionBridge::create()->dispatchMessage(
        QStringLiteral("oauthExchange"), extensionId,
        nlohmann::ordered_json{{"code", "c/1 é"}, {"codeChallenge", nullptr}}, here(),
        recordInto(answer));
    ASSERT_TRUE(answered(answer));
    EXPECT_FALSE(answer.error);

    const auto calls = peer.calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0]["method"], "DispatchMessage");
    EXPECT_EQ(calls[0]["name"], "oauthExchange");
    // Keys in order, "/" escaped, non-ASCII as UTF-8, null kept.
    EXPECT_EQ(calls[0]["userInfo"], "{\"code\":\"c\\/1 é\",\"codeChallenge\":null}");
}

TEST(ExtensionBridge, DispatchWithoutUserInfoSendsTheEmptyString)
{
    test::DevExtensionPeer peer;
    ASSERT_TRUE(peer.isServing());
    const auto bridge = ExtensionBridge::create();
    Answer none;
    bridge->dispatchMessage(QStringLiteral("openSafari"), extensionId, std::nullopt, here(),
                            recordInto(none));
    Answer empty;
    bridge->dispatchMessage(QStringLiteral("openSafari"), extensionId,
                            nlohmann::ordered_json::object(), here(), recordInto(empty));
    ASSERT_TRUE(answered(none));
    ASSERT_TRUE(answered(empty));

    const auto calls = peer.calls();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0]["userInfo"], "");
    EXPECT_EQ(calls[1]["userInfo"], "{}") << "an empty object is not the same as no user info";
}

TEST(ExtensionBridge, ShowPreferencesReachesThePeerWhichCanThenBecomeEnabled)
{
    test::DevExtensionPeer peer({QStringLiteral("--disabled"),
                                 QStringLiteral("--enable-after-preferences"),
                                 QStringLiteral("200")});
    ASSERT_TRUE(peer.isServing());
    const auto bridge = ExtensionBridge::create();
    Answer shown;
    bridge->showPreferences(extensionId, here(), recordInto(shown));
    ASSERT_TRUE(answered(shown));
    EXPECT_FALSE(shown.error);
    const auto calls = peer.calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0]["method"], "ShowPreferences");

    bool enabled = false;
    ASSERT_TRUE(test::waitUntil([&] {
        Answer state;
        bridge->getState(extensionId, here(), recordStateInto(state));
        test::waitUntil([&] { return state.calls > 0; });
        enabled = state.enabled.value_or(false);
        return enabled;
    }));
}

TEST(ExtensionBridge, AbsentExtensionIsTheServiceUnknownError)
{
    ASSERT_FALSE(test::DevExtensionPeer::isOwned(extensionId));
    const auto bridge = ExtensionBridge::create();
    Answer dispatch;
    bridge->dispatchMessage(QStringLiteral("oauthExchange"), extensionId, std::nullopt, here(),
                            recordInto(dispatch));
    Answer state;
    bridge->getState(extensionId, here(), recordStateInto(state));
    Answer preferences;
    bridge->showPreferences(extensionId, here(), recordInto(preferences));
    ASSERT_TRUE(answered(dispatch));
    ASSERT_TRUE(answered(state));
    ASSERT_TRUE(answered(preferences));

    for (const Answer* answer : {&dispatch, &state, &preferences}) {
        ASSERT_TRUE(answer->error);
        EXPECT_EQ(answer->error->name, QStringLiteral("org.freedesktop.DBus.Error.ServiceUnknown"));
        EXPECT_TRUE(answer->error->localizedDescription.contains(extensionId))
            << qPrintable(answer->error->localizedDescription);
    }
    EXPECT_FALSE(state.enabled);
}

TEST(ExtensionBridge, ThePeersOwnErrorMessageIsTheLocalizedDescription)
{
    test::DevExtensionPeer peer(
        {QStringLiteral("--fail-next-dispatch"), QStringLiteral("The browser is not running"),
         QStringLiteral("--fail-state"), QStringLiteral("no state today"),
         QStringLiteral("--fail-preferences"), QStringLiteral("no settings")});
    ASSERT_TRUE(peer.isServing());
    const auto bridge = ExtensionBridge::create();
    Answer failed;
    bridge->dispatchMessage(QStringLiteral("oauthExchange"), extensionId, std::nullopt, here(),
                            recordInto(failed));
    ASSERT_TRUE(answered(failed));
    ASSERT_TRUE(failed.error);
    EXPECT_EQ(failed.error->name, QStringLiteral("com.lexmira.Extension1.Error.Failed"));
    EXPECT_EQ(failed.error->localizedDescription, QStringLiteral("The browser is not running"));

    Answer next;
    bridge->dispatchMessage(QStringLiteral("oauthExchange"), extensionId, std::nullopt, here(),
                            recordInto(next));
    ASSERT_TRUE(answered(next));
    EXPECT_FALSE(next.error) << "only the next dispatch was to fail";

    Answer state;
    bridge->getState(extensionId, here(), recordStateInto(state));
    ASSERT_TRUE(answered(state));
    ASSERT_TRUE(state.error);
    EXPECT_EQ(state.error->localizedDescription, QStringLiteral("no state today"));
    EXPECT_FALSE(state.enabled);

    Answer preferences;
    bridge->showPreferences(extensionId, here(), recordInto(preferences));
    ASSERT_TRUE(answered(preferences));
    ASSERT_TRUE(preferences.error);
    EXPECT_EQ(preferences.error->localizedDescription, QStringLiteral("no settings"));
}

TEST(ExtensionBridge, APeerFailingEveryDispatchFailsEachOne)
{
    test::DevExtensionPeer peer({QStringLiteral("--fail-every-dispatch"), QStringLiteral("down")});
    ASSERT_TRUE(peer.isServing());
    const auto bridge = ExtensionBridge::create();
    for (int i = 0; i < 3; ++i) {
        Answer answer;
        bridge->dispatchMessage(QStringLiteral("openSafari"), extensionId, std::nullopt, here(),
                                recordInto(answer));
        ASSERT_TRUE(answered(answer));
        ASSERT_TRUE(answer.error);
        EXPECT_EQ(answer.error->localizedDescription, QStringLiteral("down"));
    }
    const auto calls = peer.calls();
    ASSERT_EQ(calls.size(), 3u);
    EXPECT_EQ(calls[2]["failedWith"], "down");
}

TEST(ExtensionBridge, AStateOfTheWrongTypeIsNoStateAndNoError)
{
    test::DevExtensionPeer peer({QStringLiteral("--wrong-state-type")});
    ASSERT_TRUE(peer.isServing());
    Answer state;
    ExtensionBridge::create()->getState(extensionId, here(), recordStateInto(state));
    ASSERT_TRUE(answered(state));
    EXPECT_FALSE(state.enabled);
    EXPECT_FALSE(state.error);
}

TEST(ExtensionBridge, ASilentPeerTimesOutWithNoReplyOnceAndBeforeItAnswers)
{
    test::DevExtensionPeer peer({QStringLiteral("--reply-delay"), QStringLiteral("3000")});
    ASSERT_TRUE(peer.isServing());
    const auto bridge = ExtensionBridge::create(300ms);
    QElapsedTimer clock;
    clock.start();
    Answer state;
    bridge->getState(extensionId, here(), recordStateInto(state));
    Answer dispatch;
    bridge->dispatchMessage(QStringLiteral("oauthExchange"), extensionId, std::nullopt, here(),
                            recordInto(dispatch));
    ASSERT_TRUE(answered(state));
    ASSERT_TRUE(answered(dispatch));
    EXPECT_LT(clock.elapsed(), 3000) << "the peer's late answer must not be what ended the call";
    ASSERT_TRUE(state.error);
    EXPECT_EQ(state.error->name, QStringLiteral("org.freedesktop.DBus.Error.NoReply"));
    EXPECT_FALSE(state.error->localizedDescription.isEmpty());
    ASSERT_TRUE(dispatch.error);
    EXPECT_EQ(dispatch.error->name, QStringLiteral("org.freedesktop.DBus.Error.NoReply"));

    // The late answers change nothing.
    test::spin(3500ms);
    EXPECT_EQ(state.calls, 1);
    EXPECT_EQ(dispatch.calls, 1);
}

// What one browser-name request delivered, and how often.
struct NameAnswer {
    int calls = 0;
    QString name;
};

ExtensionBridge::BrowserNameCompletion recordNameInto(NameAnswer& answer)
{
    return [&answer](QString name) {
        ++answer.calls;
        answer.name = std::move(name);
    };
}

QString browserNameOf(ExtensionBridge& bridge)
{
    NameAnswer answer;
    bridge.getBrowserName(extensionId, here(), recordNameInto(answer));
    EXPECT_TRUE(test::waitUntil([&] { return answer.calls > 0; }));
    return answer.name;
}

TEST(ExtensionBridge, TheBrowserNameIsThePeersProperty)
{
    test::DevExtensionPeer peer({QStringLiteral("--browser-name"), QStringLiteral("Chromium")});
    ASSERT_TRUE(peer.isServing());
    const auto bridge = ExtensionBridge::create();
    EXPECT_EQ(browserNameOf(*bridge), QStringLiteral("Chromium"));
    ASSERT_TRUE(peer.control({QStringLiteral("browser-name"), QStringLiteral("Firefox")}));
    EXPECT_EQ(browserNameOf(*bridge), QStringLiteral("Firefox"));
    ASSERT_TRUE(peer.control({QStringLiteral("browser-name"), QString()}));
    EXPECT_EQ(browserNameOf(*bridge), QString());
}

TEST(ExtensionBridge, NoPeerIsNoBrowserName)
{
    ASSERT_FALSE(test::DevExtensionPeer::isOwned(extensionId));
    const auto bridge = ExtensionBridge::create();
    NameAnswer answer;
    bridge->getBrowserName(extensionId, here(), recordNameInto(answer));
    EXPECT_EQ(answer.calls, 0) << "never from inside the call";
    ASSERT_TRUE(test::waitUntil([&] { return answer.calls > 0; }));
    EXPECT_EQ(answer.name, QString());
    test::spin(100ms);
    EXPECT_EQ(answer.calls, 1);
}

TEST(ExtensionBridge, ASilentPeerGivesNoBrowserNameWithinTheNamesOwnTimeOut)
{
    test::DevExtensionPeer peer({QStringLiteral("--browser-name"), QStringLiteral("Chromium"),
                                 QStringLiteral("--reply-delay"), QStringLiteral("3000")});
    ASSERT_TRUE(peer.isServing());
    const auto bridge = ExtensionBridge::create(); // the default, longer time-out
    QElapsedTimer clock;
    clock.start();
    NameAnswer answer;
    bridge->getBrowserName(extensionId, here(), recordNameInto(answer));
    ASSERT_TRUE(test::waitUntil([&] { return answer.calls > 0; }));
    EXPECT_LT(clock.elapsed(), 3000) << "the peer's late answer must not be what ended the call";
    EXPECT_GE(clock.elapsed(), ExtensionBridge::browserNameTimeout.count() - 50);
    EXPECT_EQ(answer.name, QString());
    test::spin(2500ms);
    EXPECT_EQ(answer.calls, 1);
}

TEST(ExtensionBridge, TheDefaultTimeOutIsBounded)
{
    EXPECT_GT(ExtensionBridge::defaultTimeout, 0ms);
    EXPECT_LE(ExtensionBridge::defaultTimeout, 10s);
}

TEST(ExtensionBridge, TheObjectPathComesFromTheIdentifierWithDashesAsUnderscores)
{
    const QString name = QStringLiteral("com.lexmira.test-peer.ext");
    test::DevExtensionPeer peer({}, name);
    ASSERT_TRUE(peer.isServing());

    // The path as the extension's side exports it, spelled out.
    auto call = QDBusMessage::createMethodCall(name, QStringLiteral("/com/lexmira/test_peer/ext"),
                                               QStringLiteral("com.lexmira.Extension1"),
                                               QStringLiteral("GetState"));
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call);
    ASSERT_EQ(reply.type(), QDBusMessage::ReplyMessage) << qPrintable(reply.errorMessage());
    EXPECT_EQ(reply.arguments().value(0), QVariant(true));

    Answer state;
    ExtensionBridge::create()->getState(name, here(), recordStateInto(state));
    ASSERT_TRUE(answered(state));
    EXPECT_EQ(state.enabled, true);
    EXPECT_FALSE(state.error);
}

TEST(ExtensionBridge, TheDefaultExtensionLivesAtItsContractedPath)
{
    test::DevExtensionPeer peer;
    ASSERT_TRUE(peer.isServing());
    auto call = QDBusMessage::createMethodCall(
        QStringLiteral("com.lexmira.companion.ext"), QStringLiteral("/com/lexmira/companion/ext"),
        QStringLiteral("com.lexmira.Extension1"), QStringLiteral("DispatchMessage"));
    call << QStringLiteral("openSafari") << QString();
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call);
    EXPECT_EQ(reply.type(), QDBusMessage::ReplyMessage) << qPrintable(reply.errorMessage());
}

TEST(ExtensionBridge, CompletionsNeverRunInsideTheCall)
{
    const auto bridge = ExtensionBridge::create();
    Answer state;
    bridge->getState(extensionId, here(), recordStateInto(state));
    Answer invalid;
    bridge->dispatchMessage(QStringLiteral("x"), extensionId,
                            nlohmann::ordered_json{{"code", std::string("\xff")}}, here(),
                            recordInto(invalid));
    EXPECT_EQ(state.calls, 0);
    EXPECT_EQ(invalid.calls, 0);
    ASSERT_TRUE(answered(state));
    ASSERT_TRUE(answered(invalid));
}

TEST(ExtensionBridge, UserInfoThatCannotBeEncodedIsAnErrorAndSendsNothing)
{
    test::DevExtensionPeer peer;
    ASSERT_TRUE(peer.isServing());
    Answer answer;
    ExtensionBridge::create()->dispatchMessage(
        QStringLiteral("oauthExchange"), extensionId,
        nlohmann::ordered_json{{"code", std::string("bad \xc3\x28 bytes")}}, here(),
        recordInto(answer));
    ASSERT_TRUE(answered(answer));
    ASSERT_TRUE(answer.error);
    EXPECT_FALSE(answer.error->localizedDescription.isEmpty());
    test::spin(100ms);
    EXPECT_TRUE(peer.calls().empty());
}

TEST(ExtensionBridge, AnIdentifierThatIsNoBusNameFailsWithoutSending)
{
    const auto bridge = ExtensionBridge::create();
    for (const QString& identifier :
         {QString(), QStringLiteral("not a name"), QStringLiteral("a..b"), QStringLiteral(".x")}) {
        Answer answer;
        bridge->getState(identifier, here(), recordStateInto(answer));
        ASSERT_TRUE(answered(answer)) << qPrintable(identifier);
        EXPECT_TRUE(answer.error) << qPrintable(identifier);
        EXPECT_EQ(answer.calls, 1);
    }
}

TEST(ExtensionBridge, CallsInFlightCompleteAfterTheBridgeIsGone)
{
    test::DevExtensionPeer peer({QStringLiteral("--reply-delay"), QStringLiteral("200")});
    ASSERT_TRUE(peer.isServing());
    Answer state;
    ExtensionBridge::create()->getState(extensionId, here(), recordStateInto(state));
    ASSERT_TRUE(answered(state));
    EXPECT_EQ(state.enabled, true);
}

// The threads the answers ran on. Thread-safe.
class ThreadsRan {
public:
    void ran()
    {
        const std::lock_guard lock(mutex_);
        threads_.push_back(QThread::currentThread());
    }
    std::vector<QThread*> threads() const
    {
        const std::lock_guard lock(mutex_);
        return threads_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<QThread*> threads_;
};

TEST(ExtensionBridge, EveryCompletionRunsOnTheThreadOfItsContext)
{
    test::DevExtensionPeer peer;
    ASSERT_TRUE(peer.isServing());
    const auto bridge = ExtensionBridge::create();
    test::ContextThread worker;
    ThreadsRan answers;
    const auto ran = [&answers](auto&&...) { answers.ran(); };
    bridge->getState(extensionId, worker.context(), ran);
    bridge->dispatchMessage(QStringLiteral("openSafari"), extensionId, std::nullopt,
                            worker.context(), ran);
    bridge->showPreferences(extensionId, worker.context(), ran);
    bridge->getBrowserName(extensionId, worker.context(), ran);
    // The one answer the bridge makes up itself travels the same way.
    bridge->dispatchMessage(QStringLiteral("x"), extensionId,
                            nlohmann::ordered_json{{"code", std::string("\xff")}}, worker.context(),
                            ran);

    ASSERT_TRUE(test::waitUntil([&] { return answers.threads().size() == 5; }));
    for (QThread* thread : answers.threads())
        EXPECT_EQ(thread, worker.thread());
}

TEST(ExtensionBridge, ACompletionWhoseContextIsGoneBeforeTheAnswerIsDropped)
{
    test::DevExtensionPeer peer({QStringLiteral("--reply-delay"), QStringLiteral("300")});
    ASSERT_TRUE(peer.isServing());
    const auto bridge = ExtensionBridge::create();

    auto context = std::make_unique<QObject>();
    Answer dropped;
    bridge->getState(extensionId, context.get(), recordStateInto(dropped));
    Answer droppedName;
    bridge->getBrowserName(extensionId, context.get(),
                           [&droppedName](QString) { ++droppedName.calls; });
    test::ContextThread worker;
    ThreadsRan answers;
    bridge->dispatchMessage(QStringLiteral("openSafari"), extensionId, std::nullopt,
                            worker.context(), [&answers](auto&&...) { answers.ran(); });
    context.reset();
    worker.destroyContext();

    // A call made at the same time with a living context is answered, so the others were too.
    Answer kept;
    bridge->getState(extensionId, here(), recordStateInto(kept));
    ASSERT_TRUE(answered(kept));
    test::spin(200ms);
    EXPECT_EQ(dropped.calls, 0);
    EXPECT_EQ(droppedName.calls, 0);
    EXPECT_TRUE(answers.threads().empty());
    const auto calls = peer.calls();
    EXPECT_EQ(std::count_if(calls.begin(), calls.end(),
                            [](const auto& call) { return call["method"] == "DispatchMessage"; }),
              1)
        << "the message went out all the same";
}

TEST(ExtensionBridge, WithoutAContextTheCompletionRunsWhereTheAnswerArrives)
{
    test::DevExtensionPeer peer;
    ASSERT_TRUE(peer.isServing());
    Answer answer;
    QThread* thread = nullptr;
    ExtensionBridge::create()->dispatchMessage(QStringLiteral("openSafari"), extensionId,
                                               std::nullopt, nullptr,
                                               [&](std::optional<ExtensionError> error) {
                                                   thread = QThread::currentThread();
                                                   recordInto(answer)(std::move(error));
                                               });
    EXPECT_EQ(answer.calls, 0);
    ASSERT_TRUE(answered(answer));
    EXPECT_FALSE(answer.error);
    EXPECT_EQ(thread, QThread::currentThread());
}

} // namespace

} // namespace lexmira
