// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "extensionhost/Browsers.h"
#include "extensionhost/InstallCommand.h"
#include "extensionhost/Installations.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTextStream>

#include <gtest/gtest.h>

#include <ostream>

namespace lexmira {

namespace {

const QString kChromiumId = QStringLiteral("abcdefghijklmnopabcdefghijklmnop");
const QString kOtherChromiumId = QStringLiteral("ponmlkjihgfedcbaponmlkjihgfedcba");
const QString kFirefoxId = QStringLiteral("extension@lexmira.com");
const QString kHostPath = QStringLiteral("/opt/lexmira/bin/lexmira-extension-host");
const QString kManifestName = QStringLiteral("com.lexmira.companion.ext.json");

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeAll(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

QStringList entries(const QString& dir)
{
    return QDir(dir).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
}

class InstallTest : public ::testing::Test {
protected:
    QString home() const { return home_.path(); }
    QString configHome() const { return home() + QStringLiteral("/config"); }
    Installations installations() const
    {
        return Installations(configHome(), home(), [this] { return now_.addSecs(ticks_++); });
    }
    QString idFor(const QString& browser) const
    {
        return browser == QStringLiteral("firefox") ? kFirefoxId : kChromiumId;
    }

    QTemporaryDir home_;
    QDateTime now_ = QDateTime(QDate(2026, 11, 23), QTime(5, 0), Qt::UTC);
    mutable int ticks_ = 0;
};

struct BrowserCase {
    const char* key;
    const char* manifestDir;        // relative to the temporary home; "config" is the config home
    const char* defaultExecutables; // the candidates, the first of which is recorded
    QByteArray allowedLine;
};

void PrintTo(const BrowserCase& browserCase, std::ostream* os)
{
    *os << browserCase.key;
}

class EachBrowser : public InstallTest, public ::testing::WithParamInterface<BrowserCase> {};

const QByteArray kChromiumAllowed =
    "  \"allowed_origins\": [\n    \"chrome-extension://abcdefghijklmnopabcdefghijklmnop/\"\n  ]\n";
const QByteArray kFirefoxAllowed =
    "  \"allowed_extensions\": [\n    \"extension@lexmira.com\"\n  ]\n";

TEST_P(EachBrowser, InstallWritesTheExactManifestInTheBrowsersUserDirectory)
{
    const BrowserCase& c = GetParam();
    const QString key = QString::fromLatin1(c.key);
    const InstallResult result = installations().install(key, idFor(key), {}, {}, kHostPath);
    ASSERT_TRUE(result) << result.error.toStdString();

    const QString expectedPath = home() + QLatin1Char('/') + QString::fromLatin1(c.manifestDir) +
                                 QLatin1Char('/') + kManifestName;
    EXPECT_EQ(result.installation->manifestPath, expectedPath);
    const QByteArray expected = "{\n"
                                "  \"name\": \"com.lexmira.companion.ext\",\n"
                                "  \"description\": \"Lexmira native messaging host\",\n"
                                "  \"path\": \"/opt/lexmira/bin/lexmira-extension-host\",\n"
                                "  \"type\": \"stdio\",\n" +
                                c.allowedLine + "}\n";
    EXPECT_EQ(readAll(expectedPath), expected);
}

TEST_P(EachBrowser, InstallRecordsTheBrowserAndItsDefaultCommand)
{
    const BrowserCase& c = GetParam();
    const QString key = QString::fromLatin1(c.key);
    ASSERT_TRUE(installations().install(key, idFor(key), {}, {}, kHostPath));

    const std::vector<Installation> records = installations().records();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].browser, key);
    EXPECT_EQ(records[0].extensionId, idFor(key));
    EXPECT_EQ(records[0].userDataDir, QString());
    EXPECT_EQ(records[0].installedAt, now_);
    ASSERT_EQ(records[0].command.size(), 1);
    EXPECT_TRUE(QString::fromLatin1(c.defaultExecutables)
                    .split(QLatin1Char(' '))
                    .contains(records[0].command[0]))
        << records[0].command[0].toStdString();
}

INSTANTIATE_TEST_SUITE_P(
    Browsers, EachBrowser,
    ::testing::Values(
        BrowserCase{"chromium", "config/chromium/NativeMessagingHosts", "chromium",
                    kChromiumAllowed},
        BrowserCase{"chrome", "config/google-chrome/NativeMessagingHosts",
                    "google-chrome google-chrome-stable", kChromiumAllowed},
        BrowserCase{"brave", "config/BraveSoftware/Brave-Browser/NativeMessagingHosts",
                    "brave-browser", kChromiumAllowed},
        BrowserCase{"vivaldi", "config/vivaldi/NativeMessagingHosts", "vivaldi", kChromiumAllowed},
        BrowserCase{"edge", "config/microsoft-edge/NativeMessagingHosts", "microsoft-edge",
                    kChromiumAllowed},
        BrowserCase{"firefox", ".mozilla/native-messaging-hosts", "firefox firefox-esr",
                    kFirefoxAllowed}),
    [](const ::testing::TestParamInfo<BrowserCase>& info) { return std::string(info.param.key); });

TEST(Browsers, NamesAndSettingsPages)
{
    EXPECT_EQ(Browsers::find(QStringLiteral("chrome"))->displayName,
              QStringLiteral("Google Chrome"));
    EXPECT_EQ(Browsers::find(QStringLiteral("edge"))->displayName,
              QStringLiteral("Microsoft Edge"));
    EXPECT_EQ(Browsers::find(QStringLiteral("firefox"))->family, BrowserFamily::Firefox);
    EXPECT_FALSE(Browsers::find(QStringLiteral("safari")));
    EXPECT_EQ(Browsers::settingsPageUrl(BrowserFamily::Chromium, kChromiumId),
              QStringLiteral("chrome://extensions/?id=") + kChromiumId);
    EXPECT_EQ(Browsers::settingsPageUrl(BrowserFamily::Firefox, kFirefoxId),
              QStringLiteral("about:addons"));
}

TEST_F(InstallTest, UserDataDirPutsTheManifestInTheProfileAndTheFlagInTheCommand)
{
    const QString profile = home() + QStringLiteral("/profile/");
    const InstallResult result =
        installations().install(QStringLiteral("chromium"), kChromiumId, profile, {}, kHostPath);
    ASSERT_TRUE(result) << result.error.toStdString();
    const QString manifest =
        home() + QStringLiteral("/profile/NativeMessagingHosts/") + kManifestName;
    EXPECT_EQ(result.installation->manifestPath, manifest);
    EXPECT_TRUE(QFile::exists(manifest));
    EXPECT_FALSE(QFile::exists(configHome() + QStringLiteral("/chromium")));
    EXPECT_EQ(result.installation->userDataDir, home() + QStringLiteral("/profile"));
    EXPECT_EQ(result.installation->command,
              (QStringList{QStringLiteral("chromium"), QStringLiteral("--user-data-dir=") + home() +
                                                           QStringLiteral("/profile")}));
}

TEST_F(InstallTest, BrowserCommandIsSplitLikeAShell)
{
    const InstallResult result = installations().install(
        QStringLiteral("brave"), kChromiumId, {},
        QStringLiteral("flatpak run \"com.brave.Browser\" --profile-directory=\"Profile 1\""),
        kHostPath);
    ASSERT_TRUE(result) << result.error.toStdString();
    EXPECT_EQ(installations().records().at(0).command,
              (QStringList{QStringLiteral("flatpak"), QStringLiteral("run"),
                           QStringLiteral("com.brave.Browser"),
                           QStringLiteral("--profile-directory=Profile 1")}));
}

TEST_F(InstallTest, RecordsFileIsPrivate)
{
    ASSERT_TRUE(
        installations().install(QStringLiteral("chromium"), kChromiumId, {}, {}, kHostPath));
    const QFileInfo dir(configHome() + QStringLiteral("/lexmira-extension-host"));
    const QFile::Permissions groupAndOthers = QFile::ReadGroup | QFile::WriteGroup |
                                              QFile::ExeGroup | QFile::ReadOther |
                                              QFile::WriteOther | QFile::ExeOther;
    EXPECT_EQ(dir.permissions() & groupAndOthers, QFile::Permissions());
    const QFile::Permissions owner = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    EXPECT_EQ(dir.permissions() & owner, owner);
    EXPECT_TRUE(QFile::exists(installations().recordsPath()));
}

TEST_F(InstallTest, ReinstallReplacesTheRecordAndTheManifest)
{
    ASSERT_TRUE(
        installations().install(QStringLiteral("chromium"), kChromiumId, {}, {}, kHostPath));
    ASSERT_TRUE(installations().install(QStringLiteral("firefox"), kFirefoxId, {}, {}, kHostPath));
    const InstallResult again =
        installations().install(QStringLiteral("chromium"), kOtherChromiumId, {},
                                QStringLiteral("chromium --incognito"), kHostPath);
    ASSERT_TRUE(again);

    const std::vector<Installation> records = installations().records();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].browser, QStringLiteral("firefox"));
    EXPECT_EQ(records[1].browser, QStringLiteral("chromium"));
    EXPECT_EQ(records[1].extensionId, kOtherChromiumId);
    EXPECT_TRUE(readAll(again.installation->manifestPath)
                    .contains("chrome-extension://" + kOtherChromiumId.toLatin1() + "/"));
    EXPECT_FALSE(readAll(again.installation->manifestPath).contains(kChromiumId.toLatin1()));
}

