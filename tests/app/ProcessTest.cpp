// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "support/DBusContract.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

namespace lexmira {

namespace {

const QString serviceName = QStringLiteral("com.lexmira.companion");

bool nameOwned()
{
    return QDBusConnection::sessionBus().interface()->isServiceRegistered(serviceName);
}

uint ownerPid()
{
    return QDBusConnection::sessionBus().interface()->servicePid(serviceName).value();
}

// The application as a separate process, ended when the test ends.
class CompanionProcess {
public:
    explicit CompanionProcess(const QStringList& arguments = {},
                              const QProcessEnvironment& environment = test::childEnvironment())
    {
        process_.setProcessEnvironment(environment);
        process_.start(test::companionBinary(), arguments);
        process_.waitForStarted();
    }
    ~CompanionProcess()
    {
        if (process_.state() != QProcess::NotRunning) {
            process_.terminate();
            if (!process_.waitForFinished(5000))
                process_.kill();
            process_.waitForFinished();
        }
        test::waitUntil([] { return !nameOwned(); });
    }
    QProcess& process() { return process_; }

private:
    QProcess process_;
};

QString runToEnd(const QStringList& arguments, int* exitCode)
{
    QProcess process;
    process.setProcessEnvironment(test::childEnvironment());
    process.start(test::companionBinary(), arguments);
    process.waitForFinished(30000);
    *exitCode = process.exitCode();
    return QString::fromUtf8(process.readAllStandardOutput());
}

TEST(Process, VersionPrintsTheBundleVersion)
{
    int exitCode = -1;
    EXPECT_EQ(runToEnd({QStringLiteral("--version")}, &exitCode).trimmed(),
              QStringLiteral("lexmira-companion 1.0.0"));
    EXPECT_EQ(exitCode, 0);
}

TEST(Process, HelpExitsZero)
{
    int exitCode = -1;
    EXPECT_TRUE(
        runToEnd({QStringLiteral("--help")}, &exitCode).contains(QStringLiteral("--version")));
    EXPECT_EQ(exitCode, 0);
}

TEST(Process, LaunchingTwiceLeavesOneInstanceOwningTheName)
{
    CompanionProcess first;
    ASSERT_TRUE(test::waitUntil(nameOwned, std::chrono::seconds(20)));
    const auto firstPid = uint(first.process().processId());
    EXPECT_EQ(ownerPid(), firstPid);

    QProcess second;
    second.setProcessEnvironment(test::childEnvironment());
    second.start(test::companionBinary(), {});
    ASSERT_TRUE(second.waitForFinished(20000));
    EXPECT_EQ(second.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(second.exitCode(), 0);

    EXPECT_EQ(first.process().state(), QProcess::Running);
    EXPECT_EQ(ownerPid(), firstPid);
}

// A later launch hands its request over before anything of Qt is loaded: the dynamic loader's
// own account of what it loaded names no Qt library.
TEST(Process, ALaterLaunchHandsOverWithoutLoadingQt)
{
    CompanionProcess first;
    ASSERT_TRUE(test::waitUntil(nameOwned, std::chrono::seconds(20)));
    const auto firstPid = uint(first.process().processId());

    for (const QStringList& arguments :
         {QStringList{}, QStringList{QStringLiteral("lexmira.extension://oauth?code=L1")}}) {
        QProcess later;
        QProcessEnvironment environment = test::childEnvironment();
        environment.insert(QStringLiteral("LD_DEBUG"), QStringLiteral("files"));
        later.setProcessEnvironment(environment);
        later.start(test::companionBinary(), arguments);
        ASSERT_TRUE(later.waitForFinished(20000));
        EXPECT_EQ(later.exitCode(), 0);
        const QString loaded = QString::fromUtf8(later.readAllStandardError());
        EXPECT_TRUE(loaded.contains(QStringLiteral("libsystemd"))) << qPrintable(loaded);
        EXPECT_FALSE(loaded.contains(QStringLiteral("libQt6"))) << qPrintable(loaded);
    }
    EXPECT_EQ(ownerPid(), firstPid);
}

// The command starts the application it was installed with; without it, it says so.
TEST(Process, TheCommandWithoutItsApplicationSaysSoAndFails)
{
    const QTemporaryDir directory;
    ASSERT_TRUE(directory.isValid());
    const QString alone = directory.filePath(QStringLiteral("bin/lexmira-companion"));
    ASSERT_TRUE(QDir().mkpath(directory.filePath(QStringLiteral("bin"))));
    ASSERT_TRUE(QFile::copy(test::companionBinary(), alone));
    QProcess process;
    process.setProcessEnvironment(test::childEnvironment());
    process.start(alone, {QStringLiteral("--version")});
    ASSERT_TRUE(process.waitForFinished(20000));
    EXPECT_EQ(process.exitCode(), 127);
    EXPECT_TRUE(QString::fromUtf8(process.readAllStandardError())
                    .contains(QStringLiteral("lexmira-companion: cannot start ")));
}

// What the running instance tells the bus about its object is what the contract file declares,
// member for member, so the file and the implementation cannot part.
TEST(Process, TheInstanceDeclaresExactlyTheApplicationContract)
{
    CompanionProcess companion;
    ASSERT_TRUE(test::waitUntil(nameOwned, std::chrono::seconds(20)));
    const auto declared = test::interfacesIn(test::introspect(
        QDBusConnection::sessionBus(), serviceName, QStringLiteral("/com/lexmira/companion")));
    EXPECT_TRUE(
        test::declaresContract(declared, QStringLiteral("org.freedesktop.Application.xml")));
}

TEST(Process, QuitEndsTheProcessAndReleasesTheName)
{
    CompanionProcess companion;
    ASSERT_TRUE(test::waitUntil(nameOwned, std::chrono::seconds(20)));
    companion.process().terminate();
    ASSERT_TRUE(companion.process().waitForFinished(10000));
    EXPECT_TRUE(test::waitUntil([] { return !nameOwned(); }));
}

TEST(Process, UrlThatStartedTheApplicationIsNotLeftInItsCommandLine)
{
    const QByteArray code = "SECRETCODE1234";
    CompanionProcess companion({QStringLiteral("lexmira.extension://oauth?code=%1&code_challenge=X")
                                    .arg(QString::fromLatin1(code))});
    ASSERT_TRUE(test::waitUntil(nameOwned, std::chrono::seconds(20)));
    QFile cmdline(QStringLiteral("/proc/%1/cmdline").arg(companion.process().processId()));
    ASSERT_TRUE(cmdline.open(QIODevice::ReadOnly));
    const QByteArray contents = cmdline.readAll();
    EXPECT_FALSE(contents.contains(code)) << contents.toStdString();
    EXPECT_TRUE(contents.startsWith(QFile::encodeName(test::companionBinary())));
}

// A session bus of the test's own, which it can take away and bring back.
class PrivateBus {
public:
    explicit PrivateBus(const QString& socket)
        : socket_(socket)
    {
        start();
    }
    ~PrivateBus() { stop(); }

    QString address() const { return QStringLiteral("unix:path=") + socket_; }

    void start()
    {
        QFile::remove(socket_);
        daemon_.start(QStringLiteral("dbus-daemon"),
                      {QStringLiteral("--session"), QStringLiteral("--nofork"),
                       QStringLiteral("--address=") + address()});
        daemon_.waitForStarted();
        test::waitUntil([&] { return QFile::exists(socket_); });
    }

    void stop()
    {
        if (daemon_.state() == QProcess::NotRunning)
            return;
        daemon_.kill();
        daemon_.waitForFinished();
    }

private:
    QString socket_;
    QProcess daemon_;
};

bool ownedOn(const QString& address, const QString& connectionName)
{
    auto bus = QDBusConnection::connectToBus(address, connectionName);
    const bool owned = bus.isConnected() && bus.interface()->isServiceRegistered(serviceName);
    QDBusConnection::disconnectFromBus(connectionName);
    return owned;
}

TEST(Process, SessionBusGoingAwayAndComingBackLeavesTheApplicationRunning)
{
    QTemporaryDir dir;
    PrivateBus bus(dir.filePath(QStringLiteral("bus")));
    auto environment = test::childEnvironment();
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), bus.address());
    CompanionProcess companion({}, environment);
    ASSERT_TRUE(test::waitUntil([&] { return ownedOn(bus.address(), QStringLiteral("probe1")); },
                                std::chrono::seconds(20)));

