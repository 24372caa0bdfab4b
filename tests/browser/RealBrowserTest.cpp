// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

// The whole flow with a real browser as the extension's side: Debian's Chromium and Firefox ESR,
// headless, with the reference extension in a throwaway profile, the extension host registered
// for them, and the companion on the test session's display. What the user would see is read
// back from the X server.

#include "Common/EnvCommon.h"
#include "support/ChildProcess.h"
#include "support/HttpsTestServer.h"
#include "support/PlainHttpServer.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QProcess>
#include <QScreen>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <csignal>
#include <cstdio>
#include <memory>
#include <ostream>

namespace lexmira {

namespace {

using namespace std::chrono_literals;
using test::HttpsTestServer;
using Json = nlohmann::ordered_json;

const QString instanceName = QStringLiteral("com.lexmira.companion");
const QString extensionName = QStringLiteral("com.lexmira.companion.ext");
const QString suiteName =
    QString::fromUtf8(appGroupSuiteName.data(), qsizetype(appGroupSuiteName.size()));
const QString callback = QStringLiteral(
    "lexmira.extension://"
    "oauth?code=4%2FP7q-xZ&code_challenge=E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM");

// How long a browser may take from launch to a connected extension; a fresh profile is the
// slow case (Firefox up to about 4 s on this machine kind).
constexpr auto browserStart = 45s;

bool isOwned(const QString& name)
{
    return QDBusConnection::sessionBus().interface()->isServiceRegistered(name).value();
}

// Runs a program to its end; its standard output, or none when it failed.
std::optional<QString> run(const QString& program, const QStringList& arguments,
                           const QProcessEnvironment& environment)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(program, arguments);
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0)
        return std::nullopt;
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

QString sourcePath(const QString& relative)
{
    return QDir(QStringLiteral(LEXMIRA_SOURCE_DIR)).filePath(relative);
}

QString runBrowserScript()
{
    return sourcePath(QStringLiteral("tests/browser/run_browser.py"));
}

// Which panel the companion's window shows, judged from its pixels: the enabled panel has the
// blue Lexmira mark at the top left, the disabled one the orange warning sign in that place.
enum class Panel { none, enabled, disabled };

const char* nameOf(Panel panel)
{
    switch (panel) {
    case Panel::enabled:
        return "enabled";
    case Panel::disabled:
        return "disabled";
    case Panel::none:
        break;
    }
    return "none";
}

Panel panelIn(const QImage& window)
{
    if (window.isNull())
        return Panel::none;
    const qreal ratio = window.devicePixelRatio();
    int blue = 0;
    int orange = 0;
    for (int y = 71; y < 128; ++y)
        for (int x = 48; x < 104; ++x) {
            const QColor c = window.pixelColor(QPoint(int(x * ratio), int(y * ratio)));
            blue += c.blue() > c.red() + 80 && c.blue() > c.green() + 20;
            orange += c.red() > c.blue() + 100 && c.green() > c.blue() + 40;
        }
    // Each mark covers well over a thousand of these points; the other colour none.
    if (blue > 800 && orange < 50)
        return Panel::enabled;
    if (orange > 500 && blue < 50)
        return Panel::disabled;
    return Panel::none;
}

struct BrowserCase {
    const char* browser;     // run_browser.py's and the host's name for it
    const char* displayName; // what the broker reports
};

void PrintTo(const BrowserCase& browserCase, std::ostream* out)
{
    *out << browserCase.browser;
}

class RealBrowser : public ::testing::TestWithParam<BrowserCase> {
protected:
    QString browser() const { return QString::fromLatin1(GetParam().browser); }

