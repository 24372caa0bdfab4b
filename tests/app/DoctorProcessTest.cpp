// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

// The doctor as a user runs it: the real binary without a display, against the test session's
// real bus, keyring, portal and notification server, a real broker or development peer, and
// HTTPS services on loopback; and against private buses on which a component is missing.

#include "support/BrowserPlayer.h"
#include "support/ChildProcess.h"
#include "support/DevExtensionPeer.h"
#include "support/HttpsTestServer.h"
#include "support/PrivateBus.h"
#include "support/TestSupport.h"

#include <nlohmann/json.hpp>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

namespace lexmira {

namespace {

using namespace std::chrono_literals;

const QString extensionName = QStringLiteral("com.lexmira.companion.ext");
const QString suiteName = QStringLiteral("Q7R2M5K8T1.group.com.lexmira.safari.extension");
const QString chromiumId = QStringLiteral("abcdefghijklmnopabcdefghijklmnop");

struct DoctorRun {
    int exitCode = -1;
    QString out;
    QString err;
    // Each check's verdict by its id, from --json; empty for a table run.
    std::map<std::string, std::string> verdicts;
    std::string verdict;
};

QString hostBinary()
{
    return test::toolBinary(QStringLiteral("lexmira-extension-host"));
}

class DoctorProcessTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(config_.isValid());
        ASSERT_TRUE(
            test::waitUntil([] { return !test::DevExtensionPeer::isOwned(extensionName); }, 20s))
            << "the extension's name is still served by an earlier test";
        server_.respondWith(test::httpStatus(204));
    }

    // The doctor's environment: no display at all, this test's configuration directory and the
    // loopback service, trusted through the test authority.
    QProcessEnvironment environment() const
    {
        QProcessEnvironment environment = test::childEnvironment();
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            environment.remove(QString::fromLatin1(name));
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), config_.path());
        environment.insert(QStringLiteral("LEXMIRA_EXTRA_CA_FILE"),
                           test::HttpsTestServer::caFile());
        environment.insert(QStringLiteral("LEXMIRA_ACCOUNT_HOST"), server_.hostAndPort());
        environment.insert(QStringLiteral("LEXMIRA_ANALYTICS_URL"),
                           QStringLiteral("https://") + server_.hostAndPort());
        environment.insert(QStringLiteral("LEXMIRA_LOG_HOST"), server_.hostAndPort());
        return environment;
    }

    QString suitePath() const
    {
        return config_.path() + QStringLiteral("/group-containers/") + suiteName;
    }

    void makeSuite(mode_t mode) const
    {
        ASSERT_TRUE(QDir().mkpath(suitePath()));
        ASSERT_EQ(::chmod(QFile::encodeName(suitePath()).constData(), mode), 0);
    }

    // Registers the host for Chromium the way a user does, in this test's configuration.
    void installHost(const QProcessEnvironment& environment) const
    {
        QProcess install;
        install.setProcessEnvironment(environment);
        install.start(hostBinary(),
                      {QStringLiteral("install"), QStringLiteral("--browser"),
                       QStringLiteral("chromium"), QStringLiteral("--extension-id"), chromiumId});
        ASSERT_TRUE(install.waitForFinished(30000));
        ASSERT_EQ(install.exitCode(), 0) << install.readAllStandardError().toStdString();
    }

    // Runs the doctor to its end, serving the loopback service meanwhile.
    static DoctorRun run(const QProcessEnvironment& environment, bool json,
                         const QString& program = test::companionBinary(),
                         QStringList arguments = {QStringLiteral("--doctor")})
    {
        if (json)
            arguments << QStringLiteral("--json");
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(program, arguments);
        DoctorRun result;
        if (!process.waitForStarted() ||
            !test::waitUntil([&] { return process.state() == QProcess::NotRunning; }, 150s)) {
            process.kill();
            process.waitForFinished();
            return result;
        }
        result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
        result.out = QString::fromUtf8(process.readAllStandardOutput());
        result.err = QString::fromUtf8(process.readAllStandardError());
        if (json) {
            const auto document = nlohmann::json::parse(result.out.toStdString(), nullptr, false);
            if (document.is_object() && document.contains("checks")) {
                result.verdict = document.value("verdict", "");
                for (const auto& check : document.at("checks"))
                    result.verdicts[check.at("id").get<std::string>()] =
                        check.at("verdict").get<std::string>();
            }
        }
        return result;
    }

    QTemporaryDir config_;
    test::HttpsTestServer server_;
};

