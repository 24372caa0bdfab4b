// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/SingleInstance.h"
#include "platform/linux/ApplicationBus.h"
#include "support/DBusContract.h"
#include "support/PrivateBus.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QFile>
#include <QHash>
#include <QProcess>
#include <QSignalSpy>

#include <systemd/sd-bus.h>

#include <future>
#include <map>
#include <memory>
#include <optional>

namespace lexmira {

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
                      const QString& bundleDir = test::builtBundleDir(),
                      const QHash<QString, QString>& launcherVariables = {})
    {
        auto environment = test::childEnvironment(bundleDir);
        environment.remove(QStringLiteral("DESKTOP_STARTUP_ID"));
        environment.remove(QStringLiteral("XDG_ACTIVATION_TOKEN"));
        for (auto it = launcherVariables.begin(); it != launcherVariables.end(); ++it)
            environment.insert(it.key(), it.value());
        return launchIn(environment, arguments);
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

    // Calls Activate as another process would, with platformData, and waits for the request.
    std::optional<LaunchActivation> activateWith(const QVariantMap& platformData)
    {
        std::optional<LaunchActivation> received;
        const auto connection =
            QObject::connect(instance_.get(), &SingleInstance::activateRequested,
                             [&](const LaunchActivation& launch) { received = launch; });
        auto call = QDBusMessage::createMethodCall(
            serviceName, QStringLiteral("/com/lexmira/companion"),
            QStringLiteral("org.freedesktop.Application"), QStringLiteral("Activate"));
        call << platformData;
        auto other =
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("launcher"));
        auto pending = other.asyncCall(call);
        test::waitUntil([&] { return pending.isFinished() && received.has_value(); });
        EXPECT_FALSE(pending.isError()) << pending.error().message().toStdString();
        QDBusConnection::disconnectFromBus(QStringLiteral("launcher"));
        QObject::disconnect(connection);
        return received;
    }

    std::unique_ptr<SingleInstance> instance_;
};