TEST_F(InstallTest, DifferentProfilesOfOneBrowserAreSeparateInstallations)
{
    const QString profile = home() + QStringLiteral("/profile");
    ASSERT_TRUE(
        installations().install(QStringLiteral("chromium"), kChromiumId, {}, {}, kHostPath));
    ASSERT_TRUE(
        installations().install(QStringLiteral("chromium"), kChromiumId, profile, {}, kHostPath));
    EXPECT_EQ(installations().records().size(), 2u);
}

TEST_F(InstallTest, UninstallRemovesExactlyWhatInstallWrote)
{
    const QString hostsDir = configHome() + QStringLiteral("/vivaldi/NativeMessagingHosts");
    writeAll(hostsDir + QStringLiteral("/org.other.host.json"), "{}\n");
    ASSERT_TRUE(installations().install(QStringLiteral("vivaldi"), kChromiumId, {}, {}, kHostPath));
    ASSERT_TRUE(installations().install(QStringLiteral("firefox"), kFirefoxId, {}, {}, kHostPath));

    const UninstallResult result = installations().uninstall(QStringLiteral("vivaldi"), {});
    EXPECT_EQ(result.status, UninstallResult::Status::Removed);
    EXPECT_EQ(entries(hostsDir), QStringList{QStringLiteral("org.other.host.json")});
    const std::vector<Installation> records = installations().records();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].browser, QStringLiteral("firefox"));
    EXPECT_TRUE(QFile::exists(records[0].manifestPath));
}

