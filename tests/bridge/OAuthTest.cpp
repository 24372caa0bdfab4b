// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "QtPrinters.h"
#include "SignInFixture.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QThread>

namespace lexmira {

namespace {

using namespace std::chrono_literals;

const QString validUrl = QStringLiteral("lexmira.extension://oauth?code=c0de&code_challenge=ch4l");
const Alert failureAlert{QStringLiteral("Lexmira encountered a problem"),
                         QStringLiteral("Please open Safari to continue using Lexmira."),
                         Alert::Style::critical,
                         {QStringLiteral("OK")}};

class OAuthTest : public ::testing::Test {
protected:
    test::SignInFixture fixture;
    std::unique_ptr<OAuth> oauth = fixture.makeOAuth();

    void failDispatches(const QString& description = QStringLiteral("The browser is not running"))
    {
        fixture.bridge.dispatchError =
            ExtensionError{QStringLiteral("com.lexmira.Extension1.Error.Failed"), description};
    }

    // Lets every answer, reaction and alert of the requests so far happen.
    void settle() { test::spin(50ms); }
};

TEST_F(OAuthTest, StartsWithTheFieldsItWasGiven)
{
    EXPECT_TRUE(oauth->shouldAutoOpenLoginTab);
    EXPECT_EQ(oauth->extensionBundleIdentifier, "com.lexmira.companion.ext");
    EXPECT_EQ(oauth->skrivo.sessionId(), fixture.skrivo.sessionId());
    EXPECT_FALSE(fixture.makeOAuth(false)->shouldAutoOpenLoginTab);
}

TEST_F(OAuthTest, AValidCallbackIsStoredThenSentWithTheCodeAndTheChallenge)
{
    std::optional<QByteArray> storedWhenSent;
    fixture.bridge.onDispatch = [&](const auto&) {
        storedWhenSent = fixture.stored("message.oauthExchangeMessage");
    };
    oauth->handleGetURL(validUrl);

    EXPECT_EQ(fixture.stored("message.oauthExchangeMessage"),
              QByteArray(R"([{"code":"c0de","codeChallenge":"ch4l"}])"));
    EXPECT_EQ(storedWhenSent, fixture.stored("message.oauthExchangeMessage"))
        << "the record is in place before the message goes";
    ASSERT_EQ(fixture.bridge.dispatches.size(), 1u);
    const auto& dispatch = fixture.bridge.dispatches[0];
    EXPECT_EQ(dispatch.name, QStringLiteral("oauthExchange"));
    EXPECT_EQ(dispatch.extensionIdentifier, QStringLiteral("com.lexmira.companion.ext"));
    ASSERT_TRUE(dispatch.userInfo);
    EXPECT_EQ(Json::encode(*dispatch.userInfo),
              QByteArray(R"({"code":"c0de","codeChallenge":"ch4l"})"));

    settle();
    EXPECT_TRUE(fixture.alerts.alerts.empty());
    EXPECT_EQ(fixture.logTransport->count(), 0u);
}

TEST_F(OAuthTest, AnInvalidCallbackStillSendsTheExchangeWithNullsAndStoresNoMessage)
{
    fixture.container->setRaw(QStringLiteral("message.oauthExchangeMessage"),
                              R"([{"code":"old","codeChallenge":"old"}])");
    oauth->handleGetURL(QStringLiteral("lexmira.extension://oauth/extra?code=a&code_challenge=b"));

    EXPECT_EQ(fixture.stored("message.oauthExchangeMessage"), QByteArray("[null]"));
    ASSERT_EQ(fixture.bridge.dispatches.size(), 1u);
    EXPECT_EQ(fixture.bridge.dispatches[0].name, QStringLiteral("oauthExchange"));
    ASSERT_TRUE(fixture.bridge.dispatches[0].userInfo);
    EXPECT_EQ(Json::encode(*fixture.bridge.dispatches[0].userInfo),
              QByteArray(R"({"code":null,"codeChallenge":null})"));
}

TEST_F(OAuthTest, ARequestWithoutUrlTextIsAnInvalidCallback)
{
    oauth->handleGetURL(std::nullopt);
    EXPECT_EQ(fixture.stored("message.oauthExchangeMessage"), QByteArray("[null]"));
    ASSERT_EQ(fixture.bridge.dispatches.size(), 1u);
    EXPECT_EQ(Json::encode(*fixture.bridge.dispatches[0].userInfo),
              QByteArray(R"({"code":null,"codeChallenge":null})"));
}

TEST_F(OAuthTest, EmptyValuesAreAValidPairAndTravelAsEmptyStrings)
{
    oauth->handleGetURL(QStringLiteral("lexmira.extension://oauth?code=&code_challenge="));
    EXPECT_EQ(fixture.stored("message.oauthExchangeMessage"),
              QByteArray(R"([{"code":"","codeChallenge":""}])"));
    EXPECT_EQ(Json::encode(*fixture.bridge.dispatches.at(0).userInfo),
              QByteArray(R"({"code":"","codeChallenge":""})"));
}

TEST_F(OAuthTest, TheAutomaticLoginTabFlagIsClearedBeforeAnythingElse)
{
    std::optional<bool> flagWhenStored;
    const auto subscription = fixture.sharedData->oauthExchangeMessage.subscribe(
        [&](auto) { flagWhenStored = oauth->shouldAutoOpenLoginTab; });
    oauth->handleGetURL(QStringLiteral("not a url at all"));
    EXPECT_EQ(flagWhenStored, false);
    EXPECT_FALSE(oauth->shouldAutoOpenLoginTab);
}

TEST_F(OAuthTest, ACallbackPreventsTheAutomaticLoginTabForTheRestOfTheProcess)
{
    oauth->handleGetURL(validUrl);
    settle();
    EXPECT_FALSE(oauth->shouldAutoOpenLoginTab);

    // Nothing later sets it again: neither an explicit login-tab request nor further callbacks,
    // failed or not.
    bool delivered = false;
    oauth->oauthOpenLoginTab([&](bool ok) { delivered = ok; });
    ASSERT_TRUE(test::waitUntil([&] { return delivered; }));
    failDispatches();
    oauth->handleGetURL(validUrl);
    oauth->handleGetURL(QStringLiteral("garbage"));
    settle();
    EXPECT_FALSE(oauth->shouldAutoOpenLoginTab);
}

TEST_F(OAuthTest, AFailedExchangeShowsExactlyOneAlertAndPostsExactlyOneLogRecord)
{
    failDispatches(QStringLiteral("The name com.lexmira.companion.ext was not provided"));
    oauth->handleGetURL(validUrl);
    ASSERT_TRUE(test::waitUntil([&] { return !fixture.alerts.alerts.empty(); }));
    settle();

    ASSERT_EQ(fixture.alerts.alerts.size(), 1u);
    EXPECT_EQ(fixture.alerts.alerts[0], failureAlert);
    const auto records = fixture.logRecords();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0]["logger"], "companion.oauth.handleUrl");
    EXPECT_EQ(records[0]["level"], "ERROR");
    EXPECT_EQ(
        records[0]["message"],
        "Could not continue to extension: The name com.lexmira.companion.ext was not provided");
    EXPECT_EQ(records[0]["application"], "extensionSafari");
}