std::string verdictOf(const DoctorRun& run, const std::string& id)
{
    const auto found = run.verdicts.find(id);
    return found == run.verdicts.end() ? std::string("(missing)") : found->second;
}

// The real broker on the test session's bus, with no browser connected.
class BrokerProcess {
public:
    explicit BrokerProcess(const QProcessEnvironment& environment)
        : process_(hostBinary(), {QStringLiteral("--broker")}, environment)
    {
        serving_ = test::waitUntil([this] {
                       return test::DevExtensionPeer::isOwned(extensionName) || !process_.running();
                   }) &&
                   test::DevExtensionPeer::isOwned(extensionName);
    }
    ~BrokerProcess()
    {
        process_.process().terminate();
        process_.process().waitForFinished(10000);
        test::waitUntil([] { return !test::DevExtensionPeer::isOwned(extensionName); });
    }
    bool isServing() const { return serving_; }

private:
    test::ChildProcess process_;
    bool serving_ = false;
};

// A Secret Service of its own on a private bus, with a fresh home: unlocked with a login
// keyring as its default collection, or, when not unlocked, with no keyring at all.
class KeyringProcess {
public:
    KeyringProcess(const QString& busAddress, bool unlock)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), busAddress);
        environment.insert(QStringLiteral("HOME"), home_.path());
        environment.insert(QStringLiteral("XDG_DATA_HOME"), home_.path() + QStringLiteral("/data"));
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), home_.path());
        QStringList arguments{QStringLiteral("--foreground"),
                              QStringLiteral("--components=secrets")};
        if (unlock)
            arguments << QStringLiteral("--unlock");
        process_ = std::make_unique<test::ChildProcess>(QStringLiteral("gnome-keyring-daemon"),
                                                        arguments, environment);
        if (unlock) {
            process_->process().write("lexmira-test");
            process_->process().closeWriteChannel();
        }
        environment_ = environment;
    }

    // "dbus-send" to the keyring's service; its output, or none when it failed.
    std::optional<QString> send(const QString& path, const QString& method,
                                const QStringList& arguments) const
    {
        QProcess send;
        send.setProcessEnvironment(environment_);
        send.start(QStringLiteral("dbus-send"),
                   QStringList{QStringLiteral("--session"), QStringLiteral("--print-reply"),
                               QStringLiteral("--dest=org.freedesktop.secrets"), path, method} +
                       arguments);
        if (!send.waitForFinished(10000) || send.exitCode() != 0)
            return std::nullopt;
        return QString::fromUtf8(send.readAllStandardOutput());
    }

    bool waitUntilServing() const
    {
        return test::waitUntil(
            [this] {
                return send(QStringLiteral("/org/freedesktop/secrets"),
                            QStringLiteral("org.freedesktop.Secret.Service.ReadAlias"),
                            {QStringLiteral("string:default")})
                    .has_value();
            },
            20s);
    }

private:
    QTemporaryDir home_;
    QProcessEnvironment environment_;
    std::unique_ptr<test::ChildProcess> process_;
};

