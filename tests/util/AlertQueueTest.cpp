// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "util/AlertQueue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace lexmira {

namespace {

// Stands for the modal presenter: while an alert is "on screen", onShow runs, as the events of
// a modal loop would; records how deeply alerts were ever nested.
class NestingPresenter final : public AlertPresenter {
public:
    int runModal(const Alert& alert) override
    {
        shown.push_back(alert);
        ++depth;
        maxDepth = std::max(maxDepth, depth);
        if (onShow)
            onShow(alert);
        --depth;
        return 0;
    }

    std::vector<Alert> shown;
    int depth = 0;
    int maxDepth = 0;
    std::function<void(const Alert&)> onShow;
};

Alert alertNamed(const QString& text)
{
    return Alert{QStringLiteral("Lexmira encountered a problem"),
                 text,
                 Alert::Style::critical,
                 {QStringLiteral("OK")}};
}

class AlertQueueTest : public ::testing::Test {
protected:
    AlertQueueTest()
    {
        auto presenter = std::make_unique<NestingPresenter>();
        presenter_ = presenter.get();
        queue_ = std::make_unique<AlertQueue>(std::move(presenter));
    }

    NestingPresenter* presenter_;
    std::unique_ptr<AlertQueue> queue_;
};

TEST_F(AlertQueueTest, AlertAloneIsShownAndAnswered)
{
    EXPECT_EQ(queue_->runModal(alertNamed(QStringLiteral("a"))), 0);
    ASSERT_EQ(presenter_->shown.size(), 1u);
    EXPECT_FALSE(queue_->showing());
}

TEST_F(AlertQueueTest, AlertsArrivingWhileOneIsUpAreShownAfterItNeverInsideIt)
{
    bool burstSent = false;
    presenter_->onShow = [&](const Alert&) {
        if (burstSent)
            return;
        burstSent = true;
        EXPECT_EQ(queue_->runModal(alertNamed(QStringLiteral("b"))), -1);
        EXPECT_EQ(queue_->runModal(alertNamed(QStringLiteral("c"))), -1);
    };
    queue_->runModal(alertNamed(QStringLiteral("a")));
    EXPECT_EQ(presenter_->maxDepth, 1);
    ASSERT_EQ(presenter_->shown.size(), 3u);
    EXPECT_EQ(presenter_->shown[0].informativeText, QStringLiteral("a"));
    EXPECT_EQ(presenter_->shown[1].informativeText, QStringLiteral("b"));
    EXPECT_EQ(presenter_->shown[2].informativeText, QStringLiteral("c"));
    EXPECT_EQ(queue_->waiting(), 0u);
}

TEST_F(AlertQueueTest, BurstOfIdenticalAlertsShowsOneAtATime)
{
    // Two hundred failed hand-offs whose alerts all arrive while the first is up.
    int arrivals = 0;
    presenter_->onShow = [&](const Alert& alert) {
        while (arrivals < 200) {
            ++arrivals;
            queue_->runModal(alert);
        }
    };
    queue_->runModal(alertNamed(QStringLiteral("a")));
    EXPECT_EQ(presenter_->shown.size(), 1u);
    EXPECT_EQ(presenter_->maxDepth, 1);
}

TEST_F(AlertQueueTest, AlertEqualToOneWaitingIsNotQueuedAgain)
{
    bool burstSent = false;
    presenter_->onShow = [&](const Alert&) {
        if (std::exchange(burstSent, true))
            return;
        queue_->runModal(alertNamed(QStringLiteral("b")));
        queue_->runModal(alertNamed(QStringLiteral("c")));
        queue_->runModal(alertNamed(QStringLiteral("b")));
        EXPECT_EQ(queue_->waiting(), 2u);
    };
    queue_->runModal(alertNamed(QStringLiteral("a")));
    EXPECT_EQ(presenter_->shown.size(), 3u);
}

TEST_F(AlertQueueTest, SameAlertAfterTheFirstWasDismissedIsShownAgain)
{
    queue_->runModal(alertNamed(QStringLiteral("a")));
    queue_->runModal(alertNamed(QStringLiteral("a")));
    EXPECT_EQ(presenter_->shown.size(), 2u);
}

TEST_F(AlertQueueTest, WaitingAlertsStopAtTheirBound)
{
    bool burstSent = false;
    presenter_->onShow = [&](const Alert&) {
        if (std::exchange(burstSent, true))
            return;
        for (std::size_t i = 0; i < AlertQueue::maxWaitingAlerts + 3; ++i)
            queue_->runModal(alertNamed(QString::number(i)));
        EXPECT_EQ(queue_->waiting(), AlertQueue::maxWaitingAlerts);
    };
    queue_->runModal(alertNamed(QStringLiteral("first")));
    ASSERT_EQ(presenter_->shown.size(), 1 + AlertQueue::maxWaitingAlerts);
    EXPECT_EQ(presenter_->shown.back().informativeText,
              QString::number(AlertQueue::maxWaitingAlerts - 1));
}

} // namespace

} // namespace lexmira
