// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "support/ChildProcess.h"
#include "support/DevExtensionPeer.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QImage>
#include <QTemporaryDir>

#include <xcb/xcb.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace lexmira {

namespace {

using namespace std::chrono_literals;
using test::DevExtensionPeer;

bool instanceRunning()
{
    return QDBusConnection::sessionBus().interface()->isServiceRegistered(
        QStringLiteral("com.lexmira.companion"));
}

template <typename T>
using XReply = std::unique_ptr<T, decltype(&std::free)>;

// A client of the test session's X server, standing in for what a desktop sees: the stacking
// of the top-level windows, their properties and the startup-notification messages.
class XClient {
public:
    XClient()
        : connection_(xcb_connect(qgetenv("LEXMIRA_TEST_DISPLAY").constData(), nullptr))
    {
        if (xcb_connection_has_error(connection_))
            return;
        root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
        // Startup-notification messages are sent to the root window for this mask.
        const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(connection_, root_, XCB_CW_EVENT_MASK, &mask);
        xcb_flush(connection_);
    }
    ~XClient() { xcb_disconnect(connection_); }
    XClient(const XClient&) = delete;
    XClient& operator=(const XClient&) = delete;

    bool connected() const { return !xcb_connection_has_error(connection_); }

    xcb_atom_t atom(const char* name) const
    {
        const XReply<xcb_intern_atom_reply_t> reply(
            xcb_intern_atom_reply(
                connection_, xcb_intern_atom(connection_, 0, std::strlen(name), name), nullptr),
            &std::free);
        return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    }

    // The root's children, bottom to top.
    std::vector<xcb_window_t> stacking() const
    {
        const XReply<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(connection_, xcb_query_tree(connection_, root_), nullptr),
            &std::free);
        if (!tree)
            return {};
        const xcb_window_t* children = xcb_query_tree_children(tree.get());
        return {children, children + xcb_query_tree_children_length(tree.get())};
    }

    // Up to longs 32-bit units of the property's value.
    QByteArray property(xcb_window_t window, const char* name, std::uint32_t longs = 1024) const
    {
        const XReply<xcb_get_property_reply_t> reply(
            xcb_get_property_reply(connection_,
                                   xcb_get_property(connection_, 0, window, atom(name),
                                                    XCB_GET_PROPERTY_TYPE_ANY, 0, longs),
                                   nullptr),
            &std::free);
        if (!reply)
            return {};
        return QByteArray(static_cast<const char*>(xcb_get_property_value(reply.get())),
                          xcb_get_property_value_length(reply.get()));
    }

    bool viewable(xcb_window_t window) const
    {
        const XReply<xcb_get_window_attributes_reply_t> attributes(
            xcb_get_window_attributes_reply(
                connection_, xcb_get_window_attributes(connection_, window), nullptr),
            &std::free);
        return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
    }

    // The mapped top-level window of the process pid, if it has one.
    std::optional<xcb_window_t> windowOf(qint64 pid) const
    {
        for (const xcb_window_t window : stacking()) {
            const QByteArray value = property(window, "_NET_WM_PID");
            if (value.size() == 4 && viewable(window) &&
                *reinterpret_cast<const std::uint32_t*>(value.constData()) == pid)
                return window;
        }
        return std::nullopt;
    }

    // An opaque window over the whole screen, mapped on top of everything.
    xcb_window_t cover()
    {
        const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
        const xcb_window_t window = xcb_generate_id(connection_);
        const std::uint32_t values[] = {screen->black_pixel};
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, root_, 0, 0,
                          screen->width_in_pixels, screen->height_in_pixels, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, XCB_CW_BACK_PIXEL,
                          values);
        xcb_map_window(connection_, window);
        xcb_flush(connection_);
        return window;
    }

    // Puts window on top of its siblings again.
    void raise(xcb_window_t window)
    {
        const std::uint32_t values[] = {XCB_STACK_MODE_ABOVE};
        xcb_configure_window(connection_, window, XCB_CONFIG_WINDOW_STACK_MODE, values);
        xcb_flush(connection_);
    }

    // Whether lower is below upper in the stacking order.
    bool below(xcb_window_t lower, xcb_window_t upper) const
    {
        const auto order = stacking();
        const auto lowerAt = std::find(order.begin(), order.end(), lower);
        const auto upperAt = std::find(order.begin(), order.end(), upper);
        return lowerAt != order.end() && upperAt != order.end() && lowerAt < upperAt;
    }

    // Reads the startup-notification messages that arrived, whole, in order.
    QList<QByteArray> startupMessages()
    {
        const xcb_atom_t begin = atom("_NET_STARTUP_INFO_BEGIN");
        const xcb_atom_t more = atom("_NET_STARTUP_INFO");
        while (xcb_generic_event_t* event = xcb_poll_for_event(connection_)) {
            if ((event->response_type & 0x7f) == XCB_CLIENT_MESSAGE) {
                const auto* message = reinterpret_cast<xcb_client_message_event_t*>(event);
                if (message->type == begin)
                    partial_.clear();
                if (message->type == begin || message->type == more) {
                    const char* data = reinterpret_cast<const char*>(message->data.data8);
                    const auto length = qstrnlen(data, 20);
                    partial_.append(data, qsizetype(length));
                    if (length < 20)
                        messages_.append(std::exchange(partial_, {}));
                }
            }
            std::free(event);
        }
        return messages_;
    }