TEST_F(InstallTest, UninstallOfNothingSaysSoAndTouchesNothing)
{
    const QString manifest =
        configHome() + QStringLiteral("/chromium/NativeMessagingHosts/") + kManifestName;
    writeAll(manifest, "not ours\n");
    const UninstallResult result = installations().uninstall(QStringLiteral("chromium"), {});
    EXPECT_EQ(result.status, UninstallResult::Status::NothingInstalled);
    EXPECT_EQ(readAll(manifest), QByteArray("not ours\n"));
    EXPECT_FALSE(QFile::exists(installations().recordsPath()));
}

TEST_F(InstallTest, UnknownBrowserIsAnError)
{
    const InstallResult result =
        installations().install(QStringLiteral("safari"), kChromiumId, {}, {}, kHostPath);
    EXPECT_FALSE(result);
    EXPECT_TRUE(result.error.contains(QStringLiteral("safari")));
    EXPECT_EQ(installations().uninstall(QStringLiteral("safari"), {}).status,
              UninstallResult::Status::Failed);
    EXPECT_TRUE(entries(home()).isEmpty());
}

TEST_F(InstallTest, IllFormedExtensionIdsAreErrors)
{
    for (const QString& id : {QString(), QStringLiteral("abcdefghijklmnopabcdefghijklmnoq"),
                              QStringLiteral("abcdefghijklmnop"), kFirefoxId}) {
        const InstallResult result =
            installations().install(QStringLiteral("chrome"), id, {}, {}, kHostPath);
        EXPECT_FALSE(result) << id.toStdString();
        EXPECT_FALSE(result.error.isEmpty());
    }
    for (const QString& id : {QStringLiteral("extension"), QStringLiteral("@lexmira.com"),
                              QStringLiteral("{not-a-uuid}"), kChromiumId}) {
        EXPECT_FALSE(installations().install(QStringLiteral("firefox"), id, {}, {}, kHostPath))
            << id.toStdString();
    }
    EXPECT_TRUE(installations().install(QStringLiteral("firefox"),
                                        QStringLiteral("{0b7f1c5e-3a5d-4c1e-9f5e-2d9c7e4b1a00}"),
                                        {}, {}, kHostPath));
    EXPECT_TRUE(entries(home() + QStringLiteral("/config/google-chrome")).isEmpty());
}

