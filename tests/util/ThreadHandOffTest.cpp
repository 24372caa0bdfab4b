// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "util/ThreadHandOff.h"
#include "support/ContextThread.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QThread>

#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace lexmira {

namespace {

using namespace std::chrono_literals;

// The threads a bound completion ran on, with the values it was given. Thread-safe.
class Runs {
public:
    std::function<void(int)> completion()
    {
        return [this](int value) {
            const std::lock_guard lock(mutex_);
            runs_.emplace_back(value, QThread::currentThread());
        };
    }
    std::vector<std::pair<int, QThread*>> runs() const
    {
        const std::lock_guard lock(mutex_);
        return runs_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::pair<int, QThread*>> runs_;
};

TEST(ThreadHandOffBind, ACallRunsLaterOnTheContextsThreadWithItsArguments)
{
    Runs runs;
    QObject context;
    const auto bound = ThreadHandOff::bind(&context, runs.completion());
    bound(1);
    bound(2);
    EXPECT_TRUE(runs.runs().empty()) << "never inside the call";
    ASSERT_TRUE(test::waitUntil([&] { return runs.runs().size() == 2; }));
    EXPECT_EQ(runs.runs()[0], std::make_pair(1, QThread::currentThread()));
    EXPECT_EQ(runs.runs()[1], std::make_pair(2, QThread::currentThread()));
}

TEST(ThreadHandOffBind, CallsFromAnyThreadRunOnTheThreadOfAContextLivingElsewhere)
{
    Runs runs;
    test::ContextThread worker;
    const auto bound = ThreadHandOff::bind(worker.context(), runs.completion());
    bound(1);
    std::thread other([&] { bound(2); });
    other.join();
    ASSERT_TRUE(test::waitUntil([&] { return runs.runs().size() == 2; }));
    for (const auto& [value, thread] : runs.runs())
        EXPECT_EQ(thread, worker.thread()) << value;
}

TEST(ThreadHandOffBind, ACallQueuedBeforeTheContextIsDestroyedIsDropped)
{
    Runs runs;
    auto context = std::make_unique<QObject>();
    const auto bound = ThreadHandOff::bind(context.get(), runs.completion());
    bound(1);
    context.reset();
    QObject alive;
    const auto control = ThreadHandOff::bind(&alive, runs.completion());
    control(2);
    ASSERT_TRUE(test::waitUntil([&] { return !runs.runs().empty(); }));
    test::spin(50ms);
    ASSERT_EQ(runs.runs().size(), 1u);
    EXPECT_EQ(runs.runs()[0].first, 2);
}

TEST(ThreadHandOffBind, ACallMadeAfterTheContextIsDestroyedIsDropped)
{
    Runs runs;
    auto context = std::make_unique<QObject>();
    const auto bound = ThreadHandOff::bind(context.get(), runs.completion());
    context.reset();
    bound(1);
    test::spin(50ms);
    EXPECT_TRUE(runs.runs().empty());
}

TEST(ThreadHandOffBind, AContextDestroyedOnItsOwnThreadDropsWhatWasQueuedAndWhatComesLater)
{
    Runs runs;
    test::ContextThread worker;
    const auto bound = ThreadHandOff::bind(worker.context(), runs.completion());
    // Queued while the worker is busy, so it cannot have run before the context goes.
    worker.destroyContext([&] {
        std::thread other([&] { bound(1); });
        other.join();
    });
    bound(2);
    std::thread other([&] { bound(3); });
    other.join();
    test::spin(50ms);
    EXPECT_TRUE(runs.runs().empty());
}

TEST(ThreadHandOffBind, AnEmptyCompletionBindsToNothing)
{
    QObject context;
    EXPECT_FALSE(ThreadHandOff::bind(&context, std::function<void(int)>()));
}

} // namespace

} // namespace lexmira
