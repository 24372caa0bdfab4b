// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/SingleInstance.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QProcess>
#include <QSignalSpy>

namespace {

const QString serviceName = QStringLiteral("com.lexmira.companion");

// This test process is the instance on the test session's bus; launches of the real binary are
// the later ones.
class SingleInstanceOnTheBus : public ::testing::Test {
protected:
    void SetUp() override
    {
        instance_ = SingleInstance::create();
        ASSERT_EQ(instance_->claim(), SingleInstance::Role::primary);
    }

    void TearDown() override
    {
        instance_.reset();
        ASSERT_TRUE(test::waitUntil([] {
            return !QDBusConnection::sessionBus().interface()->isServiceRegistered(serviceName);
        }));
    }

    // Runs the binary to its end while this process keeps serving the bus.
    static int launch(const QStringList& arguments,
                      const QString& bundleDir = test::builtBundleDir())
    {
        return launchIn(test::childEnvironment(bundleDir), arguments);
    }

    static int launchIn(const QProcessEnvironment& environment, const QStringList& arguments,
                        QByteArray* errorOutput = nullptr)
    {
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(test::companionBinary(), arguments);
        if (!test::waitUntil([&] { return process.state() == QProcess::NotRunning; },
                             std::chrono::seconds(30)))
            process.kill();
        process.waitForFinished();
        if (errorOutput)
            *errorOutput = process.readAllStandardError();
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }

    std::unique_ptr<SingleInstance> instance_;
};

TEST_F(SingleInstanceOnTheBus, OwnsTheApplicationName)
{
    EXPECT_TRUE(QDBusConnection::sessionBus().interface()->isServiceRegistered(serviceName));
}

TEST_F(SingleInstanceOnTheBus, SecondClaimInTheSameSessionIsSecondary)
{
    // A second connection stands for a second process.
    auto other =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("other"));
    auto reply =
        other.interface()->registerService(serviceName, QDBusConnectionInterface::DontQueueService,
                                           QDBusConnectionInterface::DontAllowReplacement);
    EXPECT_EQ(reply.value(), QDBusConnectionInterface::ServiceNotRegistered);
    QDBusConnection::disconnectFromBus(QStringLiteral("other"));
}

TEST_F(SingleInstanceOnTheBus, LaunchWithUrlForwardsItAndExitsZero)
{
    QSignalSpy opened(instance_.get(), &SingleInstance::openRequested);
    const QString url = QStringLiteral("lexmira.extension://oauth?code=C1&code_challenge=X1");
    EXPECT_EQ(launch({url}), 0);
    ASSERT_TRUE(test::waitUntil([&] { return opened.count() == 1; }));
    EXPECT_EQ(opened.first().first().toStringList(), QStringList{url});
}

TEST_F(SingleInstanceOnTheBus, LaunchWithoutUrlActivatesAndExitsZero)
{
    QSignalSpy activated(instance_.get(), &SingleInstance::activateRequested);
    QSignalSpy opened(instance_.get(), &SingleInstance::openRequested);
    EXPECT_EQ(launch({}), 0);
    ASSERT_TRUE(test::waitUntil([&] { return activated.count() == 1; }));
    EXPECT_EQ(opened.count(), 0);
}

// The environment of a launch from a terminal with no graphical session: a session bus, but no
// display and no platform chosen.
QProcessEnvironment environmentWithoutDisplay()
{
    auto environment = test::childEnvironment();
    environment.remove(QStringLiteral("DISPLAY"));
    environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    return environment;
}

TEST_F(SingleInstanceOnTheBus, LaunchWithoutDisplayStillForwardsItsUrl)
{
    QSignalSpy opened(instance_.get(), &SingleInstance::openRequested);
    const QString url = QStringLiteral("lexmira.extension://oauth?code=C2&code_challenge=X2");
    EXPECT_EQ(launchIn(environmentWithoutDisplay(), {url}), 0);
    ASSERT_TRUE(test::waitUntil([&] { return opened.count() == 1; }));
    EXPECT_EQ(opened.first().first().toStringList(), QStringList{url});
}

TEST_F(SingleInstanceOnTheBus, ForwardingLaunchBuildsNoEnvironment)
{
    // A bundle that would stop any launch that builds the environment.
    test::TemporaryBundle broken;
    broken.remove(QStringLiteral("clientInfo.json"));
    QSignalSpy opened(instance_.get(), &SingleInstance::openRequested);
    EXPECT_EQ(launch({QStringLiteral("lexmira.extension://oauth")}, broken.path()), 0);
    ASSERT_TRUE(test::waitUntil([&] { return opened.count() == 1; }));
}

TEST_F(SingleInstanceOnTheBus, UrlsFromSeveralLaunchesArriveInOrder)
{
    QStringList received;
    QObject::connect(instance_.get(), &SingleInstance::openRequested,
                     [&](const QStringList& uris) { received << uris; });
    for (int i = 0; i < 3; ++i)
        ASSERT_EQ(launch({QStringLiteral("lexmira.extension://oauth?n=%1").arg(i)}), 0);
    ASSERT_TRUE(test::waitUntil([&] { return received.size() == 3; }));
    EXPECT_EQ(received, (QStringList{QStringLiteral("lexmira.extension://oauth?n=0"),
                                     QStringLiteral("lexmira.extension://oauth?n=1"),
                                     QStringLiteral("lexmira.extension://oauth?n=2")}));
}

TEST_F(SingleInstanceOnTheBus, OpenWithSeveralUrisHandsThemOverInOrder)
{
    QSignalSpy opened(instance_.get(), &SingleInstance::openRequested);
    auto call = QDBusMessage::createMethodCall(
        serviceName, QStringLiteral("/com/lexmira/companion"),
        QStringLiteral("org.freedesktop.Application"), QStringLiteral("Open"));
    call << QStringList{QStringLiteral("a:1"), QStringLiteral("a:2")} << QVariantMap();
    auto other =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("caller"));
    other.asyncCall(call);
    ASSERT_TRUE(test::waitUntil([&] { return opened.count() == 1; }));
    EXPECT_EQ(opened.first().first().toStringList(),
              (QStringList{QStringLiteral("a:1"), QStringLiteral("a:2")}));
    QDBusConnection::disconnectFromBus(QStringLiteral("caller"));
}

TEST_F(SingleInstanceOnTheBus, UnknownActionAnswersAnError)
{
    auto call = QDBusMessage::createMethodCall(
        serviceName, QStringLiteral("/com/lexmira/companion"),
        QStringLiteral("org.freedesktop.Application"), QStringLiteral("ActivateAction"));
    call << QStringLiteral("frobnicate") << QVariantList() << QVariantMap();
    auto other =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("caller2"));
    auto pending = other.asyncCall(call);
    ASSERT_TRUE(test::waitUntil([&] { return pending.isFinished(); }));
    EXPECT_TRUE(pending.isError());
    EXPECT_TRUE(pending.error().message().contains(QStringLiteral("frobnicate")));
    QDBusConnection::disconnectFromBus(QStringLiteral("caller2"));
}

// The first launch of a session with no display has nothing to show its window on: it says so
// and exits, rather than aborting.
TEST(FirstLaunchWithoutDisplay, ExitsWithAClearMessage)
{
    QProcess process;
    process.setProcessEnvironment(environmentWithoutDisplay());
    process.start(test::companionBinary(), {});
    ASSERT_TRUE(process.waitForFinished(30'000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 1);
    EXPECT_TRUE(process.readAllStandardError().contains("no display"));
}

} // namespace