TEST_F(InstallTest, FirefoxIdsAreBoundedInLength)
{
    const QString domain = QStringLiteral("@lexmira.com");
    const QString longest =
        QString(Installations::kMaxExtensionIdLength - domain.size(), QLatin1Char('a')) + domain;
    EXPECT_TRUE(Installations::isValidExtensionId(BrowserFamily::Firefox, longest));
    EXPECT_FALSE(
        Installations::isValidExtensionId(BrowserFamily::Firefox, QLatin1Char('a') + longest));
}

TEST_F(InstallTest, RelativePathsAreErrors)
{
    const InstallResult relativeDir = installations().install(
        QStringLiteral("chromium"), kChromiumId, QStringLiteral("profile"), {}, kHostPath);
    EXPECT_FALSE(relativeDir);
    EXPECT_TRUE(relativeDir.error.contains(QStringLiteral("absolute")));
    EXPECT_FALSE(installations().install(QStringLiteral("chromium"), kChromiumId, {}, {},
                                         QStringLiteral("bin/lexmira-extension-host")));
    EXPECT_TRUE(entries(home()).isEmpty());
}

TEST_F(InstallTest, FirefoxRefusesAUserDataDir)
{
    const InstallResult result = installations().install(
        QStringLiteral("firefox"), kFirefoxId, home() + QStringLiteral("/profile"), {}, kHostPath);
    EXPECT_FALSE(result);
    EXPECT_TRUE(result.error.contains(QStringLiteral("~/.mozilla/native-messaging-hosts")));
    EXPECT_TRUE(entries(home()).isEmpty());
}

TEST_F(InstallTest, CorruptRecordsFileReadsAsNoneAndIsReplacedByTheNextInstall)
{
    writeAll(installations().recordsPath(), "[{\"browser\": \"chromium\", ");
    EXPECT_TRUE(installations().records().empty());
    EXPECT_FALSE(installations().mostRecent());
    writeAll(installations().recordsPath(), "{\"browser\": \"chromium\"}");
    EXPECT_TRUE(installations().records().empty());
    ASSERT_TRUE(installations().install(QStringLiteral("edge"), kChromiumId, {}, {}, kHostPath));
    EXPECT_EQ(installations().records().size(), 1u);
}

TEST_F(InstallTest, RecordsFileIsReadUpToItsBound)
{
    ASSERT_TRUE(installations().install(QStringLiteral("edge"), kChromiumId, {}, {}, kHostPath));
    QByteArray bytes = readAll(installations().recordsPath());
    bytes.append(QByteArray(Installations::kMaxRecordsFileBytes - bytes.size(), ' '));
    writeAll(installations().recordsPath(), bytes);
    EXPECT_EQ(installations().records().size(), 1u);
    writeAll(installations().recordsPath(), bytes + ' ');
    EXPECT_TRUE(installations().records().empty());
}

TEST_F(InstallTest, ForConnectionFindsTheLatestInstallationOfThatFamilyAndExtension)
{
    const QString profile = home() + QStringLiteral("/profile");
    ASSERT_TRUE(
        installations().install(QStringLiteral("chromium"), kChromiumId, {}, {}, kHostPath));
    ASSERT_TRUE(installations().install(QStringLiteral("brave"), kChromiumId, {}, {}, kHostPath));
    ASSERT_TRUE(
        installations().install(QStringLiteral("edge"), kOtherChromiumId, {}, {}, kHostPath));
    ASSERT_TRUE(installations().install(QStringLiteral("firefox"), kFirefoxId, {}, {}, kHostPath));

    EXPECT_EQ(installations().forConnection(BrowserFamily::Chromium, kChromiumId)->browser,
              QStringLiteral("brave"));
    EXPECT_EQ(installations().forConnection(BrowserFamily::Chromium, kOtherChromiumId)->browser,
              QStringLiteral("edge"));
    EXPECT_EQ(installations().forConnection(BrowserFamily::Firefox, kFirefoxId)->browser,
              QStringLiteral("firefox"));
    EXPECT_FALSE(installations().forConnection(BrowserFamily::Firefox, kChromiumId));
    EXPECT_EQ(installations().mostRecent()->browser, QStringLiteral("firefox"));
}

