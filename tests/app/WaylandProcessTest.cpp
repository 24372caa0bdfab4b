// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "support/ChildProcess.h"
#include "support/DevExtensionPeer.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>

#include <algorithm>
#include <memory>

namespace lexmira {

namespace {

using namespace std::chrono_literals;
using test::DevExtensionPeer;

const QString socketName = QStringLiteral("lexmira-wayland-0");

bool instanceRunning()
{
    return QDBusConnection::sessionBus().interface()->isServiceRegistered(
        QStringLiteral("com.lexmira.companion"));
}

// The pixels of the panel's background (white in the light appearance), which nothing on the
// compositor's own desktop has in such numbers.
int panelBackgroundPixels(const QImage& image)
{
    const QImage rgb = image.convertToFormat(QImage::Format_RGB32);
    int count = 0;
    for (int y = 0; y < rgb.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(rgb.constScanLine(y));
        count += int(std::count(line, line + rgb.width(), qRgb(255, 255, 255)));
    }
    return count;
}

std::size_t callsOf(const DevExtensionPeer& peer, const std::string& method)
{
    std::size_t count = 0;
    for (const auto& call : peer.calls())
        count += call.value("method", "") == method;
    return count;
}

// A headless Wayland compositor with a runtime directory of its own, for one test.
class HeadlessCompositor {
public:
    HeadlessCompositor()
    {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime_.path());
        environment.remove(QStringLiteral("DISPLAY"));
        environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
        process_ = std::make_unique<test::ChildProcess>(
            QStringLiteral("weston"),
            QStringList{QStringLiteral("--backend=headless-backend.so"),
                        QStringLiteral("--socket=") + socketName, QStringLiteral("--idle-time=0"),
                        QStringLiteral("--no-config"), QStringLiteral("--use-pixman"),
                        QStringLiteral("--width=1280"), QStringLiteral("--height=800"),
                        // Lets weston-screenshooter read the output.
                        QStringLiteral("--debug"),
                        QStringLiteral("--log=") +
                            QDir(runtime_.path()).filePath(QStringLiteral("weston.log"))},
            environment, test::ChildProcess::Stderr::captured);
        ready_ = test::waitUntil(
            [&] {
                return process_->running() &&
                       QFileInfo(QDir(runtime_.path()).filePath(socketName)).exists();
            },
            20s);
    }

    bool ready() const { return ready_; }

    // What the compositor shows on its output, as weston-screenshooter saves it.
    QImage screenshot() const
    {
        QTemporaryDir into;
        QProcess shooter;
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime_.path());
        environment.insert(QStringLiteral("WAYLAND_DISPLAY"), socketName);
        shooter.setProcessEnvironment(environment);
        shooter.setWorkingDirectory(into.path());
        shooter.start(QStringLiteral("weston-screenshooter"), {});
        if (!shooter.waitForFinished(20000)) {
            shooter.kill();
            shooter.waitForFinished();
            return {};
        }
        const auto shots = QDir(into.path()).entryList({QStringLiteral("*.png")}, QDir::Files);
        return shots.isEmpty() ? QImage() : QImage(QDir(into.path()).filePath(shots.first()));
    }
    bool running() const { return process_->running(); }
    QString runtimeDirectory() const { return runtime_.path(); }
    QString log() const
    {
        QFile file(QDir(runtime_.path()).filePath(QStringLiteral("weston.log")));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

private:
    QTemporaryDir runtime_;
    std::unique_ptr<test::ChildProcess> process_;
    bool ready_ = false;
};

// The application on the compositor through the Wayland platform plugin, with no X display to
// fall back on, and the development peer on the test's session bus.
class OnWayland : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(compositor.ready()) << compositor.log().toStdString();
        ASSERT_TRUE(test::waitUntil([] { return !instanceRunning(); }, 20s));
        environment = test::childEnvironment();
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), config.path());
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), compositor.runtimeDirectory());
        environment.insert(QStringLiteral("WAYLAND_DISPLAY"), socketName);
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("wayland"));
        environment.insert(QStringLiteral("QT_LOGGING_RULES"),
                           QStringLiteral("lexmira.app.info=true;lexmira.activation.info=true"));
        environment.remove(QStringLiteral("DISPLAY"));
        environment.remove(QStringLiteral("DESKTOP_STARTUP_ID"));
        environment.remove(QStringLiteral("XDG_ACTIVATION_TOKEN"));
    }

    void TearDown() override
    {
        companion.reset();
        EXPECT_TRUE(test::waitUntil([] { return !instanceRunning(); }, 20s));
    }

    void startCompanion()
    {
        companion =
            std::make_unique<test::ChildProcess>(test::companionBinary(), QStringList{},
                                                 environment, test::ChildProcess::Stderr::captured);
        ASSERT_TRUE(test::waitUntil(instanceRunning, 20s)) << companionLog().toStdString();
    }

    // What the application wrote to stderr so far.
    QString companionLog()
    {
        if (companion)
            log += QString::fromUtf8(companion->process().readAllStandardError());
        return log;
    }

    bool waitForLog(const QString& text, std::chrono::milliseconds timeout = 20s)
    {
        return test::waitUntil([&] { return companionLog().contains(text); }, timeout);
    }

    HeadlessCompositor compositor;
    QTemporaryDir config;
    QProcessEnvironment environment;
    std::unique_ptr<test::ChildProcess> companion;
    QString log;
};

