// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "EnableExtensionView/ColorScheme.h"
#include "support/ChildProcess.h"
#include "support/DevExtensionPeer.h"
#include "support/HttpsTestServer.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QProcess>
#include <QScreen>
#include <QSet>
#include <QTemporaryDir>

#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

namespace lexmira {

namespace {

using namespace std::chrono_literals;
using test::DevExtensionPeer;

const QString appName = QStringLiteral("Lexmira");
const QString settingsTitle = QStringLiteral("Open settings to enable Lexmira");
const QString gotItTitle = QStringLiteral("Ok, got it");
const QString stepsSpoken =
    QStringLiteral("1. Open settings. 2. Click checkbox to grant permission.");

// One node of the application's accessibility tree, as a screen reader reads it.
struct Node {
    int parent = -1;
    QString role;
    QString name;
    QSet<QString> states;
    QRect extents;
    QStringList actions;
    std::optional<QString> text;

    bool showing() const { return states.contains(QStringLiteral("showing")); }
};

using Tree = std::vector<Node>;

QString runHelper(const QStringList& arguments, int* exitCode)
{
    QProcess helper;
    helper.start(QStringLiteral("/usr/bin/python3"),
                 QStringList{QStringLiteral(LEXMIRA_ATSPI_TREE)} + arguments);
    if (!helper.waitForFinished(20000)) {
        helper.kill();
        helper.waitForFinished();
    }
    *exitCode = helper.exitStatus() == QProcess::NormalExit ? helper.exitCode() : -1;
    return QString::fromUtf8(helper.readAllStandardOutput());
}

// The tree of the application with process id pid; empty while it is not on the bus.
Tree readTree(qint64 pid)
{
    int exitCode = 0;
    const QString out = runHelper({QStringLiteral("dump"), QString::number(pid)}, &exitCode);
    Tree tree;
    if (exitCode != 0)
        return tree;
    const auto json = nlohmann::json::parse(out.toStdString(), nullptr, false);
    if (!json.is_array())
        return tree;
    for (const auto& entry : json) {
        Node node;
        node.parent = entry.value("parent", -1);
        node.role = QString::fromStdString(entry.value("role", ""));
        node.name = QString::fromStdString(entry.value("name", ""));
        for (const auto& state : entry.value("states", nlohmann::json::array()))
            node.states.insert(QString::fromStdString(state.get<std::string>()));
        if (const auto e = entry.find("extents"); e != entry.end() && e->size() == 4)
            node.extents = QRect((*e)[0].get<int>(), (*e)[1].get<int>(), (*e)[2].get<int>(),
                                 (*e)[3].get<int>());
        for (const auto& action : entry.value("actions", nlohmann::json::array()))
            node.actions << QString::fromStdString(action.get<std::string>());
        if (const auto t = entry.find("text"); t != entry.end())
            node.text = QString::fromStdString(t->get<std::string>());
        tree.push_back(std::move(node));
    }
    return tree;
}

const Node* find(const Tree& tree, const QString& role, const QString& name)
{
    const auto found = std::find_if(tree.begin(), tree.end(), [&](const Node& node) {
        return node.role == role && node.name == name;
    });
    return found == tree.end() ? nullptr : &*found;
}

const Node* findShowing(const Tree& tree, const QString& role, const QString& name)
{
    const auto found = std::find_if(tree.begin(), tree.end(), [&](const Node& node) {
        return node.showing() && node.role == role && node.name == name;
    });
    return found == tree.end() ? nullptr : &*found;
}

QStringList showingNames(const Tree& tree, const QString& role)
{
    QStringList names;
    for (const Node& node : tree)
        if (node.showing() && node.role == role)
            names << node.name;
    return names;
}

bool instanceRunning()
{
    return QDBusConnection::sessionBus().interface()->isServiceRegistered(
        QStringLiteral("com.lexmira.companion"));
}

// What the X server shows in rect, in screen coordinates.
QImage screenAt(const QRect& rect)
{
    return QGuiApplication::primaryScreen()
        ->grabWindow(0, rect.x(), rect.y(), rect.width(), rect.height())
        .toImage()
        .convertToFormat(QImage::Format_RGB32);
}

int differingPixels(const QImage& a, const QImage& b)
{
    if (a.size() != b.size())
        return -1;
    int differing = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            differing += a.pixel(x, y) != b.pixel(x, y);
    return differing;
}

// The share of pixels darker than the middle grey.
double darkShare(const QImage& image)
{
    if (image.isNull())
        return -1;
    int dark = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            dark += QColor(image.pixel(x, y)).lightness() < 128;
    return double(dark) / (image.width() * image.height());
}

bool xdotool(const QStringList& arguments, QString* out = nullptr)
{
    QProcess process;
    process.start(QStringLiteral("xdotool"), arguments);
    process.waitForFinished(20000);
    if (out)
        *out = QString::fromUtf8(process.readAllStandardOutput()).trimmed();
    return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

void setDesktopColorScheme(const QString& scheme)
{
    QProcess::execute(QStringLiteral("gsettings"),
                      {QStringLiteral("set"), QStringLiteral("org.gnome.desktop.interface"),
                       QStringLiteral("color-scheme"), scheme});
}

std::size_t callsOf(const DevExtensionPeer& peer, const std::string& method)
{
    std::size_t count = 0;
    for (const auto& call : peer.calls())
        count += call.value("method", "") == method;
    return count;
}

// The real application on the test display, with the accessibility bridge on, beside the
// development peer playing the extension.
class DesktopAccess : public ::testing::Test {
protected:
    DesktopAccess()
    {
        environment = test::childEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        environment.insert(QStringLiteral("DISPLAY"), qEnvironmentVariable("LEXMIRA_TEST_DISPLAY"));
        environment.insert(QStringLiteral("QT_LINUX_ACCESSIBILITY_ALWAYS_ON"), QStringLiteral("1"));
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), config.path());
        environment.insert(QStringLiteral("LEXMIRA_LOG_HOST"), logServer.hostAndPort());
        environment.insert(QStringLiteral("LEXMIRA_EXTRA_CA_FILE"),
                           test::HttpsTestServer::caFile());
    }