TEST_F(OAuthTest, TheAlertAppearsOnTheMainThreadAfterTheCompletionWhicheverThreadItCameOn)
{
    fixture.bridge.answersFromWorker = true;
    failDispatches();
    QThread* alertThread = nullptr;
    fixture.alerts.onShow = [&](const Alert&) { alertThread = QThread::currentThread(); };
    oauth->handleGetURL(validUrl);
    ASSERT_TRUE(test::waitUntil([&] { return !fixture.alerts.alerts.empty(); }));
    EXPECT_EQ(alertThread, QThread::currentThread());
    settle();
    EXPECT_EQ(fixture.alerts.alerts.size(), 1u);
    EXPECT_EQ(fixture.logTransport->count(), 1u);
    EXPECT_EQ(fixture.logTransport->sent()[0].thread, fixture.bridge.workerThread());
}

TEST_F(OAuthTest, TheStoredRecordStaysAfterAFailure)
{
    failDispatches();
    oauth->handleGetURL(validUrl);
    ASSERT_TRUE(test::waitUntil([&] { return !fixture.alerts.alerts.empty(); }));
    EXPECT_EQ(fixture.stored("message.oauthExchangeMessage"),
              QByteArray(R"([{"code":"c0de","codeChallenge":"ch4l"}])"));
}

TEST_F(OAuthTest, AnInvalidCallbackThatFailsAlsoAlertsAndLogsOnce)
{
    failDispatches();
    oauth->handleGetURL(QStringLiteral("https://example.com/"));
    ASSERT_TRUE(test::waitUntil([&] { return !fixture.alerts.alerts.empty(); }));
    settle();
    EXPECT_EQ(fixture.alerts.alerts.size(), 1u);
    EXPECT_EQ(fixture.logRecords().size(), 1u);
}

TEST_F(OAuthTest, EachFailedCallbackHasItsOwnAlertAndRecord)
{
    failDispatches();
    oauth->handleGetURL(validUrl);
    oauth->handleGetURL(validUrl);
    ASSERT_TRUE(test::waitUntil([&] { return fixture.alerts.alerts.size() == 2; }));
    settle();
    EXPECT_EQ(fixture.alerts.alerts.size(), 2u);
    EXPECT_EQ(fixture.logRecords().size(), 2u);
    EXPECT_EQ(fixture.bridge.dispatches.size(), 2u) << "nothing is retried";
}