TEST_F(DoctorProcessTest, AHealthySessionPassesWithExitZero)
{
    makeSuite(0700);
    const QProcessEnvironment environment = this->environment();
    installHost(environment);
    const BrokerProcess broker(environment);
    ASSERT_TRUE(broker.isServing());
    test::BrowserPlayer browser(test::BrowserPlayer::Form::chromium, chromiumId, environment);
    ASSERT_TRUE(browser.hello());

    const DoctorRun doctor = run(environment, true);
    EXPECT_EQ(doctor.exitCode, 0) << doctor.out.toStdString() << doctor.err.toStdString();
    EXPECT_NE(doctor.verdict, "fail");
    for (const char* id : {"bus.reachable",
                           "bus.companion",
                           "suite.path",
                           "suite.owner",
                           "suite.mode",
                           "suite.writable",
                           "suite.watchable",
                           "secrets.reachable",
                           "secrets.default",
                           "secrets.unlocked",
                           "extension.installed",
                           "portal.settings",
                           "notifications.server",
                           "extension.connected",
                           "extension.state",
                           "service.account.resolves",
                           "service.account.connects",
                           "service.account.tls",
                           "service.account.first-byte",
                           "service.analytics.resolves",
                           "service.analytics.connects",
                           "service.analytics.tls",
                           "service.analytics.first-byte",
                           "service.log.resolves",
                           "service.log.connects",
                           "service.log.tls",
                           "service.log.first-byte"})
        EXPECT_EQ(verdictOf(doctor, id), "ok") << id << "\n" << doctor.out.toStdString();
    // Running, but the bus of the test session has no service file to start it again.
    EXPECT_EQ(verdictOf(doctor, "extension.activatable"), "warning");
    // It asked each service once for its first byte.
    EXPECT_EQ(server_.requests().size(), 3u);
}

TEST_F(DoctorProcessTest, TheBrokerNamesTheConnectedBrowser)
{
    const QProcessEnvironment environment = this->environment();
    installHost(environment);
    const BrokerProcess broker(environment);
    ASSERT_TRUE(broker.isServing());

    const DoctorRun idle = run(environment, true);
    EXPECT_EQ(verdictOf(idle, "extension.connected"), "warning");
    EXPECT_EQ(verdictOf(idle, "extension.state"), "warning");

    test::BrowserPlayer browser(test::BrowserPlayer::Form::chromium, chromiumId, environment);
    ASSERT_TRUE(browser.hello());
    const DoctorRun connected = run(environment, false);
    EXPECT_TRUE(connected.out.contains(
        QRegularExpression(QStringLiteral("browsers connected +ok +Chromium \\(extension ") +
                           chromiumId + QStringLiteral(", since \\d{4}-"))))
        << connected.out.toStdString();
    EXPECT_TRUE(connected.out.contains(
        QRegularExpression(QStringLiteral("Extension +state +ok +enabled in Chromium\n"))))
        << connected.out.toStdString();
}

TEST_F(DoctorProcessTest, TheTableGivesTheSameVerdictsAsTheJson)
{
    makeSuite(0777);
    QProcessEnvironment environment = this->environment();
    environment.remove(QStringLiteral("LEXMIRA_EXTRA_CA_FILE"));

    const DoctorRun json = run(environment, true);
    const DoctorRun table = run(environment, false);
    ASSERT_FALSE(json.verdicts.empty()) << json.out.toStdString();
    EXPECT_EQ(table.exitCode, json.exitCode);
    const QStringList lines = table.out.split(QLatin1Char('\n'));
    std::map<std::string, int> counts;
    for (const auto& [id, verdict] : json.verdicts)
        ++counts[verdict];
    const auto linesWith = [&lines](const QString& word) {
        int count = 0;
        for (const QString& line : lines)
            if (line.contains(QStringLiteral("  ") + word + QStringLiteral("  ")) ||
                line.endsWith(QStringLiteral("  ") + word))
                ++count;
        return count;
    };
    EXPECT_EQ(linesWith(QStringLiteral("FAIL")), counts["fail"]) << table.out.toStdString();
    EXPECT_EQ(linesWith(QStringLiteral("warning")), counts["warning"]) << table.out.toStdString();
    EXPECT_EQ(linesWith(QStringLiteral("ok")), counts["ok"]) << table.out.toStdString();
    EXPECT_TRUE(table.out.contains(QStringLiteral("What to do: chmod 700")))
        << table.out.toStdString();
    EXPECT_TRUE(table.out.contains(QStringLiteral("check(s) failed")));
}