private:
    xcb_connection_t* connection_;
    xcb_window_t root_ = XCB_WINDOW_NONE;
    QByteArray partial_;
    QList<QByteArray> messages_;
};

// The application on the test session's X display, with the development peer enabled, and a
// window of another program covering it. No window manager runs there, so the stacking the X
// server reports is the application's own doing.
class RaiseWhenAsked : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(x.connected());
        ASSERT_TRUE(test::waitUntil([] { return !instanceRunning(); }, 20s));
        environment = test::childEnvironment();
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), config.path());
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        environment.insert(QStringLiteral("DISPLAY"), qEnvironmentVariable("LEXMIRA_TEST_DISPLAY"));
        environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
        environment.remove(QStringLiteral("DESKTOP_STARTUP_ID"));
        environment.remove(QStringLiteral("XDG_ACTIVATION_TOKEN"));
        peer = std::make_unique<DevExtensionPeer>(QStringList{}, DevExtensionPeer::defaultName(),
                                                  environment);
        ASSERT_TRUE(peer->isServing());
        companion = std::make_unique<test::ChildProcess>(test::companionBinary(), QStringList{},
                                                         environment);
        ASSERT_TRUE(test::waitUntil(instanceRunning, 20s));
        ASSERT_TRUE(test::waitUntil(
            [&] { return (window = x.windowOf(companion->process().processId())).has_value(); },
            20s));
        // The application may still be bringing its new window forward as it starts; the other
        // program's window goes back on top until the application's has stayed beneath it.
        covering = x.cover();
        ASSERT_TRUE(test::waitUntil([&] {
            if (!x.below(*window, covering)) {
                x.raise(covering);
                return false;
            }
            test::spin(300ms);
            return x.below(*window, covering);
        }));
    }

    void TearDown() override
    {
        companion.reset();
        EXPECT_TRUE(test::waitUntil([] { return !instanceRunning(); }, 20s));
    }

    // A launch as a desktop's launcher makes it, with a startup id; exits once handed over.
    int launchFromLauncher(const QStringList& arguments, const QString& startupId)
    {
        auto launchEnvironment = environment;
        launchEnvironment.insert(QStringLiteral("DESKTOP_STARTUP_ID"), startupId);
        QProcess launch;
        launch.setProcessEnvironment(launchEnvironment);
        launch.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        launch.start(test::companionBinary(), arguments);
        if (!launch.waitForFinished(30000))
            return -1;
        return launch.exitStatus() == QProcess::NormalExit ? launch.exitCode() : -1;
    }

    XClient x;
    QTemporaryDir config;
    QProcessEnvironment environment;
    std::unique_ptr<DevExtensionPeer> peer;
    std::unique_ptr<test::ChildProcess> companion;
    std::optional<xcb_window_t> window;
    xcb_window_t covering = XCB_WINDOW_NONE;
};

TEST_F(RaiseWhenAsked, ASecondLaunchRaisesTheCoveredWindowAndEndsItsStartupFeedback)
{
    const QString startupId = QStringLiteral("test-launcher-3117-lexmira-0_TIME4242");
    ASSERT_EQ(launchFromLauncher({}, startupId), 0);

    ASSERT_TRUE(test::waitUntil([&] { return x.below(covering, *window); }, 20s))
        << "the window is raised above the one covering it";
    EXPECT_EQ(x.property(*window, "_NET_STARTUP_ID").toStdString(), startupId.toStdString());
    ASSERT_TRUE(test::waitUntil([&] { return !x.startupMessages().isEmpty(); }, 10s));
    EXPECT_EQ(x.startupMessages(), QList<QByteArray>{"remove: ID=" + startupId.toUtf8()});
    EXPECT_TRUE(companion->running());
}