const QHash<QString, QString> launcherVariables{
    {QStringLiteral("DESKTOP_STARTUP_ID"), QStringLiteral("panel-2041-host-lexmira-0_TIME816")},
    {QStringLiteral("XDG_ACTIVATION_TOKEN"), QStringLiteral("kx7-activation-token-19")},
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

TEST_F(SingleInstanceOnTheBus, LaunchHandsTheLaunchersTokensToTheInstance)
{
    std::optional<LaunchActivation> received;
    QObject::connect(instance_.get(), &SingleInstance::activateRequested,
                     [&](const LaunchActivation& launch) { received = launch; });
    EXPECT_EQ(launch({}, test::builtBundleDir(), launcherVariables), 0);
    ASSERT_TRUE(test::waitUntil([&] { return received.has_value(); }));
    EXPECT_EQ(received->activationToken, QStringLiteral("kx7-activation-token-19"));
    EXPECT_EQ(received->startupId, QStringLiteral("panel-2041-host-lexmira-0_TIME816"));
}

TEST_F(SingleInstanceOnTheBus, LaunchWithUrlHandsTheLaunchersTokensOverWithTheUrl)
{
    std::optional<LaunchActivation> received;
    QStringList uris;
    QObject::connect(instance_.get(), &SingleInstance::openRequested,
                     [&](const QStringList& opened, const LaunchActivation& launch) {
                         uris = opened;
                         received = launch;
                     });
    EXPECT_EQ(launch({QStringLiteral("lexmira.extension://oauth?code=C2")}, test::builtBundleDir(),
                     launcherVariables),
              0);
    ASSERT_TRUE(test::waitUntil([&] { return received.has_value(); }));
    EXPECT_EQ(uris, QStringList{QStringLiteral("lexmira.extension://oauth?code=C2")});
    EXPECT_EQ(received->activationToken, QStringLiteral("kx7-activation-token-19"));
    EXPECT_EQ(received->startupId, QStringLiteral("panel-2041-host-lexmira-0_TIME816"));
}

TEST_F(SingleInstanceOnTheBus, LaunchWithoutLauncherTokensHandsNoneOver)
{
    std::optional<LaunchActivation> received;
    QObject::connect(instance_.get(), &SingleInstance::activateRequested,
                     [&](const LaunchActivation& launch) { received = launch; });
    EXPECT_EQ(launch({}), 0);
    ASSERT_TRUE(test::waitUntil([&] { return received.has_value(); }));
    EXPECT_TRUE(received->isEmpty());
}

TEST_F(SingleInstanceOnTheBus, TokensUpToTheBoundAreTakenLongerOnesDropped)
{
    const QString atBound(LaunchActivation::maxTokenBytes, QLatin1Char('t'));
    const QString overBound(LaunchActivation::maxTokenBytes + 1, QLatin1Char('s'));
    const auto kept = activateWith({{QStringLiteral("activation-token"), atBound},
                                    {QStringLiteral("desktop-startup-id"), atBound}});
    ASSERT_TRUE(kept);
    EXPECT_EQ(kept->activationToken, atBound);
    EXPECT_EQ(kept->startupId, atBound);

    const auto dropped = activateWith({{QStringLiteral("activation-token"), overBound},
                                       {QStringLiteral("desktop-startup-id"), overBound}});
    ASSERT_TRUE(dropped) << "the request itself still shows the window";
    EXPECT_TRUE(dropped->isEmpty());
}

TEST_F(SingleInstanceOnTheBus, TokensWithSpacesControlCharactersOrOfAnotherTypeAreDropped)
{
    for (const QVariant& bad :
         {QVariant(QStringLiteral("two words")), QVariant(QStringLiteral("line\nbreak")),
          QVariant(QStringLiteral("tab\there")), QVariant(QStringLiteral("caf\u00e9")),
          QVariant(42), QVariant(QByteArray("bytes"))}) {
        const auto received = activateWith({{QStringLiteral("activation-token"), bad},
                                            {QStringLiteral("desktop-startup-id"), bad}});
        ASSERT_TRUE(received) << bad.toString().toStdString();
        EXPECT_TRUE(received->isEmpty()) << bad.toString().toStdString();
    }
    // Next to a bad one, a good token is still taken.
    const auto mixed =
        activateWith({{QStringLiteral("activation-token"), QStringLiteral("a b")},
                      {QStringLiteral("desktop-startup-id"), QStringLiteral("ok-1")}});
    ASSERT_TRUE(mixed);
    EXPECT_EQ(mixed->activationToken, QString());
    EXPECT_EQ(mixed->startupId, QStringLiteral("ok-1"));
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

// A launch that finds no instance running must not have the bus start one for its hand-over: it
// becomes the instance itself. The bus here could start one, and would, for any other caller.
TEST(LaunchWithNoInstance, HasTheBusStartNone)
{
    QTemporaryDir marks;
    ASSERT_TRUE(marks.isValid());
    const QString started = marks.filePath(QStringLiteral("started"));
    const std::map<QString, QString> services{
        {serviceName, QStringLiteral("/bin/touch %1").arg(started)}};
    const test::PrivateBus bus(services);
    ASSERT_TRUE(bus.isRunning());

    auto environment = environmentWithoutDisplay();
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), bus.address());
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(test::companionBinary(), {QStringLiteral("lexmira.extension://oauth?code=C")});
    ASSERT_TRUE(process.waitForFinished(30'000));
    // It went on to claim the instance itself, which it cannot be without a display.
    EXPECT_EQ(process.exitCode(), 1);
    EXPECT_TRUE(process.readAllStandardError().contains("no display"));
    EXPECT_FALSE(QFile::exists(started));

    // Any other call to the name does start it.
    auto caller = QDBusConnection::connectToBus(bus.address(), QStringLiteral("activating"));
    caller.asyncCall(QDBusMessage::createMethodCall(serviceName,
                                                    QStringLiteral("/com/lexmira/companion"),
                                                    QStringLiteral("org.freedesktop.Application"),
                                                    QStringLiteral("Activate"))
                     << QVariantMap());
    EXPECT_TRUE(test::waitUntil([&] { return QFile::exists(started); }));
    QDBusConnection::disconnectFromBus(QStringLiteral("activating"));
}

// The hand-over a launch makes before it builds anything reaches the running instance with the
// URL and the launcher's tokens, on a bus connection of its own.
TEST_F(SingleInstanceOnTheBus, HandOverReachesTheInstanceWithTheUrlAndTokens)
{
    QSignalSpy opened(instance_.get(), &SingleInstance::openRequested);
    const QString url = QStringLiteral("lexmira.extension://oauth?code=C9&code_challenge=X9");
    // It blocks until the instance answers, and the instance is served by this thread.
    auto handedOver = std::async(std::launch::async, [&] {
        return SingleInstance::handOverIfRunning(
            url, {QStringLiteral("token-9"), QStringLiteral("startup-9")});
    });
    ASSERT_TRUE(test::waitUntil([&] {
        return handedOver.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    }));
    EXPECT_EQ(handedOver.get(), std::optional<bool>(true));
    ASSERT_TRUE(test::waitUntil([&] { return opened.count() == 1; }));
    EXPECT_EQ(opened.first().first().toStringList(), QStringList{url});
    const auto launch = opened.first().at(1).value<LaunchActivation>();
    EXPECT_EQ(launch.activationToken, QStringLiteral("token-9"));
    EXPECT_EQ(launch.startupId, QStringLiteral("startup-9"));
}

TEST(HandOverWithNoInstance, AnswersNone)
{
    EXPECT_FALSE(QDBusConnection::sessionBus().interface()->isServiceRegistered(serviceName));
    EXPECT_EQ(SingleInstance::handOverIfRunning(std::nullopt, {}), std::nullopt);
}

// An instance that holds the name but never answers does not keep a later launch forever: the
// call ends at the hand-over's time-out (ten seconds) as a failure, not as "no instance".
TEST(HandOverToAnInstanceThatNeverAnswers, EndsAtTheTimeOutAsAFailure)
{
    sd_bus* opened = nullptr;
    ASSERT_GE(sd_bus_open_user(&opened), 0);
    const std::unique_ptr<sd_bus, decltype(&sd_bus_flush_close_unref)> silent(
        opened, &sd_bus_flush_close_unref);
    // Owns the name and never reads what arrives for it.
    ASSERT_GE(sd_bus_request_name(silent.get(), "com.lexmira.companion", 0), 0);

    QElapsedTimer waited;
    waited.start();
    EXPECT_EQ(SingleInstance::handOverIfRunning(QStringLiteral("lexmira.extension://oauth?code=1"),
                                                {}),
              std::optional<bool>(false));
    EXPECT_GE(waited.elapsed(), 9000) << "it waited for the answer up to its time-out";
}

// The hand-over is built with sd-bus, apart from the adaptor the instance answers with: the call
// it makes must be the one the contract file declares, member and argument types alike.
TEST(HandOverCall, IsTheContractsOpenWithAUrlAndActivateWithout)
{
    const auto contract =
        test::contractInterfaces(QStringLiteral("org.freedesktop.Application.xml"));
    ASSERT_EQ(contract.count(QString::fromLatin1(ApplicationBus::interfaceName)), 1U);
    const test::DBusInterface& application =
        contract.at(QString::fromLatin1(ApplicationBus::interfaceName));

    sd_bus* opened = nullptr;
    ASSERT_GE(sd_bus_open_user(&opened), 0);
    const std::unique_ptr<sd_bus, sd_bus* (*)(sd_bus*)> bus(opened, sd_bus_flush_close_unref);
    for (const bool withUrl : {true, false}) {
        SCOPED_TRACE(withUrl ? "with a URL" : "without a URL");
        const ApplicationBus::Method& method =
            withUrl ? ApplicationBus::open : ApplicationBus::activate;
        const auto declared = application.inSignature(QString::fromLatin1(method.name));
        ASSERT_TRUE(declared.has_value()) << method.name;
        EXPECT_EQ(declared->toStdString(), method.signature);

        sd_bus_message* call = nullptr;
        const char* url = withUrl ? "lexmira.extension://oauth?code=C" : nullptr;
        ASSERT_GE(ApplicationBus::newHandOverCall(bus.get(), url, {"token-1", "startup-1"}, &call),
                  0);
        EXPECT_STREQ(sd_bus_message_get_destination(call), ApplicationBus::serviceName);
        EXPECT_STREQ(sd_bus_message_get_path(call), ApplicationBus::objectPath);
        EXPECT_STREQ(sd_bus_message_get_interface(call), ApplicationBus::interfaceName);
        EXPECT_STREQ(sd_bus_message_get_member(call), method.name);
        EXPECT_EQ(sd_bus_message_get_signature(call, 1), declared->toStdString());
        EXPECT_EQ(sd_bus_message_get_auto_start(call), 0);
        sd_bus_message_unref(call);
    }
}

} // namespace

} // namespace lexmira