TEST_F(DoctorProcessTest, WithoutASessionBusEveryComponentOnItFails)
{
    makeSuite(0700);
    QProcessEnvironment environment = this->environment();
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                       QStringLiteral("unix:path=") + config_.path() + QStringLiteral("/no-bus"));

    const DoctorRun doctor = run(environment, true);
    EXPECT_EQ(doctor.exitCode, 1) << doctor.out.toStdString();
    EXPECT_EQ(doctor.verdict, "fail");
    for (const char* id : {"bus.reachable", "secrets.reachable", "extension.activatable",
                           "portal.settings", "notifications.server"})
        EXPECT_EQ(verdictOf(doctor, id), "fail") << id;
    // What does not need the bus is still judged.
    EXPECT_EQ(verdictOf(doctor, "suite.watchable"), "ok");
    EXPECT_EQ(verdictOf(doctor, "service.account.tls"), "ok");
}

TEST_F(DoctorProcessTest, OnABusWithoutDesktopServicesTheirChecksFail)
{
    const test::PrivateBus bus;
    ASSERT_TRUE(bus.isRunning());
    QProcessEnvironment environment = this->environment();
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), bus.address());

    const DoctorRun doctor = run(environment, true);
    EXPECT_EQ(doctor.exitCode, 1);
    EXPECT_EQ(verdictOf(doctor, "bus.reachable"), "ok");
    EXPECT_EQ(verdictOf(doctor, "secrets.reachable"), "fail");
    EXPECT_EQ(verdictOf(doctor, "portal.settings"), "fail");
    EXPECT_EQ(verdictOf(doctor, "notifications.server"), "fail");
    EXPECT_EQ(verdictOf(doctor, "extension.activatable"), "fail");
}

TEST_F(DoctorProcessTest, ALockedDefaultCollectionFails)
{
    const test::PrivateBus bus;
    ASSERT_TRUE(bus.isRunning());
    const KeyringProcess keyring(bus.address(), true);
    ASSERT_TRUE(keyring.waitUntilServing());
    QProcessEnvironment environment = this->environment();
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), bus.address());

    const DoctorRun unlocked = run(environment, true);
    EXPECT_EQ(verdictOf(unlocked, "secrets.reachable"), "ok");
    EXPECT_EQ(verdictOf(unlocked, "secrets.default"), "ok");
    EXPECT_EQ(verdictOf(unlocked, "secrets.unlocked"), "ok") << unlocked.out.toStdString();

    ASSERT_TRUE(keyring.send(QStringLiteral("/org/freedesktop/secrets"),
                             QStringLiteral("org.freedesktop.Secret.Service.Lock"),
                             {QStringLiteral("array:objpath:/org/freedesktop/secrets/collection/"
                                             "login")}));
    const DoctorRun locked = run(environment, true);
    EXPECT_EQ(locked.exitCode, 1);
    EXPECT_EQ(verdictOf(locked, "secrets.default"), "ok");
    EXPECT_EQ(verdictOf(locked, "secrets.unlocked"), "fail") << locked.out.toStdString();
}

TEST_F(DoctorProcessTest, AKeyringWithoutADefaultCollectionFails)
{
    const test::PrivateBus bus;
    ASSERT_TRUE(bus.isRunning());
    const KeyringProcess keyring(bus.address(), false);
    ASSERT_TRUE(keyring.waitUntilServing());
    QProcessEnvironment environment = this->environment();
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), bus.address());

    const DoctorRun doctor = run(environment, true);
    EXPECT_EQ(verdictOf(doctor, "secrets.reachable"), "ok");
    EXPECT_EQ(verdictOf(doctor, "secrets.default"), "fail") << doctor.out.toStdString();
}

TEST_F(DoctorProcessTest, ASuiteOthersCanWriteFails)
{
    makeSuite(0777);
    const DoctorRun doctor = run(environment(), true);
    EXPECT_EQ(doctor.exitCode, 1);
    EXPECT_EQ(verdictOf(doctor, "suite.mode"), "fail");
    EXPECT_EQ(verdictOf(doctor, "suite.owner"), "ok");
}