TEST_F(OnWayland, FirstRunShowsTheWindowPollsTheExtensionAndTakesASecondLaunchsUrl)
{
    const QImage desktop = compositor.screenshot();
    ASSERT_FALSE(desktop.isNull()) << compositor.log().toStdString();
    ASSERT_LT(panelBackgroundPixels(desktop), 2'000) << "the desktop alone has little white";

    DevExtensionPeer peer({QStringLiteral("--disabled")}, DevExtensionPeer::defaultName(),
                          environment);
    ASSERT_TRUE(peer.isServing());
    startCompanion();

    // The compositor configured the window as a toplevel, and Qt says so...
    ASSERT_TRUE(waitForLog(QStringLiteral("shown on wayland"))) << companionLog().toStdString();
    EXPECT_FALSE(companionLog().contains(QStringLiteral("shown on xcb")));
    // ...and the compositor's output shows it: the better part of the 550 by 367 panel is white.
    QImage shown;
    EXPECT_TRUE(test::waitUntil(
        [&] {
            shown = compositor.screenshot();
            return panelBackgroundPixels(shown) > 100'000;
        },
        20s))
        << panelBackgroundPixels(shown) << " white pixels";

    // Disabled: the extension's state is polled.
    ASSERT_TRUE(test::waitUntil([&] { return callsOf(peer, "GetState") >= 3; }, 20s));

    // A second launch with the sign-in callback and the launcher's token hands both over.
    auto launchEnvironment = environment;
    launchEnvironment.insert(QStringLiteral("XDG_ACTIVATION_TOKEN"),
                             QStringLiteral("weston-test-token-77"));
    QProcess launch;
    launch.setProcessEnvironment(launchEnvironment);
    launch.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    launch.start(test::companionBinary(),
                 {QStringLiteral("lexmira.extension://oauth?code=W1&code_challenge=W2")});
    ASSERT_TRUE(launch.waitForFinished(30000));
    EXPECT_EQ(launch.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(launch.exitCode(), 0);

    ASSERT_TRUE(peer.waitForDispatch("oauthExchange", 20s));
    const auto exchanges = peer.dispatches("oauthExchange");
    ASSERT_EQ(exchanges.size(), 1u);
    EXPECT_EQ(exchanges[0]["userInfo"], R"({"code":"W1","codeChallenge":"W2"})");
    // The window is brought forward with the launcher's token.
    EXPECT_TRUE(waitForLog(QStringLiteral("with activation token weston-test-token-77")))
        << companionLog().toStdString();
    EXPECT_TRUE(companion->running());
    EXPECT_TRUE(compositor.running());
}

} // namespace

} // namespace lexmira
