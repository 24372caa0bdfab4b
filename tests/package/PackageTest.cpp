// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "support/ChildProcess.h"
#include "support/DevExtensionPeer.h"
#include "support/TestSupport.h"
#include "util/Json.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <sys/types.h>

#include <algorithm>
#include <csignal>
#include <memory>

namespace lexmira {

namespace {

using namespace std::chrono_literals;

const QString packageDir = QStringLiteral(LEXMIRA_PACKAGE_DIR);
const QString companionName = QStringLiteral("com.lexmira.companion");
const QString extensionName = QStringLiteral("com.lexmira.companion.ext");

bool packageWanted()
{
    return qEnvironmentVariable("CI") == QStringLiteral("true") ||
           qEnvironmentVariable("LEXMIRA_TEST_PACKAGE") == QStringLiteral("1");
}

struct Finished {
    int exitCode = -1;
    QString out;
    QString err;
};

// Runs program to its end (killed after timeout); exitCode is -1 when it did not exit normally.
Finished run(const QString& program, const QStringList& arguments,
             const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment(),
             std::chrono::milliseconds timeout = 60s)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    if (!process.waitForFinished(static_cast<int>(timeout.count())))
        process.kill();
    process.waitForFinished();
    Finished finished;
    if (process.exitStatus() == QProcess::NormalExit && process.error() != QProcess::FailedToStart)
        finished.exitCode = process.exitCode();
    finished.out = QString::fromUtf8(process.readAllStandardOutput());
    finished.err = QString::fromUtf8(process.readAllStandardError());
    return finished;
}

QString readText(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

// The binary package built into the package directory (not its -dbgsym companion).
QString builtDeb()
{
    const QStringList debs =
        QDir(packageDir).entryList({QStringLiteral("lexmira-companion_*.deb")}, QDir::Files);
    return debs.size() == 1 ? QDir(packageDir).filePath(debs.first()) : QString();
}

QString builtChanges()
{
    const QStringList changes =
        QDir(packageDir).entryList({QStringLiteral("lexmira-companion_*.changes")}, QDir::Files);
    return changes.size() == 1 ? QDir(packageDir).filePath(changes.first()) : QString();
}

// The package unpacked into a throwaway root, and a session bus of the suite's own that starts
// the unpacked programs. The test process and everything it starts use that bus.
class Package : public ::testing::Test {
public:
    static void SetUpTestSuite()
    {
        if (!packageWanted() || builtDeb().isEmpty())
            return;
        root_ = std::make_unique<QTemporaryDir>();
        if (run(QStringLiteral("dpkg-deb"), {QStringLiteral("-x"), builtDeb(), root_->path()})
                .exitCode != 0) {
            root_.reset();
            return;
        }
        // What the desktop-file-utils trigger does when the package is installed: the desktop's
        // index of the URL schemes and types that installed applications handle.
        if (run(QStringLiteral("update-desktop-database"),
                {installed(QStringLiteral("/usr/share/applications"))})
                .exitCode != 0) {
            root_.reset();
            return;
        }
        startBus();
    }

    static void TearDownTestSuite()
    {
        bus_.reset();
        busDir_.reset();
        root_.reset();
    }

protected:
    void SetUp() override
    {
        if (!packageWanted())
            GTEST_SKIP() << "the Debian package is built and tried only when CI=true or "
                            "LEXMIRA_TEST_PACKAGE=1";
        ASSERT_FALSE(builtDeb().isEmpty()) << "no package in " << qPrintable(packageDir);
        ASSERT_TRUE(root_) << "the package could not be unpacked";
        ASSERT_TRUE(bus_ && bus_->running()) << "the suite's session bus did not start";
    }

    // The programs the bus started for a test leave with it.
    void TearDown() override
    {
        if (!bus_)
            return;
        // The companion first: it may start the broker as long as it runs.
        for (const QString& name : {companionName, extensionName}) {
            EXPECT_TRUE(test::waitUntil([&] {
                const auto pid = QDBusConnection::sessionBus().interface()->servicePid(name);
                if (!pid.isValid())
                    return true;
                if (isUnpacked(pid.value()))
                    ::kill(static_cast<pid_t>(pid.value()), SIGTERM);
                return false;
            })) << qPrintable(name);
        }
    }

    static QString installed(const QString& path) { return root_->path() + path; }

    // The environment of a process of this session that sees the unpacked package as installed.
    static QProcessEnvironment environment()
    {
        auto environment = test::childEnvironment();
        // The installed companion finds its bundle beside its binary.
        environment.remove(QStringLiteral("LEXMIRA_BUNDLE_DIR"));
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), busAddress());
        // The desktop offers an application only when the program its entry runs is found.
        environment.insert(QStringLiteral("PATH"), installed(QStringLiteral("/usr/bin:")) +
                                                       environment.value(QStringLiteral("PATH")));
        environment.insert(QStringLiteral("XDG_DATA_DIRS"),
                           installed(QStringLiteral("/usr/share")) +
                               QStringLiteral(":/usr/local/share:/usr/share"));
        return environment;
    }