int runCommand(const QStringList& arguments, const Installations& installations, QString* out,
               QString* err, const BrokerQuery& broker = {})
{
    QTextStream outStream(out);
    QTextStream errStream(err);
    return runInstallCommand(arguments, installations, kHostPath, broker, outStream, errStream);
}

TEST_F(InstallTest, StatusWithoutABrokerListsInstallationsAndSaysTheBrokerIsNotRunning)
{
    ASSERT_TRUE(installations().install(QStringLiteral("chromium"), kChromiumId,
                                        home() + QStringLiteral("/profile"), {}, kHostPath));
    QString out;
    QString err;
    EXPECT_EQ(runCommand({QStringLiteral("status")}, installations(), &out, &err,
                         [] { return BrokerHealth(); }),
              kExitOk);
    EXPECT_TRUE(out.contains(QStringLiteral("Chromium (chromium)"))) << out.toStdString();
    EXPECT_TRUE(out.contains(home() + QStringLiteral("/profile\n")));
    EXPECT_TRUE(out.contains(kChromiumId));
    EXPECT_TRUE(out.contains(home() + QStringLiteral("/profile/NativeMessagingHosts/") +
                             kManifestName + QStringLiteral(" (present)")));
    EXPECT_TRUE(out.contains(QStringLiteral("chromium --user-data-dir=") + home()));
    EXPECT_TRUE(out.contains(QStringLiteral("The broker is not running")));
    EXPECT_TRUE(err.isEmpty());
}

TEST_F(InstallTest, StatusWithABrokerListsTheConnectedBrowsers)
{
    QString out;
    QString err;
    const qint64 since = now_.toMSecsSinceEpoch();
    const auto broker = [since] {
        BrokerHealth health;
        health.pid = 4242;
        health.connections = std::vector<HostPeer>{
            {QStringLiteral(":1.7"), QStringLiteral("firefox"), QStringLiteral("Firefox"),
             kFirefoxId, since}};
        health.enabled = true;
        health.browserName = QStringLiteral("Firefox");
        return health;
    };
    EXPECT_EQ(runCommand({QStringLiteral("status")}, installations(), &out, &err, broker),
              kExitOk);
    EXPECT_TRUE(out.contains(QStringLiteral("Installed: nothing"))) << out.toStdString();
    EXPECT_TRUE(out.contains(QStringLiteral("Firefox, extension extension@lexmira.com, since "
                                            "2026-11-23T05:00:00Z")))
        << out.toStdString();
    EXPECT_FALSE(out.contains(QStringLiteral("not running")));
    // The checks the doctor makes of the extension's side follow.
    EXPECT_TRUE(out.contains(QStringLiteral("\nChecks:\n")));
    EXPECT_TRUE(out.contains(QRegularExpression(QStringLiteral("state +ok +enabled in Firefox\n"))))
        << out.toStdString();
    EXPECT_TRUE(out.contains(QRegularExpression(QStringLiteral("installed for +FAIL +no browser\n"))))
        << out.toStdString();
}

TEST_F(InstallTest, StatusReportsAMissingManifest)
{
    const InstallResult result =
        installations().install(QStringLiteral("firefox"), kFirefoxId, {}, {}, kHostPath);
    ASSERT_TRUE(QFile::remove(result.installation->manifestPath));
    QString out;
    QString err;
    EXPECT_EQ(runCommand({QStringLiteral("status")}, installations(), &out, &err), kExitOk);
    EXPECT_TRUE(out.contains(result.installation->manifestPath + QStringLiteral(" (missing")))
        << out.toStdString();
    EXPECT_TRUE(out.contains(QStringLiteral("FAIL     Firefox: manifest ") +
                             result.installation->manifestPath + QStringLiteral(" is missing")))
        << out.toStdString();
}