TEST_F(DoctorProcessTest, ASuiteOthersCanReadIsAWarning)
{
    makeSuite(0755);
    const DoctorRun doctor = run(environment(), true);
    EXPECT_EQ(verdictOf(doctor, "suite.mode"), "warning");
}

TEST_F(DoctorProcessTest, ASuiteOwnedBySomeoneElseFails)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "giving the suite to another user takes root";
    makeSuite(0700);
    ASSERT_EQ(::chown(QFile::encodeName(suitePath()).constData(), 65534, 65534), 0);
    const DoctorRun doctor = run(environment(), true);
    EXPECT_EQ(doctor.exitCode, 1);
    EXPECT_EQ(verdictOf(doctor, "suite.owner"), "fail") << doctor.out.toStdString();
}

TEST_F(DoctorProcessTest, AMissingSuiteIsAWarningAndIsNotCreated)
{
    const DoctorRun doctor = run(environment(), true);
    EXPECT_EQ(verdictOf(doctor, "suite.path"), "warning");
    EXPECT_FALSE(QFileInfo::exists(suitePath()));
}

TEST_F(DoctorProcessTest, AHostNotInstalledFailsAndAnInstalledOneIsNamed)
{
    const QProcessEnvironment environment = this->environment();
    const DoctorRun before = run(environment, true);
    EXPECT_EQ(verdictOf(before, "extension.installed"), "fail");
    EXPECT_EQ(before.exitCode, 1);

    installHost(environment);
    const DoctorRun after = run(environment, false);
    EXPECT_TRUE(after.out.contains(
        QRegularExpression(QStringLiteral("Extension host +installed for +ok +Chromium\n"))))
        << after.out.toStdString();
}

TEST_F(DoctorProcessTest, TheBrokerIsActivatableOnlyWhereTheBusHasItsServiceFile)
{
    const DoctorRun here = run(environment(), true);
    EXPECT_EQ(verdictOf(here, "extension.activatable"), "fail");
    EXPECT_EQ(verdictOf(here, "extension.connected"), "warning");

    const test::PrivateBus bus(
        std::map<QString, QString>{{extensionName, hostBinary() + QStringLiteral(" --broker")}});
    ASSERT_TRUE(bus.isRunning());
    QProcessEnvironment environment = this->environment();
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), bus.address());
    const DoctorRun there = run(environment, true);
    EXPECT_EQ(verdictOf(there, "extension.activatable"), "ok") << there.out.toStdString();
    // Asking does not start it.
    EXPECT_EQ(verdictOf(there, "extension.state"), "warning");
}

TEST_F(DoctorProcessTest, TheDevelopmentPeerReportsTheExtensionsState)
{
    {
        const test::DevExtensionPeer peer;
        ASSERT_TRUE(peer.isServing());
        const DoctorRun doctor = run(environment(), false);
        EXPECT_TRUE(doctor.out.contains(
            QRegularExpression(QStringLiteral("Extension +state +ok +enabled"))))
            << doctor.out.toStdString();
    }
    {
        const test::DevExtensionPeer peer({QStringLiteral("--disabled")});
        ASSERT_TRUE(peer.isServing());
        const DoctorRun doctor = run(environment(), true);
        EXPECT_EQ(verdictOf(doctor, "extension.state"), "warning");
    }
}

TEST_F(DoctorProcessTest, AServiceSignedByAnUnknownAuthorityFails)
{
    QProcessEnvironment environment = this->environment();
    environment.remove(QStringLiteral("LEXMIRA_EXTRA_CA_FILE"));
    const DoctorRun doctor = run(environment, true);
    EXPECT_EQ(doctor.exitCode, 1);
    EXPECT_EQ(verdictOf(doctor, "service.account.connects"), "ok");
    EXPECT_EQ(verdictOf(doctor, "service.account.tls"), "fail");
    EXPECT_EQ(verdictOf(doctor, "service.log.tls"), "fail");
    EXPECT_EQ(run(environment, false).out.count(QStringLiteral("LEXMIRA_EXTRA_CA_FILE")), 3);
}