    static bool isOwned(const QString& name)
    {
        return QDBusConnection::sessionBus().interface()->isServiceRegistered(name).value();
    }

    // Whether the process runs a program of the unpacked package.
    static bool isUnpacked(uint pid)
    {
        const QString program = QFileInfo(QStringLiteral("/proc/%1/exe").arg(pid)).symLinkTarget();
        return program.startsWith(installed(QStringLiteral("/usr/bin/"))) ||
               program.startsWith(installed(QStringLiteral("/usr/libexec/")));
    }

    static QString ownerProgram(const QString& name)
    {
        const auto pid = QDBusConnection::sessionBus().interface()->servicePid(name);
        return pid.isValid()
                   ? QFileInfo(QStringLiteral("/proc/%1/exe").arg(pid.value())).symLinkTarget()
                   : QString();
    }

    // Whether the session bus started the process that owns name (D-Bus activation), rather
    // than a launcher running the program itself: the bus tells what it starts where it was
    // started from.
    static bool startedByTheBus(const QString& name)
    {
        const auto pid = QDBusConnection::sessionBus().interface()->servicePid(name);
        if (!pid.isValid())
            return false;
        QFile file(QStringLiteral("/proc/%1/environ").arg(pid.value()));
        if (!file.open(QIODevice::ReadOnly))
            return false;
        const QByteArray starter = QByteArray("DBUS_STARTER_ADDRESS=") + busAddress().toUtf8();
        const QList<QByteArray> variables = file.readAll().split('\0');
        return std::any_of(variables.begin(), variables.end(), [&](const QByteArray& variable) {
            return variable.startsWith(starter);
        });
    }

    static Finished activate()
    {
        return run(QStringLiteral("gdbus"),
                   {QStringLiteral("call"), QStringLiteral("--session"), QStringLiteral("--dest"),
                    companionName, QStringLiteral("--object-path"),
                    QStringLiteral("/com/lexmira/companion"), QStringLiteral("--method"),
                    QStringLiteral("org.freedesktop.Application.Activate"), QStringLiteral("{}")},
                   environment());
    }

private:
    static QString busAddress()
    {
        return QStringLiteral("unix:path=") + busDir_->filePath(QStringLiteral("bus"));
    }

    // A session bus whose service files are the package's. The unpacked package does not live at
    // /, so the copies the bus reads name the programs under the throwaway root; the installed
    // files themselves are checked as they are.
    static void startBus()
    {
        busDir_ = std::make_unique<QTemporaryDir>();
        const QString services = busDir_->filePath(QStringLiteral("services"));
        QDir().mkpath(services);
        const QDir installedServices(installed(QStringLiteral("/usr/share/dbus-1/services")));
        for (const QString& name : installedServices.entryList(QDir::Files)) {
            QString text = readText(installedServices.filePath(name));
            for (const QString& directory :
                 {QStringLiteral("/usr/bin/"), QStringLiteral("/usr/libexec/")})
                text.replace(QStringLiteral("\nExec=") + directory,
                             QStringLiteral("\nExec=") + installed(directory));
            QFile copy(QDir(services).filePath(name));
            if (!copy.open(QIODevice::WriteOnly) || copy.write(text.toUtf8()) < 0)
                return;
        }
        const QString config = busDir_->filePath(QStringLiteral("session.conf"));
        QFile file(config);
        if (!file.open(QIODevice::WriteOnly))
            return;
        file.write(QStringLiteral(R"(<!DOCTYPE busconfig PUBLIC
 "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>%1</listen>
  <auth>EXTERNAL</auth>
  <servicedir>%2</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)")
                       .arg(busAddress(), services)
                       .toUtf8());
        file.close();

        // What the bus starts inherits its environment, and with it this bus as its session.
        bus_ = std::make_unique<test::ChildProcess>(
            QStringLiteral("dbus-daemon"),
            QStringList{QStringLiteral("--nofork"), QStringLiteral("--config-file=") + config},
            environment());
        const QString socket = busDir_->filePath(QStringLiteral("bus"));
        if (!test::waitUntil([&] { return QFile::exists(socket) || !bus_->running(); }) ||
            !bus_->running()) {
            bus_.reset();
            return;
        }
        // From here on this process's session bus is the suite's.
        qputenv("DBUS_SESSION_BUS_ADDRESS", busAddress().toUtf8());
    }