TEST_F(OAuthTest, TheFailureAlertHasTheFixedTextsACriticalStyleAndOneOkButton)
{
    oauth->showFailureAlert();
    ASSERT_EQ(fixture.alerts.alerts.size(), 1u);
    EXPECT_EQ(fixture.alerts.alerts[0].messageText,
              QStringLiteral("Lexmira encountered a problem"));
    EXPECT_EQ(fixture.alerts.alerts[0].informativeText,
              QStringLiteral("Please open Safari to continue using Lexmira."));
    EXPECT_EQ(fixture.alerts.alerts[0].style, Alert::Style::critical);
    EXPECT_EQ(fixture.alerts.alerts[0].buttons, QStringList{QStringLiteral("OK")});
}

TEST_F(OAuthTest, TheFailureAlertNamesTheBrowserTheExtensionRunsIn)
{
    failDispatches();
    fixture.bridge.browserName = QStringLiteral("Firefox");
    oauth->handleGetURL(validUrl);
    ASSERT_TRUE(test::waitUntil([&] { return !fixture.alerts.alerts.empty(); }));
    EXPECT_EQ(fixture.alerts.alerts[0].messageText,
              QStringLiteral("Lexmira encountered a problem"));
    EXPECT_EQ(fixture.alerts.alerts[0].informativeText,
              QStringLiteral("Please open Firefox to continue using Lexmira."));
    EXPECT_EQ(fixture.bridge.browserNameQueries,
              std::vector<QString>{QStringLiteral("com.lexmira.companion.ext")});
}

TEST_F(OAuthTest, WithNoBrowserReportedTheFailureAlertIsExactlyAsWritten)
{
    failDispatches();
    fixture.bridge.answersFromWorker = true;
    oauth->handleGetURL(validUrl);
    ASSERT_TRUE(test::waitUntil([&] { return !fixture.alerts.alerts.empty(); }));
    EXPECT_EQ(fixture.alerts.alerts[0].informativeText,
              QStringLiteral("Please open Safari to continue using Lexmira."));
}

TEST_F(OAuthTest, ADeliveredCallbackDoesNotAskForTheBrowser)
{
    oauth->handleGetURL(validUrl);
    settle();
    EXPECT_TRUE(fixture.bridge.browserNameQueries.empty());
    EXPECT_TRUE(fixture.alerts.alerts.empty());
}

TEST_F(OAuthTest, ACompletionAfterTheHandOffIsGoneShowsNothingButStillLogs)
{
    failDispatches();
    oauth->handleGetURL(validUrl);
    oauth.reset();
    settle();
    EXPECT_TRUE(fixture.alerts.alerts.empty());
    EXPECT_EQ(fixture.logRecords().size(), 1u);
}

TEST_F(OAuthTest, OpeningTheLoginTabStoresTrueThenSendsNoUserInfoAtAll)
{
    std::optional<QByteArray> storedWhenSent;
    fixture.bridge.onDispatch = [&](const auto&) {
        storedWhenSent = fixture.stored("message.oauthOpenLoginTabMessage");
    };
    std::optional<bool> delivered;
    oauth->oauthOpenLoginTab([&](bool ok) { delivered = ok; });

    EXPECT_EQ(fixture.stored("message.oauthOpenLoginTabMessage"), QByteArray("[true]"));
    EXPECT_EQ(storedWhenSent, QByteArray("[true]"));
    ASSERT_EQ(fixture.bridge.dispatches.size(), 1u);
    EXPECT_EQ(fixture.bridge.dispatches[0].name, QStringLiteral("oauthOpenLoginTab"));
    EXPECT_EQ(fixture.bridge.dispatches[0].extensionIdentifier,
              QStringLiteral("com.lexmira.companion.ext"));
    EXPECT_EQ(fixture.bridge.dispatches[0].userInfo, std::nullopt)
        << "no user-info dictionary at all, not an empty one";
    ASSERT_TRUE(test::waitUntil([&] { return delivered.has_value(); }));
    EXPECT_EQ(delivered, true);
}

TEST_F(OAuthTest, AFailedLoginTabRequestReportsFalseWithoutAlertOrLog)
{
    failDispatches();
    fixture.bridge.answersFromWorker = true;
    std::optional<bool> delivered;
    QThread* completionThread = nullptr;
    oauth->oauthOpenLoginTab([&](bool ok) {
        delivered = ok;
        completionThread = QThread::currentThread();
    });
    ASSERT_TRUE(test::waitUntil([&] { return delivered.has_value(); }));
    settle();
    EXPECT_EQ(delivered, false);
    EXPECT_EQ(completionThread, QThread::currentThread());
    EXPECT_TRUE(fixture.alerts.alerts.empty());
    EXPECT_EQ(fixture.logTransport->count(), 0u);
    EXPECT_EQ(fixture.stored("message.oauthOpenLoginTabMessage"), QByteArray("[true]"));
}

TEST_F(OAuthTest, OpeningTheLoginTabLeavesTheFlagToItsCaller)
{
    oauth->oauthOpenLoginTab({});
    settle();
    EXPECT_TRUE(oauth->shouldAutoOpenLoginTab);
}

} // namespace

} // namespace lexmira