    ~DesktopAccess() override
    {
        companion.reset();
        test::waitUntil([] { return !instanceRunning(); });
    }

    void startPeer(const QStringList& options)
    {
        peer = std::make_unique<DevExtensionPeer>(options, DevExtensionPeer::defaultName(),
                                                  environment);
        ASSERT_TRUE(peer->isServing());
    }

    void startCompanion()
    {
        ASSERT_TRUE(test::waitUntil([] { return !instanceRunning(); }));
        companion = std::make_unique<test::ChildProcess>(test::companionBinary(), QStringList{},
                                                         environment);
        ASSERT_TRUE(companion->running());
    }

    qint64 pid() const { return companion->process().processId(); }

    // Waits until the tree holds a showing node of that role and name; the tree of that moment.
    Tree waitForShowing(const QString& role, const QString& name,
                        std::chrono::milliseconds timeout = 30s)
    {
        Tree tree;
        test::waitUntil(
            [&] {
                tree = readTree(pid());
                return findShowing(tree, role, name) != nullptr;
            },
            timeout);
        return tree;
    }

    bool press(const QString& role, const QString& name, const QString& action)
    {
        int exitCode = 0;
        runHelper({QStringLiteral("do"), QString::number(pid()), role, name, action}, &exitCode);
        return exitCode == 0;
    }