TEST_F(RaiseWhenAsked, ASecondLaunchWithAUrlRaisesTheWindowAndHandsTheUrlOver)
{
    const QString startupId = QStringLiteral("test-launcher-3118-lexmira-1_TIME4343");
    ASSERT_EQ(launchFromLauncher({QStringLiteral("lexmira.extension://"
                                                 "oauth?code=R1&code_challenge=R2")},
                                 startupId),
              0);

    ASSERT_TRUE(peer->waitForDispatch("oauthExchange", 20s));
    ASSERT_TRUE(test::waitUntil([&] { return x.below(covering, *window); }, 20s));
    EXPECT_EQ(x.property(*window, "_NET_STARTUP_ID").toStdString(), startupId.toStdString());
    ASSERT_TRUE(test::waitUntil([&] { return !x.startupMessages().isEmpty(); }, 10s));
    EXPECT_EQ(x.startupMessages(), QList<QByteArray>{"remove: ID=" + startupId.toUtf8()});
}

TEST_F(RaiseWhenAsked, AStartupIdThatNeedsQuotingIsQuotedInTheRemoveMessage)
{
    // Launchers' ids carry no quotes; another process on the bus may send anything printable.
    const QString startupId = QStringLiteral(R"(odd"id\with-quote_TIME7)");
    ASSERT_EQ(launchFromLauncher({}, startupId), 0);
    ASSERT_TRUE(test::waitUntil([&] { return !x.startupMessages().isEmpty(); }, 10s));
    EXPECT_EQ(x.startupMessages(), QList<QByteArray>{R"(remove: ID="odd\"id\\with-quote_TIME7")"});
    EXPECT_TRUE(test::waitUntil([&] { return x.below(covering, *window); }, 20s));
}

TEST_F(RaiseWhenAsked, TheWindowCarriesTheApplicationsIconAsDrawnAtEachSize)
{
    // _NET_WM_ICON: width, height, then that many ARGB pixels, for each size.
    const QByteArray value = x.property(*window, "_NET_WM_ICON", 1 << 20);
    std::vector<std::uint32_t> data(size_t(value.size()) / 4);
    std::memcpy(data.data(), value.constData(), data.size() * 4);
    std::map<int, QImage> icons;
    for (size_t at = 0; at + 2 <= data.size();) {
        const auto width = int(data[at]);
        const auto height = int(data[at + 1]);
        ASSERT_LE(at + 2 + size_t(width) * size_t(height), data.size());
        QImage image(width, height, QImage::Format_ARGB32);
        std::memcpy(image.bits(), &data[at + 2], size_t(width) * size_t(height) * 4);
        icons[width] = image;
        at += 2 + size_t(width) * size_t(height);
    }
    std::vector<int> sizes;
    for (const auto& [size, image] : icons)
        sizes.push_back(size);
    EXPECT_EQ(sizes, (std::vector<int>{16, 24, 32, 48, 64, 128}));
    // Each is the drawing of that size the bundle holds, not another size scaled.
    for (const int size : {16, 32, 128}) {
        const QImage drawn =
            QImage(QStringLiteral(LEXMIRA_SOURCE_BUNDLE_DIR "/AppIcon-%1.png").arg(size))
                .convertToFormat(QImage::Format_ARGB32);
        ASSERT_FALSE(drawn.isNull());
        // The window system's copy may round a channel by one.
        const auto near = [](QRgb a, QRgb b) {
            return std::abs(qRed(a) - qRed(b)) <= 2 && std::abs(qGreen(a) - qGreen(b)) <= 2 &&
                   std::abs(qBlue(a) - qBlue(b)) <= 2 && std::abs(qAlpha(a) - qAlpha(b)) <= 2;
        };
        int differing = 0;
        for (int y = 0; y < size; ++y)
            for (int x = 0; x < size; ++x)
                differing += !near(icons[size].pixel(x, y), drawn.pixel(x, y));
        EXPECT_EQ(differing, 0) << "at " << size << " pixels";
    }
}

} // namespace

} // namespace lexmira