    void SetUp() override
    {
        ASSERT_TRUE(test::waitUntil([] { return !isOwned(instanceName); }, 20s));
        ASSERT_TRUE(test::waitUntil([] { return !isOwned(extensionName); }, 20s));
        const QString program = browser() == QLatin1String("chromium")
                                    ? QStringLiteral("chromium")
                                    : QStringLiteral("firefox-esr");
        ASSERT_FALSE(QStandardPaths::findExecutable(program).isEmpty())
            << program.toStdString()
            << " is not installed: scripts/install-deps installs it; this test never skips";
        ASSERT_FALSE(QStandardPaths::findExecutable(QStringLiteral("xdotool")).isEmpty());
        ASSERT_TRUE(scratch.isValid());

        QDir(scratch.path()).mkpath(QStringLiteral("home"));
        QDir(scratch.path()).mkpath(QStringLiteral("config"));
        environment = test::childEnvironment();
        // The browsers write outside their profile too: a home of the test's own.
        environment.insert(QStringLiteral("HOME"), path(QStringLiteral("home")));
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), path(QStringLiteral("config")));
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        environment.insert(QStringLiteral("DISPLAY"), qEnvironmentVariable("LEXMIRA_TEST_DISPLAY"));
        environment.insert(QStringLiteral("LEXMIRA_ACCOUNT_HOST"), account.hostAndPort());
        environment.insert(QStringLiteral("LEXMIRA_ANALYTICS_URL"),
                           analytics.url(QString()).toString());
        environment.insert(QStringLiteral("LEXMIRA_LOG_HOST"), log.hostAndPort());
        environment.insert(QStringLiteral("LEXMIRA_WEB_ORIGIN"),
                           QStringLiteral("https://www.lexmira.test"));
        environment.insert(QStringLiteral("LEXMIRA_EXTRA_CA_FILE"), HttpsTestServer::caFile());
        // No account answer: the user comes from the extension alone.
        account.holdRequests();

        // The reference extension, told where its login page is and whom it signs in.
        extensionDir = path(QStringLiteral("extension"));
        ASSERT_TRUE(run(QStringLiteral("python3"),
                        {runBrowserScript(), QStringLiteral("configure"),
                         sourcePath(QStringLiteral("extension")), extensionDir,
                         QStringLiteral("--login-page"), loginPage.url(QStringLiteral("/login")),
                         QStringLiteral("--user-id"), userId, QStringLiteral("--container-id"),
                         containerId},
                        environment));
        const auto id =
            run(QStringLiteral("python3"),
                {runBrowserScript(), QStringLiteral("extension-id"), browser(), extensionDir},
                environment);
        ASSERT_TRUE(id && !id->isEmpty());
        extensionId = *id;

        // A stand-in for the browser's own command, so that opening the settings page is seen
        // without a second browser window: it records the arguments it was started with.
        const QString recorder = path(QStringLiteral("open-browser"));
        QFile script(recorder);
        ASSERT_TRUE(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/sh\nprintf '%s\\n' \"$@\" >> \"$0.log\"\n");
        script.close();
        script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

        QStringList install{QStringLiteral("install"),
                            QStringLiteral("--browser"),
                            browser(),
                            QStringLiteral("--extension-id"),
                            extensionId,
                            QStringLiteral("--browser-command"),
                            recorder};
        if (browser() == QLatin1String("chromium"))
            install << QStringLiteral("--user-data-dir") << profileDir();
        ASSERT_TRUE(run(hostBinary(), install, environment));