    QTemporaryDir config;
    test::HttpsTestServer logServer;
    QProcessEnvironment environment;
    std::unique_ptr<DevExtensionPeer> peer;
    std::unique_ptr<test::ChildProcess> companion;
};

TEST_F(DesktopAccess, ScreenReaderReadsEachPanelOnceWithNamesAndRoles)
{
    startPeer({QStringLiteral("--disabled")});
    startCompanion();
    waitForShowing(QStringLiteral("push button"), settingsTitle);
    // The animation comes with the browser's name; a screen reader names it an animated image.
    Tree tree =
        waitForShowing(QStringLiteral("animation"), QStringLiteral("How to enable Lexmira"));
    ASSERT_TRUE(findShowing(tree, QStringLiteral("push button"), settingsTitle))
        << "the application never showed its tree on the accessibility bus";

    // The window, named after the application.
    EXPECT_EQ(showingNames(tree, QStringLiteral("frame")), QStringList{appName});

    // The steps, once, as one sentence; none of the pieces they are drawn from.
    EXPECT_EQ(showingNames(tree, QStringLiteral("label")), QStringList{stepsSpoken});
    for (const Node& node : tree)
        for (const QString& piece :
             {QStringLiteral("1\n2"), QStringLiteral(".\n."),
              QStringLiteral("\n\nto grant permission "), QStringLiteral("1 2"),
              QStringLiteral(". ."), QStringLiteral("to grant permission")}) {
            EXPECT_NE(node.name, piece) << node.role.toStdString();
            EXPECT_NE(node.text.value_or(QString()), piece) << node.role.toStdString();
        }
    EXPECT_EQ(showingNames(tree, QStringLiteral("image")), QStringList{QStringLiteral("Warning")});
    EXPECT_EQ(showingNames(tree, QStringLiteral("animation")),
              QStringList{QStringLiteral("How to enable Lexmira")});
    const Node* settings = findShowing(tree, QStringLiteral("push button"), settingsTitle);
    EXPECT_TRUE(settings->states.contains(QStringLiteral("enabled")));
    EXPECT_TRUE(settings->states.contains(QStringLiteral("focusable")));
    EXPECT_FALSE(settings->states.contains(QStringLiteral("busy")));
    EXPECT_FALSE(settings->actions.isEmpty());
    EXPECT_EQ(showingNames(tree, QStringLiteral("push button")), QStringList{settingsTitle});

    // The menus and their items, each named.
    EXPECT_EQ(showingNames(tree, QStringLiteral("menu bar")).size(), 1);
    QStringList items;
    for (const Node& node : tree)
        if (node.role == QStringLiteral("menu item"))
            items << node.name;
    for (const QString& item : {QStringLiteral("About Lexmira"), QStringLiteral("Quit Lexmira"),
                                QStringLiteral("Open…"), QStringLiteral("Close"),
                                QStringLiteral("Minimize"), QStringLiteral("Bring All to Front")})
        EXPECT_TRUE(items.contains(item))
            << item.toStdString() << " among " << items.join(u'|').toStdString();
    QStringList menus;
    for (const Node& node : tree)
        if (node.role == QStringLiteral("menu") || node.role == QStringLiteral("menu item"))
            menus << node.name;
    for (const QString& menu : {appName, QStringLiteral("File"), QStringLiteral("Window")})
        EXPECT_TRUE(menus.contains(menu)) << menu.toStdString();

    // The enabled panel, once the extension is.
    ASSERT_TRUE(peer->control({QStringLiteral("enable")}));
    // The tree is read node by node while the application runs: a read that overlaps the switch
    // of panels, or the body text that follows the browser's name, mixes the states before and
    // after. The panel is checked on a read that finds it whole.
    const QStringList images{QStringLiteral("Lexmira"), QStringLiteral("Done")};
    test::waitUntil(
        [&] {
            tree = readTree(pid());
            return findShowing(tree, QStringLiteral("push button"), gotItTitle) &&
                   showingNames(tree, QStringLiteral("label")).size() == 2 &&
                   showingNames(tree, QStringLiteral("image")) == images;
        },
        30s);
    ASSERT_TRUE(findShowing(tree, QStringLiteral("push button"), gotItTitle));
    EXPECT_EQ(showingNames(tree, QStringLiteral("push button")), QStringList{gotItTitle});
    const QStringList labels = showingNames(tree, QStringLiteral("label"));
    ASSERT_EQ(labels.size(), 2) << labels.join(u'|').toStdString();
    EXPECT_EQ(labels[0], QString::fromUtf8("You\u2019re all set!"));
    EXPECT_TRUE(labels[1].startsWith(QString::fromUtf8("If you don\u2019t see Lexmira in your ")))
        << labels[1].toStdString();
    EXPECT_EQ(showingNames(tree, QStringLiteral("image")), images);
}

TEST_F(DesktopAccess, TheSettingsButtonReportsBusyWhileTheSettingsOpen)
{
    startPeer({QStringLiteral("--disabled")});
    ASSERT_TRUE(peer->control({QStringLiteral("reply-delay"), QStringLiteral("4000")}));
    startCompanion();
    Tree tree = waitForShowing(QStringLiteral("push button"), settingsTitle);
    const Node* settings = findShowing(tree, QStringLiteral("push button"), settingsTitle);
    ASSERT_TRUE(settings);
    ASSERT_FALSE(settings->actions.isEmpty());
    ASSERT_TRUE(press(QStringLiteral("push button"), settingsTitle, settings->actions.front()));

    tree = waitForShowing(QStringLiteral("push button"), QStringLiteral("Opening..."), 10s);
    const Node* busy =
        findShowing(tree, QStringLiteral("push button"), QStringLiteral("Opening..."));
    ASSERT_TRUE(busy);
    EXPECT_TRUE(busy->states.contains(QStringLiteral("busy")));
    EXPECT_FALSE(busy->states.contains(QStringLiteral("enabled")));
    EXPECT_FALSE(busy->states.contains(QStringLiteral("sensitive")));

    // Answered: pressable again, and no longer busy.
    tree = waitForShowing(QStringLiteral("push button"), settingsTitle, 20s);
    settings = findShowing(tree, QStringLiteral("push button"), settingsTitle);
    ASSERT_TRUE(settings);
    EXPECT_FALSE(settings->states.contains(QStringLiteral("busy")));
    EXPECT_TRUE(settings->states.contains(QStringLiteral("enabled")));
    EXPECT_EQ(callsOf(*peer, "ShowPreferences"), 1u);
}

TEST_F(DesktopAccess, TabReachesEachButtonShowsAFocusRingAndSpaceOrReturnPressIt)
{
    startPeer({QStringLiteral("--disabled")});
    startCompanion();
    Tree tree = waitForShowing(QStringLiteral("push button"), settingsTitle);
    const Node* settings = findShowing(tree, QStringLiteral("push button"), settingsTitle);
    ASSERT_TRUE(settings);
    const QRect settingsRect = settings->extents;
    ASSERT_FALSE(settingsRect.isEmpty());
    const QImage unfocused = screenAt(settingsRect);

    QString windowId;
    ASSERT_TRUE(test::waitUntil([&] {
        return xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                        QStringLiteral("--pid"), QString::number(pid())},
                       &windowId) &&
               !windowId.isEmpty();
    }));
    windowId = windowId.split(u'\n').first();
    ASSERT_TRUE(xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"), windowId}));
    ASSERT_TRUE(xdotool({QStringLiteral("key"), QStringLiteral("Tab")}));
    tree = waitForShowing(QStringLiteral("push button"), settingsTitle);
    ASSERT_TRUE(test::waitUntil([&] {
        tree = readTree(pid());
        const Node* node = findShowing(tree, QStringLiteral("push button"), settingsTitle);
        return node && node->states.contains(QStringLiteral("focused"));
    }));
    test::spin(300ms); // painted
    EXPECT_GT(differingPixels(unfocused, screenAt(settingsRect)), 100)
        << "the focused button looks like the unfocused one";

    ASSERT_TRUE(xdotool({QStringLiteral("key"), QStringLiteral("space")}));
    ASSERT_TRUE(test::waitUntil([&] { return callsOf(*peer, "ShowPreferences") == 1; }, 10s));

    // The enabled panel's button, reached and pressed the same way.
    ASSERT_TRUE(peer->control({QStringLiteral("enable")}));
    tree = waitForShowing(QStringLiteral("push button"), gotItTitle);
    const Node* gotIt = findShowing(tree, QStringLiteral("push button"), gotItTitle);
    ASSERT_TRUE(gotIt);
    const QRect gotItRect = gotIt->extents;
    test::spin(300ms);
    const QImage gotItUnfocused = screenAt(gotItRect);
    ASSERT_TRUE(xdotool({QStringLiteral("key"), QStringLiteral("Tab")}));
    ASSERT_TRUE(test::waitUntil([&] {
        tree = readTree(pid());
        const Node* node = findShowing(tree, QStringLiteral("push button"), gotItTitle);
        return node && node->states.contains(QStringLiteral("focused"));
    }));
    test::spin(300ms);
    EXPECT_GT(differingPixels(gotItUnfocused, screenAt(gotItRect)), 100);
    ASSERT_TRUE(xdotool({QStringLiteral("key"), QStringLiteral("Return")}));
    EXPECT_TRUE(peer->waitForDispatch("openSafari", 10s));
    // The browser has the user: the application ends.
    EXPECT_TRUE(companion->process().waitForFinished(10000));
}