    static inline std::unique_ptr<QTemporaryDir> root_;
    static inline std::unique_ptr<QTemporaryDir> busDir_;
    static inline std::unique_ptr<test::ChildProcess> bus_;
};

TEST_F(Package, InstalledProgramsPrintTheirVersion)
{
    const auto companion = run(installed(QStringLiteral("/usr/bin/lexmira-companion")),
                               {QStringLiteral("--version")}, environment());
    EXPECT_EQ(companion.exitCode, 0) << qPrintable(companion.err);
    EXPECT_TRUE(companion.out.contains(QStringLiteral(LEXMIRA_VERSION)))
        << qPrintable(companion.out);

    const auto host = run(installed(QStringLiteral("/usr/bin/lexmira-extension-host")),
                          {QStringLiteral("--version")}, environment());
    EXPECT_EQ(host.exitCode, 0) << qPrintable(host.err);
    EXPECT_TRUE(host.out.contains(QStringLiteral(LEXMIRA_VERSION))) << qPrintable(host.out);
}

TEST_F(Package, InstallsTheDesktopFilesWhereTheDesktopLooksForThem)
{
    for (const char* path : {
             "/usr/share/applications/com.lexmira.companion.desktop",
             "/usr/share/metainfo/com.lexmira.companion.metainfo.xml",
             "/usr/share/icons/hicolor/scalable/apps/com.lexmira.companion.svg",
             "/usr/libexec/lexmira-companion",
             "/usr/share/man/man1/lexmira-companion.1.gz",
             "/usr/share/man/man1/lexmira-extension-host.1.gz",
             "/usr/share/lexmira-companion/Info.json",
             "/usr/share/lexmira-companion/translations/lexmira_de.qm",
         })
        EXPECT_TRUE(QFile::exists(installed(QString::fromLatin1(path)))) << path;
    for (int size : {16, 22, 24, 32, 48, 64, 128, 256, 512})
        EXPECT_TRUE(QFile::exists(installed(
            QStringLiteral("/usr/share/icons/hicolor/%1x%1/apps/com.lexmira.companion.png")
                .arg(size))))
            << size;
}

TEST_F(Package, ServiceFilesNameTheInstalledPrograms)
{
    const QString services = installed(QStringLiteral("/usr/share/dbus-1/services/"));
    const QString companion = readText(services + QStringLiteral("com.lexmira.companion.service"));
    EXPECT_TRUE(companion.contains(QStringLiteral("\nName=com.lexmira.companion\n")))
        << qPrintable(companion);
    // The bus starts the application itself; the command is for launches that hand over.
    EXPECT_TRUE(companion.contains(QStringLiteral("\nExec=/usr/libexec/lexmira-companion\n")))
        << qPrintable(companion);

    const QString broker = readText(services + QStringLiteral("com.lexmira.companion.ext.service"));
    EXPECT_TRUE(broker.contains(QStringLiteral("\nName=com.lexmira.companion.ext\n")))
        << qPrintable(broker);
    EXPECT_TRUE(
        broker.contains(QStringLiteral("\nExec=/usr/bin/lexmira-extension-host --broker\n")))
        << qPrintable(broker);
}

TEST_F(Package, SessionBusStartsTheCompanionWhenALauncherActivatesIt)
{
    ASSERT_FALSE(isOwned(companionName));
    const auto call = activate();
    EXPECT_EQ(call.exitCode, 0) << qPrintable(call.err);
    EXPECT_EQ(call.out.trimmed(), QStringLiteral("()"));
    EXPECT_EQ(ownerProgram(companionName),
              installed(QStringLiteral("/usr/libexec/lexmira-companion")));
    EXPECT_TRUE(startedByTheBus(companionName));

    // A second activation reaches the same instance.
    const auto owner = QDBusConnection::sessionBus().interface()->servicePid(companionName).value();
    EXPECT_EQ(activate().exitCode, 0);
    EXPECT_EQ(QDBusConnection::sessionBus().interface()->servicePid(companionName).value(), owner);
}