TEST_F(InstallTest, CommandLineMistakesAreUsageErrors)
{
    QString out;
    QString err;
    EXPECT_EQ(runCommand({QStringLiteral("install"), QStringLiteral("--browser"),
                          QStringLiteral("chromium")},
                         installations(), &out, &err),
              kExitUsage);
    EXPECT_TRUE(err.contains(QStringLiteral("--extension-id")));
    EXPECT_EQ(runCommand({QStringLiteral("uninstall"), QStringLiteral("--frob")}, installations(),
                         &out, &err),
              kExitUsage);
    EXPECT_EQ(runCommand({QStringLiteral("status"), QStringLiteral("extra")}, installations(), &out,
                         &err),
              kExitUsage);
    EXPECT_EQ(runCommand({QStringLiteral("install"), QStringLiteral("--browser=firefox"),
                          QStringLiteral("--extension-id=x")},
                         installations(), &out, &err),
              kExitFailure);
}

TEST_F(InstallTest, HelpTextsExplainEachCommandWithExamples)
{
    for (const QString& command :
         {QStringLiteral("install"), QStringLiteral("uninstall"), QStringLiteral("status")}) {
        QString out;
        QString err;
        EXPECT_EQ(runCommand({command, QStringLiteral("--help")}, installations(), &out, &err),
                  kExitOk);
        EXPECT_TRUE(out.contains(QStringLiteral("Usage: lexmira-extension-host ") + command));
        EXPECT_TRUE(out.contains(QStringLiteral("--browser chromium")));
        EXPECT_TRUE(out.contains(QStringLiteral("--browser firefox")));
    }
    EXPECT_TRUE(
        extensionHostUsage().contains(QStringLiteral("~/.mozilla/native-messaging-hosts/")));
    EXPECT_TRUE(extensionHostUsage().contains(QStringLiteral("NativeMessagingHosts/")));
}

struct HostRun {
    int exitCode = -1;
    QString out;
    QString err;
};

HostRun runHost(const QStringList& arguments, const QString& home)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), home);
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/xdg-config"));
    process.setProcessEnvironment(environment);
    process.start(test::toolBinary(QStringLiteral("lexmira-extension-host")), arguments);
    if (!process.waitForFinished(30000))
        return {};
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

TEST_F(InstallTest, BuiltHostInstallsReportsAndUninstalls)
{
    const QString binary = test::toolBinary(QStringLiteral("lexmira-extension-host"));
    const HostRun install =
        runHost({QStringLiteral("install"), QStringLiteral("--browser"), QStringLiteral("edge"),
                 QStringLiteral("--extension-id"), kChromiumId},
                home());
    ASSERT_EQ(install.exitCode, kExitOk) << install.err.toStdString();
    const QString manifest = home() +
                             QStringLiteral("/xdg-config/microsoft-edge/"
                                            "NativeMessagingHosts/") +
                             kManifestName;
    EXPECT_TRUE(readAll(manifest).contains("\"path\": \"" + binary.toUtf8() + "\""));

    const HostRun status = runHost({QStringLiteral("status")}, home());
    EXPECT_EQ(status.exitCode, kExitOk);
    EXPECT_TRUE(status.out.contains(QStringLiteral("Microsoft Edge (edge)")));
    EXPECT_TRUE(status.out.contains(manifest + QStringLiteral(" (present)")));

    const HostRun uninstall = runHost(
        {QStringLiteral("uninstall"), QStringLiteral("--browser"), QStringLiteral("edge")}, home());
    EXPECT_EQ(uninstall.exitCode, kExitOk);
    EXPECT_FALSE(QFile::exists(manifest));
    EXPECT_TRUE(runHost({QStringLiteral("status")}, home())
                    .out.contains(QStringLiteral("Installed: nothing")));
}

TEST_F(InstallTest, BuiltHostPrintsItsVersionAndUsage)
{
    const HostRun version = runHost({QStringLiteral("--version")}, home());
    EXPECT_EQ(version.exitCode, kExitOk);
    EXPECT_EQ(version.out, QStringLiteral("lexmira-extension-host " LEXMIRA_VERSION "\n"));
    const HostRun help = runHost({QStringLiteral("--help")}, home());
    EXPECT_EQ(help.exitCode, kExitOk);
    EXPECT_EQ(help.out, extensionHostUsage());
}

} // namespace

} // namespace lexmira
