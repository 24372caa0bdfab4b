// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "bridge/CompanionMessage.h"
#include "QtPrinters.h"
#include "SignInFixture.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QThread>

namespace lexmira {

namespace {

using namespace std::chrono_literals;

const QString extensionId = QStringLiteral("com.lexmira.companion.ext");

TEST(CompanionMessage, TheWireNameOfEachMessageIsItsCaseName)
{
    EXPECT_EQ(rawValue(CompanionMessage::oauthExchange), "oauthExchange");
    EXPECT_EQ(rawValue(CompanionMessage::oauthOpenLoginTab), "oauthOpenLoginTab");
    EXPECT_EQ(rawValue(CompanionMessage::openSafari), "openSafari");
}

class SendCompanionMessage : public ::testing::Test {
protected:
    test::SignInFixture fixture;
    // The sender, on the main thread.
    QObject sender;

    struct Reaction {
        int calls = 0;
        std::optional<ExtensionError> error;
        QThread* thread = nullptr;
    };

    void send(CompanionMessage message, std::optional<nlohmann::ordered_json> userInfo,
              std::optional<CompanionLogger> logger, Reaction& reaction)
    {
        sendCompanionMessage(fixture.bridge, extensionId, message, userInfo, fixture.skrivo, logger,
                             &sender, [&reaction](std::optional<ExtensionError> error) {
                                 ++reaction.calls;
                                 reaction.error = std::move(error);
                                 reaction.thread = QThread::currentThread();
                             });
    }
};

TEST_F(SendCompanionMessage, SendsTheWireNameAndThePayloadToTheExtension)
{
    Reaction reaction;
    send(CompanionMessage::openSafari, std::nullopt, CompanionLogger::openSafari, reaction);
    ASSERT_EQ(fixture.bridge.dispatches.size(), 1u);
    EXPECT_EQ(fixture.bridge.dispatches[0].name, QStringLiteral("openSafari"));
    EXPECT_EQ(fixture.bridge.dispatches[0].extensionIdentifier, extensionId);
    EXPECT_FALSE(fixture.bridge.dispatches[0].userInfo) << "no user info at all";
    ASSERT_TRUE(test::waitUntil([&] { return reaction.calls == 1; }));
}

TEST_F(SendCompanionMessage,
       AFailureRunsTheReactionOnTheMainThreadAndLogsOnceFromTheCompletionThread)
{
    fixture.bridge.answersFromWorker = true;
    fixture.bridge.dispatchError = ExtensionError{
        QStringLiteral("com.lexmira.Extension1.Error.Failed"), QStringLiteral("gone")};
    Reaction reaction;
    send(CompanionMessage::openSafari, std::nullopt, CompanionLogger::openSafari, reaction);
    ASSERT_TRUE(
        test::waitUntil([&] { return reaction.calls == 1 && fixture.logTransport->count() == 1; }));
    test::spin(50ms);

    EXPECT_EQ(reaction.calls, 1);
    EXPECT_EQ(reaction.thread, QThread::currentThread()) << "the reaction runs on the main thread";
    ASSERT_TRUE(reaction.error);
    EXPECT_EQ(reaction.error->localizedDescription, QStringLiteral("gone"));

    const auto sent = fixture.logTransport->sent();
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].thread, fixture.bridge.workerThread())
        << "the log post is made from the completion's own thread";
    const auto records = fixture.logRecords();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0]["logger"], "companion.openSafari");
    EXPECT_EQ(records[0]["level"], "ERROR");
    EXPECT_EQ(records[0]["message"], "Could not continue to extension: gone");
}

TEST_F(SendCompanionMessage, TheReactionIsScheduledNotRunInsideTheCompletion)
{
    fixture.bridge.dispatchError = ExtensionError{QStringLiteral("e"), QStringLiteral("d")};
    Reaction reaction;
    bool reactionRanBeforeLog = false;
    sendCompanionMessage(fixture.bridge, extensionId, CompanionMessage::openSafari, std::nullopt,
                         fixture.skrivo, CompanionLogger::openSafari, &sender,
                         [&](std::optional<ExtensionError>) {
                             ++reaction.calls;
                             reactionRanBeforeLog = fixture.logTransport->count() == 0;
                         });
    ASSERT_TRUE(test::waitUntil([&] { return reaction.calls == 1; }));
    EXPECT_FALSE(reactionRanBeforeLog)
        << "the completion posts the log before the main queue runs the reaction";
}

TEST_F(SendCompanionMessage, AReactionWhoseSenderIsGoneIsDroppedButTheFailureIsStillLogged)
{
    fixture.bridge.answersFromWorker = true;
    fixture.bridge.dispatchError = ExtensionError{QStringLiteral("e"), QStringLiteral("gone")};
    auto gone = std::make_unique<QObject>();
    Reaction reaction;
    sendCompanionMessage(fixture.bridge, extensionId, CompanionMessage::openSafari, std::nullopt,
                         fixture.skrivo, CompanionLogger::openSafari, gone.get(),
                         [&reaction](std::optional<ExtensionError>) { ++reaction.calls; });
    gone.reset();
    ASSERT_TRUE(test::waitUntil([&] { return fixture.logTransport->count() == 1; }));
    test::spin(50ms);
    EXPECT_EQ(reaction.calls, 0);
}

TEST_F(SendCompanionMessage, SuccessRunsTheReactionWithNoErrorAndLogsNothing)
{
    Reaction reaction;
    send(CompanionMessage::openSafari, std::nullopt, CompanionLogger::openSafari, reaction);
    ASSERT_TRUE(test::waitUntil([&] { return reaction.calls == 1; }));
    test::spin(50ms);
    EXPECT_FALSE(reaction.error);
    EXPECT_EQ(fixture.logTransport->count(), 0u);
}

TEST_F(SendCompanionMessage, WithoutALoggerAFailureIsNotLogged)
{
    fixture.bridge.dispatchError = ExtensionError{QStringLiteral("e"), QStringLiteral("d")};
    Reaction reaction;
    send(CompanionMessage::oauthOpenLoginTab, std::nullopt, std::nullopt, reaction);
    ASSERT_TRUE(test::waitUntil([&] { return reaction.calls == 1; }));
    test::spin(50ms);
    EXPECT_TRUE(reaction.error);
    EXPECT_EQ(fixture.logTransport->count(), 0u);
}

TEST_F(SendCompanionMessage, AFailedDispatchIsNotRetried)
{
    fixture.bridge.dispatchError = ExtensionError{QStringLiteral("e"), QStringLiteral("d")};
    Reaction reaction;
    send(CompanionMessage::oauthExchange, nlohmann::ordered_json::object(),
         CompanionLogger::oauthHandleUrl, reaction);
    ASSERT_TRUE(test::waitUntil([&] { return reaction.calls == 1; }));
    test::spin(100ms);
    EXPECT_EQ(fixture.bridge.dispatches.size(), 1u);
    EXPECT_EQ(fixture.logTransport->count(), 1u);
}

} // namespace

} // namespace lexmira