    bus.stop();
    test::spin(std::chrono::milliseconds(1500));
    EXPECT_EQ(companion.process().state(), QProcess::Running);

    bus.start();
    test::spin(std::chrono::milliseconds(1500));
    EXPECT_EQ(companion.process().state(), QProcess::Running);
    // Without a bus connection it cannot be the instance on the new bus; a launch there becomes
    // an instance of its own rather than forwarding into the void.
    EXPECT_FALSE(ownedOn(bus.address(), QStringLiteral("probe2")));
}

TEST(Process, BundleWithoutClientInfoStopsTheProcessNamingEnvCommon)
{
    test::TemporaryBundle bundle;
    bundle.remove(QStringLiteral("clientInfo.json"));
    CompanionProcess companion({}, test::childEnvironment(bundle.path()));
    ASSERT_TRUE(companion.process().waitForFinished(20000));
    EXPECT_EQ(companion.process().exitStatus(), QProcess::CrashExit);
    const QString stderrText = QString::fromUtf8(companion.process().readAllStandardError());
    EXPECT_TRUE(
        stderrText.contains(QStringLiteral("Fatal error: Could not find resource clientInfo.json")))
        << stderrText.toStdString();
    EXPECT_TRUE(stderrText.contains(QStringLiteral("Common/EnvCommon")))
        << stderrText.toStdString();
}

TEST(Process, WithoutASessionBusTheApplicationRunsAndSaysSo)
{
    auto environment = test::childEnvironment();
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                       QStringLiteral("unix:path=/nonexistent/lexmira-bus"));
    CompanionProcess companion({}, environment);
    QString stderrText;
    ASSERT_TRUE(test::waitUntil(
        [&] {
            stderrText += QString::fromUtf8(companion.process().readAllStandardError());
            return stderrText.contains(QStringLiteral("no session bus"));
        },
        std::chrono::seconds(20)))
        << stderrText.toStdString();
    test::spin(std::chrono::milliseconds(500));
    EXPECT_EQ(companion.process().state(), QProcess::Running);
}

} // namespace

} // namespace lexmira
