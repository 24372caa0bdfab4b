// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "util/MulticastDelegate.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace lexmira {

namespace {

class Greeter {
public:
    virtual ~Greeter() = default;
    virtual void greet(const std::string& name) = 0;
};

class RecordingGreeter : public QObject, public Greeter {
public:
    void greet(const std::string& name) override { heard.push_back(name); }
    std::vector<std::string> heard;
};

class Bystander : public QObject {};

TEST(MulticastDelegate, InvokeOnEmptyContainerCallsNothing)
{
    MulticastDelegate<Greeter> delegates;
    int calls = 0;
    delegates.invoke([&](Greeter&) { ++calls; });
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(delegates.count(), 0u);
}

TEST(MulticastDelegate, CallsEveryLiveListener)
{
    MulticastDelegate<Greeter> delegates;
    RecordingGreeter first, second;
    delegates.add(&first);
    delegates.add(&second);
    delegates.invoke([](Greeter& g) { g.greet("hi"); });
    EXPECT_EQ(first.heard, std::vector<std::string>{"hi"});
    EXPECT_EQ(second.heard, std::vector<std::string>{"hi"});
}

TEST(MulticastDelegate, AddingTheSameObjectTwiceKeepsOneEntry)
{
    MulticastDelegate<Greeter> delegates;
    RecordingGreeter listener;
    delegates.add(&listener);
    delegates.add(&listener);
    EXPECT_EQ(delegates.count(), 1u);
    delegates.invoke([](Greeter& g) { g.greet("once"); });
    EXPECT_EQ(listener.heard.size(), 1u);
}

TEST(MulticastDelegate, DestroyedListenerIsNeitherCalledNorCounted)
{
    MulticastDelegate<Greeter> delegates;
    RecordingGreeter kept;
    auto gone = std::make_unique<RecordingGreeter>();
    delegates.add(&kept);
    delegates.add(gone.get());
    ASSERT_EQ(delegates.count(), 2u);
    gone.reset();
    int calls = 0;
    delegates.invoke([&](Greeter&) { ++calls; });
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(delegates.count(), 1u);
}

TEST(MulticastDelegate, ObjectThatIsNotAListenerIsSkipped)
{
    MulticastDelegate<Greeter> delegates;
    Bystander bystander;
    RecordingGreeter listener;
    delegates.add(&bystander);
    delegates.add(&listener);
    int calls = 0;
    delegates.invoke([&](Greeter& g) {
        ++calls;
        g.greet("x");
    });
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(delegates.count(), 2u);
}

TEST(MulticastDelegate, RemoveOfAbsentObjectDoesNothing)
{
    MulticastDelegate<Greeter> delegates;
    RecordingGreeter listener, stranger;
    delegates.add(&listener);
    delegates.remove(&stranger);
    EXPECT_EQ(delegates.count(), 1u);
    delegates.remove(&listener);
    EXPECT_EQ(delegates.count(), 0u);
}

TEST(MulticastDelegate, ChangesDuringInvokeDoNotAffectTheCurrentPass)
{
    MulticastDelegate<Greeter> delegates;
    RecordingGreeter first, second, late;
    delegates.add(&first);
    delegates.add(&second);
    int calls = 0;
    delegates.invoke([&](Greeter&) {
        ++calls;
        delegates.add(&late);
    });
    EXPECT_EQ(calls, 2);
    EXPECT_TRUE(late.heard.empty());
    EXPECT_EQ(delegates.count(), 3u);
}

} // namespace

} // namespace lexmira
