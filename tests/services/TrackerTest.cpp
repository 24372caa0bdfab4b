// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "services/Tracker.h"

#include "fakes/CountingHttpClient.h"
#include "fakes/MemorySharedData.h"
#include "fakes/MemoryUserDefaults.h"
#include "support/HttpsTestServer.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QObject>

#include <thread>

namespace lexmira {

namespace {

using test::HttpsTestServer;
using Json = nlohmann::ordered_json;

const Json fetchedUser{{"id", "fetched-user"},    {"email", "f@lexmira.test"},
                       {"groups", Json::array()}, {"name", "F"},
                       {"anonymous", true},       {"isTest", false}};

HttpsTestServer::Response userAnswer(const char* containerCookie = nullptr)
{
    HttpsTestServer::Fields cookies;
    if (containerCookie)
        cookies.emplace_back("Set-Cookie", QByteArray("norv_containerId=") + containerCookie);
    cookies.emplace_back("Set-Cookie", "lxauth=A");
    cookies.emplace_back("Set-Cookie", "csrf-token=C");
    return test::httpJson(200, fetchedUser, cookies);
}

// Remembers every event it is told about.
class RecordingListener final : public QObject, public NorvListener {
public:
    void norvDidRecordEvent(const std::string& name, const Json& props) override
    {
        events.emplace_back(name, props);
    }
    std::vector<std::pair<std::string, Json>> events;
};

class TrackerTest : public ::testing::Test {
protected:
    TrackerTest()
    {
        qputenv("LEXMIRA_EXTRA_CA_FILE", HttpsTestServer::caFile().toUtf8());
        http = std::make_shared<CountingHttpClient>(HttpClient::create());
        deployment.accountHost = {"127.0.0.1", account.port()};
        deployment.analyticsUrl = analytics.url(QString()).toString().toStdString();
        deployment.logHost = {"127.0.0.1", HttpsTestServer::closedPort()};
        deployment.webOrigin = "https://www.lexmira.test";
    }

    std::unique_ptr<Tracker> makeTracker(bool forceIsTest = false)
    {
        NorvClient::Platform platform;
        platform.httpClient = http;
        platform.userDefaults = &userDefaults;
        return std::make_unique<Tracker>("lexmiraCompanionLinux", "1.0.0",
                                         AppInfo::Component::companion, auth, *sharedData,
                                         forceIsTest, true, deployment, platform);
    }

    // Writes the shared user as the extension does: from another thread, whose notification
    // the tracker must carry over to the main thread itself.
    void shareUserFromAnotherThread(const std::optional<UserInfo>& userInfo)
    {
        std::thread extension([&] { sharedData->userInfo.setValue(userInfo); });
        extension.join();
    }

    // Waits until count requests came back and what their completions posted to the main thread
    // has run.
    void waitForAnswers(int count)
    {
        ASSERT_TRUE(test::waitUntil([&] { return http->completed() >= count; }));
        test::spin(std::chrono::milliseconds(100));
    }

    std::vector<Json> analyticsEvents() const
    {
        std::vector<Json> events;
        for (const auto& request : analytics.requests())
            events.push_back(*request.json());
        return events;
    }