TEST_F(DoctorProcessTest, AClosedPortFailsTheConnection)
{
    QProcessEnvironment environment = this->environment();
    environment.insert(QStringLiteral("LEXMIRA_LOG_HOST"),
                       QStringLiteral("127.0.0.1:%1").arg(test::HttpsTestServer::closedPort()));
    const DoctorRun doctor = run(environment, true);
    EXPECT_EQ(verdictOf(doctor, "service.account.tls"), "ok");
    EXPECT_EQ(verdictOf(doctor, "service.log.connects"), "fail");
    EXPECT_EQ(verdictOf(doctor, "service.log.tls"), "(missing)");
}

TEST_F(DoctorProcessTest, AServiceThatNeverAnswersFailsInsteadOfHanging)
{
    test::HttpsTestServer silent;
    silent.holdRequests();
    QProcessEnvironment environment = this->environment();
    environment.insert(QStringLiteral("LEXMIRA_ACCOUNT_HOST"), silent.hostAndPort());
    const DoctorRun doctor = run(environment, true);
    EXPECT_EQ(doctor.exitCode, 1) << doctor.out.toStdString();
    EXPECT_EQ(verdictOf(doctor, "service.account.tls"), "ok");
    EXPECT_EQ(verdictOf(doctor, "service.account.first-byte"), "fail");
    EXPECT_EQ(silent.heldCount(), 1u);
    EXPECT_EQ(verdictOf(doctor, "service.log.first-byte"), "ok");
}

TEST_F(DoctorProcessTest, AnUnresolvableHostFails)
{
    QProcessEnvironment environment = this->environment();
    environment.insert(QStringLiteral("LEXMIRA_ANALYTICS_URL"),
                       QStringLiteral("https://lexmira-doctor-test.invalid"));
    const DoctorRun doctor = run(environment, true);
    EXPECT_EQ(doctor.exitCode, 1);
    EXPECT_EQ(verdictOf(doctor, "service.analytics.resolves"), "fail");
    EXPECT_EQ(verdictOf(doctor, "service.analytics.tls"), "(missing)");
    EXPECT_EQ(verdictOf(doctor, "service.account.first-byte"), "ok");
}

TEST_F(DoctorProcessTest, AnUnusableConfiguredHostFails)
{
    QProcessEnvironment environment = this->environment();
    environment.insert(QStringLiteral("LEXMIRA_ANALYTICS_URL"), QStringLiteral("ftp://nowhere"));
    const DoctorRun doctor = run(environment, true);
    EXPECT_EQ(verdictOf(doctor, "service.analytics.address"), "fail");
}

TEST_F(DoctorProcessTest, TheDoctorDoesNotStartTheCompanion)
{
    const DoctorRun doctor = run(environment(), true);
    ASSERT_FALSE(doctor.verdicts.empty());
    EXPECT_EQ(verdictOf(doctor, "bus.companion"), "ok");
    EXPECT_FALSE(test::DevExtensionPeer::isOwned(QStringLiteral("com.lexmira.companion")));
}

TEST_F(DoctorProcessTest, TheHostsStatusShowsTheExtensionChecks)
{
    const QProcessEnvironment environment = this->environment();
    installHost(environment);
    const test::DevExtensionPeer peer;
    ASSERT_TRUE(peer.isServing());
    const DoctorRun status = run(environment, false, hostBinary(), {QStringLiteral("status")});
    EXPECT_EQ(status.exitCode, 0);
    EXPECT_TRUE(status.out.contains(QStringLiteral("Checks:\n"))) << status.out.toStdString();
    EXPECT_TRUE(status.out.contains(
        QRegularExpression(QStringLiteral("Extension host +installed for +ok +Chromium\n"))))
        << status.out.toStdString();
    EXPECT_TRUE(
        status.out.contains(QRegularExpression(QStringLiteral("Extension +state +ok +enabled"))))
        << status.out.toStdString();
    EXPECT_TRUE(status.out.contains(
        QRegularExpression(QStringLiteral("activatable +warning +it runs \\(process \\d+\\)"))))
        << status.out.toStdString();
}

} // namespace

} // namespace lexmira