// Light or dark: the menu bar, the About panel and alerts look like the panel.
class DesktopAppearance : public DesktopAccess, public ::testing::WithParamInterface<bool> {
protected:
    bool dark() const { return GetParam(); }
    ~DesktopAppearance() override { setDesktopColorScheme(QStringLiteral("default")); }

    void expectLooksLikeThePanel(const QRect& rect, const char* what)
    {
        const double share = darkShare(screenAt(rect));
        if (dark())
            EXPECT_GT(share, 0.8) << what;
        else
            EXPECT_LT(share, 0.2) << what;
    }
};

TEST_P(DesktopAppearance, MenuBarAboutPanelAndAlertsFollowThePanel)
{
    setDesktopColorScheme(dark() ? QStringLiteral("prefer-dark") : QStringLiteral("default"));
    startPeer({});
    startCompanion();
    Tree tree = waitForShowing(QStringLiteral("push button"), gotItTitle);
    ASSERT_TRUE(findShowing(tree, QStringLiteral("push button"), gotItTitle));
    const auto panelOf = [](const Tree& t) {
        const auto found = std::find_if(t.begin(), t.end(), [](const Node& node) {
            return node.showing() && node.role == QStringLiteral("panel");
        });
        return found == t.end() ? QRect() : found->extents;
    };
    const QRect panel = panelOf(tree);
    ASSERT_FALSE(panel.isEmpty());
    const QColor wanted = ColorScheme::forAppearance(dark()).panel;
    ASSERT_TRUE(test::waitUntil(
        [&] {
            const QColor shown(
                screenAt(QRect(panel.topLeft() + QPoint(5, 5), QSize(1, 1))).pixel(0, 0));
            return std::abs(shown.red() - wanted.red()) <= 3 &&
                   std::abs(shown.blue() - wanted.blue()) <= 3;
        },
        30s))
        << "the panel never took the appearance";
    test::spin(500ms);

    const auto menuBar = std::find_if(tree.begin(), tree.end(), [](const Node& node) {
        return node.showing() && node.role == QStringLiteral("menu bar");
    });
    ASSERT_NE(menuBar, tree.end());
    expectLooksLikeThePanel(menuBar->extents, "menu bar");

    const Node* aboutItem =
        find(tree, QStringLiteral("menu item"), QStringLiteral("About Lexmira"));
    ASSERT_TRUE(aboutItem);
    ASSERT_FALSE(aboutItem->actions.isEmpty());
    ASSERT_TRUE(press(QStringLiteral("menu item"), QStringLiteral("About Lexmira"),
                      aboutItem->actions.front()));
    tree = waitForShowing(QStringLiteral("dialog"), QStringLiteral("About Lexmira"));
    const Node* about =
        findShowing(tree, QStringLiteral("dialog"), QStringLiteral("About Lexmira"));
    ASSERT_TRUE(about);
    test::spin(500ms);
    expectLooksLikeThePanel(about->extents, "About panel");

    ASSERT_TRUE(
        peer->control({QStringLiteral("fail-next-dispatch"), QStringLiteral("openSafari")}));
    const Node* gotIt = find(tree, QStringLiteral("push button"), gotItTitle);
    ASSERT_TRUE(gotIt);
    ASSERT_FALSE(gotIt->actions.isEmpty());
    ASSERT_TRUE(press(QStringLiteral("push button"), gotItTitle, gotIt->actions.front()));
    Node alert;
    ASSERT_TRUE(test::waitUntil(
        [&] {
            tree = readTree(pid());
            for (const Node& node : tree)
                if (node.showing() && (node.role == QStringLiteral("alert") ||
                                       (node.role == QStringLiteral("dialog") &&
                                        node.name != QStringLiteral("About Lexmira")))) {
                    alert = node;
                    return true;
                }
            return false;
        },
        15s));
    test::spin(500ms);
    expectLooksLikeThePanel(alert.extents, "alert");
    EXPECT_TRUE(findShowing(tree, QStringLiteral("push button"), QStringLiteral("OK")));
}

INSTANTIATE_TEST_SUITE_P(BothAppearances, DesktopAppearance, ::testing::Bool(),
                         [](const auto& info) { return info.param ? "Dark" : "Light"; });

} // namespace

} // namespace lexmira