    HttpsTestServer account;
    HttpsTestServer analytics;
    std::shared_ptr<CountingHttpClient> http;
    std::shared_ptr<const Auth> auth =
        std::make_shared<Auth>("companion-linux", "1.0.0", HttpCookieParser::create());
    std::shared_ptr<MemoryDataContainer> container = std::make_shared<MemoryDataContainer>();
    std::unique_ptr<SharedData> sharedData = makeMemorySharedData(container);
    MemoryUserDefaults userDefaults;
    DeploymentConfig deployment;
};

TEST_F(TrackerTest, WithoutASharedUserOneFetchIsSentAndAppStartWaitsUntilItSucceeds)
{
    account.holdRequests();
    auto tracker = makeTracker();
    tracker->norv().recordAppStart();
    ASSERT_TRUE(account.waitForRequests(1));
    EXPECT_EQ(tracker->norv().client().queue().size(), 1u);
    test::spin(std::chrono::milliseconds(300));
    EXPECT_EQ(account.requests().size(), 1u);
    EXPECT_TRUE(analytics.requests().empty());

    const auto& fetch = account.requests().front();
    EXPECT_EQ(fetch.method, "POST");
    EXPECT_EQ(fetch.target, "/v3/user/oranonymous");
    EXPECT_EQ(fetch.header("X-Client-Type"), "companion-linux");
    EXPECT_EQ(fetch.header("X-Client-Version"), "1.0.0");
    EXPECT_EQ(fetch.header("cookie"), std::nullopt);

    ASSERT_TRUE(account.release(userAnswer("cookie-K")));
    ASSERT_TRUE(analytics.waitForRequests(1));
    const auto body = analyticsEvents().front();
    EXPECT_EQ(body.at("batchId"), 1);
    EXPECT_EQ(body.at("containerId"), "cookie-K");
    EXPECT_EQ(body.at("events").at(0),
              (Json{{"component", "companion"},
                    {"object", "app"},
                    {"action", "start"},
                    {"eventName", "lexmiraCompanionLinux/companion/app-start"},
                    {"userId", "fetched-user"},
                    {"isTest", false}}));
    EXPECT_EQ(sharedData->companionContainerId.value(), "cookie-K");
    EXPECT_EQ(account.requests().size(), 1u);
    EXPECT_TRUE(tracker->norv().client().queue().empty());
}

TEST_F(TrackerTest, AStoredCompanionContainerIdIsSentAndNeverOverwritten)
{
    sharedData->companionContainerId.setValue("stored-K");
    account.respondWith(userAnswer("fetched-K"));
    auto tracker = makeTracker();

    ASSERT_TRUE(account.waitForRequests(1));
    EXPECT_EQ(account.requests().front().header("X-Container-Id"), "stored-K");
    EXPECT_EQ(account.requests().front().header("cookie"), "norv_containerId=stored-K");
    ASSERT_TRUE(test::waitUntil([&] { return tracker->norv().client().userInfo().has_value(); }));
    EXPECT_EQ(sharedData->companionContainerId.value(), "stored-K");
    EXPECT_EQ(tracker->norv().client().userInfo(),
              (UserInfo{"fetched-user", false, true, "fetched-K"}));
}

TEST_F(TrackerTest, WithoutAContainerCookieTheStoredIdentifierComesBackAsTheUsers)
{
    sharedData->companionContainerId.setValue("stored-K");
    account.respondWith(userAnswer());
    auto tracker = makeTracker();

    ASSERT_TRUE(test::waitUntil([&] { return tracker->norv().client().userInfo().has_value(); }));
    EXPECT_EQ(tracker->norv().client().userInfo()->containerId, "stored-K");
    EXPECT_EQ(sharedData->companionContainerId.value(), "stored-K");
}

TEST_F(TrackerTest, AFetchedUserWithoutAnyContainerIdentifierStoresNothing)
{
    account.respondWith(userAnswer());
    auto tracker = makeTracker();

    ASSERT_TRUE(test::waitUntil([&] { return tracker->norv().client().userInfo().has_value(); }));
    EXPECT_EQ(tracker->norv().client().userInfo(), (UserInfo{"fetched-user", false, true, ""}));
    EXPECT_EQ(container->get(QStringLiteral("companionContainerId")), std::nullopt);
}

TEST_F(TrackerTest, ASharedUserAtStartIsUsedAndNothingIsFetched)
{
    const UserInfo shared{"shared-user", true, false, "shared-K"};
    sharedData->userInfo.setValue(shared);
    auto tracker = makeTracker();
    EXPECT_EQ(tracker->norv().client().userInfo(), shared);
    tracker->norv().recordAppStart();

    ASSERT_TRUE(analytics.waitForRequests(1));
    test::spin(std::chrono::milliseconds(200));
    EXPECT_TRUE(account.requests().empty());
    const auto body = analyticsEvents().front();
    EXPECT_EQ(body.at("containerId"), "shared-K");
    EXPECT_EQ(body.at("events").at(0).at("userId"), "shared-user");
    EXPECT_EQ(body.at("events").at(0).at("isTest"), true);
}

TEST_F(TrackerTest, TheUserFetchWaitsForTheEventLoop)
{
    // What the application does next (its window) does not wait for the first request.
    auto tracker = makeTracker();
    EXPECT_EQ(http->sent(), 0);
    ASSERT_TRUE(account.waitForRequests(1));
    EXPECT_EQ(http->sent(), 1);
}

TEST_F(TrackerTest, AUserSharedByTheExtensionReachesTheClientOnTheMainThread)
{
    account.holdRequests();
    auto tracker = makeTracker();
    ASSERT_TRUE(account.waitForRequests(1));

    const UserInfo shared{"shared-user", false, false, "shared-K"};
    shareUserFromAnotherThread(shared);
    // The notification came on the writer's thread; the client is touched only once the main
    // thread gets to it.
    EXPECT_EQ(tracker->norv().client().userInfo(), std::nullopt);
    ASSERT_TRUE(test::waitUntil([&] { return tracker->norv().client().userInfo() == shared; }));
}

TEST_F(TrackerTest, AFetchAnsweredAfterTheExtensionSharedAUserIsIgnored)
{
    account.holdRequests();
    auto tracker = makeTracker();
    ASSERT_TRUE(account.waitForRequests(1));
    const UserInfo shared{"shared-user", false, false, "shared-K"};
    shareUserFromAnotherThread(shared);
    ASSERT_TRUE(test::waitUntil([&] { return tracker->norv().client().userInfo() == shared; }));

    ASSERT_TRUE(account.release(userAnswer("fetched-K")));
    waitForAnswers(1);
    EXPECT_EQ(tracker->norv().client().userInfo(), shared);
    EXPECT_EQ(sharedData->companionContainerId.value(), std::nullopt);
}

TEST_F(TrackerTest, TheSharedUserGoingAwayForgetsItAndFetchesAgain)
{
    const UserInfo shared{"shared-user", false, false, "shared-K"};
    sharedData->userInfo.setValue(shared);
    account.respondWith(userAnswer("fetched-K"));
    auto tracker = makeTracker();
    EXPECT_TRUE(account.requests().empty());

    shareUserFromAnotherThread(std::nullopt);
    ASSERT_TRUE(account.waitForRequests(1));
    ASSERT_TRUE(test::waitUntil([&] {
        return tracker->norv().client().userInfo() ==
               UserInfo{"fetched-user", false, true, "fetched-K"};
    }));
    EXPECT_EQ(account.requests().size(), 1u);
}

TEST_F(TrackerTest, AFailedFetchChangesNothing)
{
    account.respondWith(test::httpStatus(500));
    auto tracker = makeTracker();
    tracker->norv().recordAppStart();
    waitForAnswers(1);

    EXPECT_EQ(tracker->norv().client().userInfo(), std::nullopt);
    EXPECT_EQ(tracker->norv().client().queue().size(), 1u);
    EXPECT_EQ(sharedData->companionContainerId.value(), std::nullopt);
    EXPECT_EQ(account.requests().size(), 1u);
}

TEST_F(TrackerTest, AnAnswerAfterTheTrackerIsGoneIsDropped)
{
    account.holdRequests();
    auto tracker = makeTracker();
    ASSERT_TRUE(account.waitForRequests(1));
    tracker.reset();

    ASSERT_TRUE(account.release(userAnswer("fetched-K")));
    waitForAnswers(1);
    EXPECT_EQ(sharedData->companionContainerId.value(), std::nullopt);
    EXPECT_EQ(container->subscriberCount(), 0u);
}

TEST_F(TrackerTest, ExtraPropsNamedObjectOrActionGiveWayToTheStandardValues)
{
    auto tracker = makeTracker();
    RecordingListener listener;
    tracker->norv().listeners().add(&listener);

    tracker->norv().record(std::nullopt, std::nullopt, "app", "start",
                           Json{{"object", "window"}, {"action", "close"}, {"extra", 1}});
    ASSERT_EQ(listener.events.size(), 1u);
    EXPECT_EQ(listener.events[0].first, "companion/app-start");
    EXPECT_EQ(
        listener.events[0].second,
        (Json{{"object", "app"}, {"action", "start"}, {"extra", 1}, {"component", "companion"}}));
}

TEST_F(TrackerTest, ExtraPropsNamedObjectOrActionAreKeptAndNamedWhenTheArgumentsAreAbsent)
{
    auto tracker = makeTracker();
    RecordingListener listener;
    tracker->norv().listeners().add(&listener);

    tracker->norv().record(std::nullopt, std::nullopt, std::nullopt, "click",
                           Json{{"object", "button"}, {"action", "ignored"}});
    tracker->norv().record("page", "item-7", std::nullopt, std::nullopt,
                           Json{{"object", "row"}, {"action", "open"}});
    ASSERT_EQ(listener.events.size(), 2u);
    EXPECT_EQ(listener.events[0].first, "companion/button-click");
    EXPECT_EQ(listener.events[0].second.at("object"), "button");
    EXPECT_EQ(listener.events[0].second.at("action"), "click");
    EXPECT_EQ(listener.events[1].first, "companion/item-7-row-open");
    EXPECT_EQ(listener.events[1].second.at("pageId"), "page");
}

TEST_F(TrackerTest, NamesSkipPropsThatAreAbsentOrNotStrings)
{
    auto tracker = makeTracker();
    auto& norv = tracker->norv();
    EXPECT_EQ(norv.eventName(Json{{"objectId", 5}, {"object", "app"}, {"action", true}}),
              "companion/app");
    EXPECT_EQ(norv.eventName(Json::object()), "companion/");
    EXPECT_EQ(norv.eventName(Json{{"objectId", ""}, {"action", "go"}}), "companion/-go");
    const Norv native(std::make_unique<NorvClient>("o", QUrl(), "t", "1", false, true,
                                                   NorvClient::Platform{http, &userDefaults}),
                      Norv::Props(), AppInfo::Component::native);
    EXPECT_EQ(native.eventName(Json{{"object", "app"}, {"action", "start"}}), "native/app-start");
}

TEST_F(TrackerTest, RecordedEventsReachTheClientAndLiveListenersOnly)
{
    auto tracker = makeTracker();
    RecordingListener kept;
    auto gone = std::make_unique<RecordingListener>();
    QObject notAListener;
    tracker->norv().listeners().add(&kept);
    tracker->norv().listeners().add(gone.get());
    tracker->norv().listeners().add(&notAListener);
    gone.reset();

    tracker->norv().recordAppStart();
    EXPECT_EQ(kept.events.size(), 1u);
    EXPECT_EQ(tracker->norv().client().queue().back().name, "companion/app-start");
    EXPECT_EQ(tracker->norv().client().queue().back().props,
              (Json{{"component", "companion"}, {"object", "app"}, {"action", "start"}}));
}

TEST_F(TrackerTest, TheKeyNamePropsAreTheirOwnNames)
{
    const Norv::Props props;
    EXPECT_EQ(props.component, "component");
    EXPECT_EQ(props.pageId, "pageId");
    EXPECT_EQ(props.objectId, "objectId");
    EXPECT_EQ(props.object, "object");
    EXPECT_EQ(props.action, "action");
}

TEST_F(TrackerTest, TheClientIsBuiltFromTheDeploymentAndTheFlags)
{
    auto tracker = makeTracker(true);
    const auto& client = tracker->norv().client();
    EXPECT_EQ(client.url(), analytics.url(QString()));
    EXPECT_EQ(client.origin(), "https://www.lexmira.test");
    EXPECT_EQ(client.clientType(), "lexmiraCompanionLinux");
    EXPECT_EQ(client.clientVersion(), "1.0.0");
    EXPECT_TRUE(client.forceIsTest());
    EXPECT_TRUE(client.isPingDisabled());
}

TEST_F(TrackerTest, AnAnalyticsUrlThatDoesNotParseStopsTheProcess)
{
    deployment.analyticsUrl = "not a url";
    EXPECT_DEATH(makeTracker(), "Fatal error: The analytics URL does not parse: not a url");
}

TEST_F(TrackerTest, AnAccountHostThatMakesNoUrlSendsNothing)
{
    deployment.accountHost = {"no such host!", std::nullopt};
    auto tracker = makeTracker();
    EXPECT_EQ(http->sent(), 0);
    test::spin(std::chrono::milliseconds(300));
    EXPECT_TRUE(account.requests().empty());
    EXPECT_EQ(tracker->norv().client().userInfo(), std::nullopt);
}

} // namespace

} // namespace lexmira