TEST_F(Package, XdgOpenHandsTheSignInUrlToTheRunningInstanceThroughTheDesktopEntry)
{
    ASSERT_FALSE(isOwned(extensionName));
    const test::DevExtensionPeer peer({}, test::DevExtensionPeer::defaultName(), environment());
    ASSERT_TRUE(peer.isServing());
    ASSERT_EQ(activate().exitCode, 0);
    const auto owner = QDBusConnection::sessionBus().interface()->servicePid(companionName).value();

    const auto opened =
        run(QStringLiteral("xdg-open"),
            {QStringLiteral("lexmira.extension://oauth?code=4%2FP7q&code_challenge=E9Me")},
            environment());
    EXPECT_EQ(opened.exitCode, 0) << qPrintable(opened.err);

    ASSERT_TRUE(peer.waitForDispatch("oauthExchange", 20s));
    const auto exchanges = peer.dispatches("oauthExchange");
    ASSERT_EQ(exchanges.size(), 1u);
    const auto userInfo = Json::decode(QByteArray::fromStdString(exchanges[0]["userInfo"]));
    ASSERT_TRUE(userInfo);
    EXPECT_EQ(*userInfo, (nlohmann::ordered_json{{"code", "4/P7q"}, {"codeChallenge", "E9Me"}}));
    EXPECT_EQ(QDBusConnection::sessionBus().interface()->servicePid(companionName).value(), owner)
        << "the running instance took the URL";
}

TEST_F(Package, XdgOpenStartsTheCompanionWhenNoneRunsAndTheStartedOneTakesTheUrl)
{
    ASSERT_FALSE(isOwned(extensionName));
    const test::DevExtensionPeer peer({}, test::DevExtensionPeer::defaultName(), environment());
    ASSERT_TRUE(peer.isServing());
    ASSERT_FALSE(isOwned(companionName));

    const auto opened =
        run(QStringLiteral("xdg-open"),
            {QStringLiteral("lexmira.extension://oauth?code=C2&code_challenge=X2")}, environment());
    EXPECT_EQ(opened.exitCode, 0) << qPrintable(opened.err);

    ASSERT_TRUE(peer.waitForDispatch("oauthExchange", 20s));
    const auto exchanges = peer.dispatches("oauthExchange");
    ASSERT_EQ(exchanges.size(), 1u);
    const auto userInfo = Json::decode(QByteArray::fromStdString(exchanges[0]["userInfo"]));
    ASSERT_TRUE(userInfo);
    EXPECT_EQ(*userInfo, (nlohmann::ordered_json{{"code", "C2"}, {"codeChallenge", "X2"}}));
    EXPECT_EQ(ownerProgram(companionName),
              installed(QStringLiteral("/usr/libexec/lexmira-companion")))
        << "the started companion keeps running as the instance";
    EXPECT_TRUE(startedByTheBus(companionName)) << "the desktop entry asks for D-Bus activation";
}

TEST_F(Package, MetainfoPassesStrictValidation)
{
    const auto result =
        run(QStringLiteral("appstreamcli"),
            {QStringLiteral("validate"), QStringLiteral("--strict"), QStringLiteral("--no-net"),
             QStringLiteral("--pedantic"),
             installed(QStringLiteral("/usr/share/metainfo/com.lexmira.companion.metainfo.xml"))});
    EXPECT_EQ(result.exitCode, 0) << qPrintable(result.out + result.err);
}

TEST_F(Package, DesktopEntryValidatesWithoutAHint)
{
    const auto result =
        run(QStringLiteral("desktop-file-validate"),
            {installed(QStringLiteral("/usr/share/applications/com.lexmira.companion.desktop"))});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out + result.err, QString());
}

TEST_F(Package, LintianFindsNoErrorOrWarning)
{
    const QString changes = builtChanges();
    ASSERT_FALSE(changes.isEmpty());
    const auto result = run(QStringLiteral("lintian"),
                            {QStringLiteral("--fail-on"), QStringLiteral("error,warning"),
                             QStringLiteral("--display-info"), changes},
                            QProcessEnvironment::systemEnvironment(), 240s);
    EXPECT_EQ(result.exitCode, 0) << qPrintable(result.out + result.err);
}

} // namespace

} // namespace lexmira