        broker = std::make_unique<test::ChildProcess>(hostBinary(),
                                                      QStringList{QStringLiteral("--broker"),
                                                                  QStringLiteral("--idle-timeout"),
                                                                  QStringLiteral("600000")},
                                                      environment);
        ASSERT_TRUE(test::waitUntil([] { return isOwned(extensionName); }, 20s));
    }

    void TearDown() override
    {
        stopBrowser();
        companion.reset();
        EXPECT_TRUE(test::waitUntil([] { return !isOwned(instanceName); }, 20s));
        broker.reset();
        EXPECT_TRUE(test::waitUntil([] { return !isOwned(extensionName); }, 20s));
        if (HasFailure()) {
            QFile browserLog(path(QStringLiteral("browser.log")));
            if (browserLog.open(QIODevice::ReadOnly))
                std::fprintf(stderr, "--- browser.log ---\n%s\n",
                             browserLog.readAll().right(8000).constData());
        }
    }

    QString path(const QString& relative) const { return QDir(scratch.path()).filePath(relative); }
    QString profileDir() const { return path(QStringLiteral("profile")); }

    static QString hostBinary()
    {
        return test::toolBinary(QStringLiteral("lexmira-extension-host"));
    }

    void startCompanion()
    {
        companion = std::make_unique<test::ChildProcess>(test::companionBinary(), QStringList{},
                                                         environment);
        ASSERT_TRUE(test::waitUntil([] { return isOwned(instanceName); }, 20s));
    }

    void startBrowser()
    {
        const auto pid = run(
            QStringLiteral("python3"),
            {runBrowserScript(), QStringLiteral("start"), browser(), extensionDir, scratch.path()},
            environment);
        ASSERT_TRUE(pid);
        browserPid = pid->toLongLong();
        ASSERT_GT(browserPid, 0);
    }

    void stopBrowser()
    {
        if (browserPid <= 0)
            return;
        ::kill(pid_t(browserPid), SIGTERM);
        // The browser is no child of ours: wait until its process is gone.
        test::waitUntil([&] { return !QFile::exists(QStringLiteral("/proc/%1").arg(browserPid)); },
                        20s);
        if (QFile::exists(QStringLiteral("/proc/%1").arg(browserPid)))
            ::kill(pid_t(browserPid), SIGKILL);
        browserPid = 0;
    }

    // The companion's main window as the X server shows it; a null image until it is mapped.
    QImage companionWindow() const
    {
        if (!companion)
            return {};
        const auto found =
            run(QStringLiteral("xdotool"),
                {QStringLiteral("search"), QStringLiteral("--all"), QStringLiteral("--onlyvisible"),
                 QStringLiteral("--pid"), QString::number(companion->process().processId()),
                 QStringLiteral("--name"), QStringLiteral("^Lexmira$")},
                environment);
        if (!found || found->isEmpty())
            return {};
        const WId window = found->split(QLatin1Char('\n')).constFirst().toULongLong();
        return QGuiApplication::primaryScreen()->grabWindow(window).toImage();
    }

    Panel shownPanel() const { return panelIn(companionWindow()); }

    // Waits until the window shows panel; how long that took, or -1 when it never did.
    qint64 waitForPanel(Panel panel, std::chrono::milliseconds timeout)
    {
        QElapsedTimer clock;
        clock.start();
        if (!test::waitUntil([&] { return shownPanel() == panel; }, timeout))
            return -1;
        return clock.elapsed();
    }

    std::optional<QByteArray> stored(const QString& key) const
    {
        QFile file(path(QStringLiteral("config/group-containers/") + suiteName + u'/' + key));
        if (!file.open(QIODevice::ReadOnly))
            return std::nullopt;
        return file.readAll();
    }

    QString brokersBrowserName() const
    {
        auto call = QDBusMessage::createMethodCall(
            extensionName, QStringLiteral("/com/lexmira/companion/ext"),
            QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
        call << QStringLiteral("com.lexmira.Extension1") << QStringLiteral("BrowserName");
        const QDBusMessage reply = QDBusConnection::sessionBus().call(call);
        return reply.arguments().value(0).value<QDBusVariant>().variant().toString();
    }

    // The analytics events received so far, each with the user it was sent for.
    std::vector<Json> analyticsEvents() const
    {
        std::vector<Json> events;
        for (const auto& request : analytics.requests())
            if (const auto body = request.json(); body && body->contains("events"))
                for (const auto& event : body->at("events"))
                    events.push_back(event);
        return events;
    }

    QTemporaryDir scratch;
    QProcessEnvironment environment;
    HttpsTestServer account;
    HttpsTestServer analytics;
    HttpsTestServer log;
    test::PlainHttpServer loginPage;
    QString extensionDir;
    QString extensionId;
    const QString userId = QStringLiteral("reference-user-7");
    const QString containerId = QStringLiteral("reference-container-7");
    std::unique_ptr<test::ChildProcess> broker;
    std::unique_ptr<test::ChildProcess> companion;
    qint64 browserPid = 0;
};

