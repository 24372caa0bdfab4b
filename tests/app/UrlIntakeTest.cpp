// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "app/Application.h"
#include "platform/GetUrlHandler.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

namespace lexmira {

namespace {

class RecordingHandler : public GetUrlHandler {
public:
    void handleGetURL(const std::optional<QString>& url) override
    {
        urls << url.value_or(QString());
    }
    QStringList urls;
};

class UrlIntake : public ::testing::Test {
protected:
    void TearDown() override
    {
        Application::shared().setGetUrlHandler(nullptr);
        test::spin(std::chrono::milliseconds(20));
    }
};

TEST_F(UrlIntake, UrlsBeforeTheHandlerIsBoundWaitAndArriveInOrder)
{
    auto& application = Application::shared();
    application.openUrls({QStringLiteral("a:1"), QStringLiteral("a:2")});
    application.openUrls({QStringLiteral("a:3")});
    test::spin(std::chrono::milliseconds(50));

    RecordingHandler handler;
    application.setGetUrlHandler(&handler);
    EXPECT_TRUE(handler.urls.isEmpty()) << "delivery waits for the event loop";
    ASSERT_TRUE(test::waitUntil([&] { return handler.urls.size() == 3; }));
    EXPECT_EQ(handler.urls,
              (QStringList{QStringLiteral("a:1"), QStringLiteral("a:2"), QStringLiteral("a:3")}));
}

TEST_F(UrlIntake, EachUrlIsDeliveredOnItsOwnTurnOfTheEventLoop)
{
    auto& application = Application::shared();
    RecordingHandler handler;
    application.setGetUrlHandler(&handler);
    application.openUrls({QStringLiteral("b:1"), QStringLiteral("b:2")});
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
    ASSERT_TRUE(test::waitUntil([&] { return handler.urls.size() == 2; }));
    EXPECT_EQ(handler.urls, (QStringList{QStringLiteral("b:1"), QStringLiteral("b:2")}));
}

TEST_F(UrlIntake, UnboundHandlerReceivesNothing)
{
    auto& application = Application::shared();
    RecordingHandler handler;
    application.setGetUrlHandler(&handler);
    application.setGetUrlHandler(nullptr);
    application.openUrls({QStringLiteral("c:1")});
    test::spin(std::chrono::milliseconds(50));
    EXPECT_TRUE(handler.urls.isEmpty());
    // Bound again, the waiting URL arrives.
    application.setGetUrlHandler(&handler);
    ASSERT_TRUE(test::waitUntil([&] { return handler.urls.size() == 1; }));
}

TEST_F(UrlIntake, UrlsWaitingStopAtTheirBound)
{
    auto& application = Application::shared();
    QStringList burst;
    for (qsizetype i = 0; i < Application::maxPendingUrls + 10; ++i)
        burst << QStringLiteral("d:%1").arg(i);
    application.openUrls(burst);

    RecordingHandler handler;
    application.setGetUrlHandler(&handler);
    ASSERT_TRUE(
        test::waitUntil([&] { return handler.urls.size() == Application::maxPendingUrls; }));
    test::spin(std::chrono::milliseconds(50));
    EXPECT_EQ(handler.urls, burst.mid(0, Application::maxPendingUrls));
}

} // namespace

} // namespace lexmira