TEST_P(RealBrowser, TheExtensionInTheBrowserIsEnabledSignedInAndOpensItsSettings)
{
    // No browser yet: the companion asks the extension to be enabled.
    startCompanion();
    ASSERT_GE(waitForPanel(Panel::disabled, 20s), 0) << "shown: " << nameOf(shownPanel());

    // The browser starts with the extension: the enabled panel, and with nobody signed in the
    // extension opens the login page in a tab, once.
    startBrowser();
    const qint64 enabledAfter = waitForPanel(Panel::enabled, browserStart);
    ASSERT_GE(enabledAfter, 0) << "shown: " << nameOf(shownPanel());
    std::printf("[ figure ] %s: browser launched -> enabled panel shown: %lld ms\n",
                GetParam().browser, static_cast<long long>(enabledAfter));
    EXPECT_EQ(brokersBrowserName(), QString::fromLatin1(GetParam().displayName));
    ASSERT_TRUE(test::waitUntil([&] { return loginPage.count("/login") >= 1; }, 20s));
    EXPECT_EQ(stored(QStringLiteral("message.oauthOpenLoginTabMessage")), QByteArray("[true]"));
    test::spin(3s);
    EXPECT_EQ(loginPage.count("/login"), 1u) << "the login tab is opened once";
    EXPECT_EQ(shownPanel(), Panel::enabled);

    // The web sign-in's callback, handed over by a second launch, reaches the extension in the
    // browser, which signs the user in; the companion's queued app-start goes out for that user.
    EXPECT_TRUE(analyticsEvents().empty()) << "no user known yet";
    EXPECT_TRUE(run(test::companionBinary(), {callback}, environment));
    ASSERT_TRUE(
        test::waitUntil([&] { return stored(QStringLiteral("userInfo")).has_value(); }, 20s));
    EXPECT_EQ(stored(QStringLiteral("userInfo")),
              QByteArray(R"([{"userId":"reference-user-7","isTestUser":false,)"
                         R"("isAnonymous":false,"containerId":"reference-container-7"}])"));
    EXPECT_EQ(stored(QStringLiteral("message.oauthExchangeMessage")),
              QByteArray(R"([{"code":"4\/P7q-xZ",)"
                         R"("codeChallenge":"E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM"}])"));
    ASSERT_TRUE(test::waitUntil([&] { return !analyticsEvents().empty(); }, 20s));
    const auto events = analyticsEvents();
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events.front().value("eventName", ""), "lexmiraCompanionLinux/companion/app-start");
    EXPECT_EQ(events.front().value("userId", ""), userId.toStdString());
    const auto batch = analytics.requests().front().json();
    ASSERT_TRUE(batch);
    EXPECT_EQ(batch->value("containerId", ""), containerId.toStdString());
    EXPECT_TRUE(log.requests().empty()) << "nothing failed, so nothing was logged";

    // The browser closes: the companion shows the disabled panel within about two seconds (one
    // polling tick plus the host noticing its closed input).
    QElapsedTimer sinceClosed;
    sinceClosed.start();
    stopBrowser();
    ASSERT_GE(waitForPanel(Panel::disabled, 10s), 0) << "shown: " << nameOf(shownPanel());
    const qint64 disabledAfter = sinceClosed.elapsed();
    std::printf("[ figure ] %s: browser closed -> disabled panel shown: %lld ms\n",
                GetParam().browser, static_cast<long long>(disabledAfter));
    EXPECT_LT(disabledAfter, 3500);

    // "Open settings to enable Lexmira", clicked as a user does, starts the browser recorded at
    // installation with the extension's settings page.
    const QImage window = companionWindow();
    const auto geometry =
        run(QStringLiteral("xdotool"),
            {QStringLiteral("search"), QStringLiteral("--all"), QStringLiteral("--onlyvisible"),
             QStringLiteral("--pid"), QString::number(companion->process().processId()),
             QStringLiteral("--name"), QStringLiteral("^Lexmira$")},
            environment);
    ASSERT_TRUE(geometry && !geometry->isEmpty());
    // The button: the widest run of its blue fill in the left half, below the steps.
    int buttonY = -1;
    int buttonX = -1;
    for (int y = 200; y < window.height() && buttonY < 0; ++y) {
        int run = 0;
        for (int x = 0; x < window.width() / 2; ++x) {
            const QColor c = window.pixelColor(x, y);
            run = (c.blue() > c.red() + 80 && c.blue() > 180) ? run + 1 : 0;
            if (run > 150) {
                buttonY = y + 8;
                buttonX = x - 60;
                break;
            }
        }
    }
    ASSERT_GE(buttonY, 0) << "no button drawn";
    const QString windowId = geometry->split(QLatin1Char('\n')).constFirst();
    ASSERT_TRUE(run(QStringLiteral("xdotool"),
                    {QStringLiteral("mousemove"), QStringLiteral("--window"), windowId,
                     QString::number(buttonX), QString::number(buttonY), QStringLiteral("click"),
                     QStringLiteral("1")},
                    environment));
    const QString settingsPage = browser() == QLatin1String("chromium")
                                     ? QStringLiteral("chrome://extensions/?id=") + extensionId
                                     : QStringLiteral("about:addons");
    QFile opened(path(QStringLiteral("open-browser.log")));
    ASSERT_TRUE(test::waitUntil([&] { return opened.exists(); }, 10s));
    test::spin(500ms);
    ASSERT_TRUE(opened.open(QIODevice::ReadOnly));
    EXPECT_EQ(QString::fromUtf8(opened.readAll()), settingsPage + u'\n');
    EXPECT_TRUE(companion->running());
}

INSTANTIATE_TEST_SUITE_P(ChromiumAndFirefox, RealBrowser,
                         ::testing::Values(BrowserCase{"chromium", "Chromium"},
                                           BrowserCase{"firefox", "Firefox"}),
                         [](const auto& info) { return std::string(info.param.displayName); });

} // namespace

} // namespace lexmira
