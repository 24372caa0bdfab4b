// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/WindowSystem.h"

#include "platform/PlatformLog.h"

#include <QGuiApplication>
#include <QWidget>
#include <QWindow>

#include <xcb/xcb.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>

namespace lexmira {

namespace {

bool onWayland()
{
    return QGuiApplication::platformName().startsWith(QStringLiteral("wayland"));
}

// Null unless the application draws on an X server.
xcb_connection_t* x11Connection()
{
    auto* application = qGuiApp;
    if (!application)
        return nullptr;
    auto* x11 = application->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

xcb_atom_t internAtom(xcb_connection_t* connection, const char* name)
{
    const auto cookie = xcb_intern_atom(connection, 0, std::uint16_t(std::strlen(name)), name);
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(connection, cookie, nullptr), &std::free);
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

xcb_window_t rootWindow(xcb_connection_t* connection)
{
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    return screen ? screen->root : xcb_window_t(XCB_WINDOW_NONE);
}

// The X server time of the user's action that started the launch, which the launcher writes at
// the end of the startup id ("…_TIME<time>").
std::optional<std::uint32_t> launchTime(const QString& startupId)
{
    const auto marker = startupId.lastIndexOf(QStringLiteral("_TIME"));
    if (marker < 0)
        return std::nullopt;
    bool ok = false;
    const auto time = startupId.mid(marker + 5).toUInt(&ok);
    if (!ok || time == 0)
        return std::nullopt;
    return time;
}

// A value of a startup-notification message: quoted, with quotes and backslashes escaped, when
// it holds anything that would end it.
QByteArray startupMessageValue(const QString& value)
{
    const QByteArray bytes = value.toUtf8();
    if (!std::any_of(bytes.begin(), bytes.end(),
                     [](char c) { return c == ' ' || c == '"' || c == '\\'; }))
        return bytes;
    QByteArray quoted = "\"";
    for (const char c : bytes) {
        if (c == '"' || c == '\\')
            quoted += '\\';
        quoted += c;
    }
    return quoted + '"';
}

// A startup-notification message goes to the root window in pieces of 20 bytes: the first
// marked as the beginning, the last ending with the message's terminating zero byte.
void sendStartupMessage(xcb_connection_t* connection, const QByteArray& message)
{
    const xcb_window_t root = rootWindow(connection);
    const xcb_atom_t begin = internAtom(connection, "_NET_STARTUP_INFO_BEGIN");
    const xcb_atom_t more = internAtom(connection, "_NET_STARTUP_INFO");
    if (root == XCB_WINDOW_NONE || begin == XCB_ATOM_NONE || more == XCB_ATOM_NONE)
        return;
    const qsizetype length = message.size() + 1;
    for (qsizetype sent = 0; sent < length; sent += 20) {
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 8;
        event.window = root;
        event.type = sent == 0 ? begin : more;
        std::memcpy(event.data.data8, message.constData() + sent,
                    std::size_t(std::min<qsizetype>(20, length - sent)));
        xcb_send_event(connection, 0, root, XCB_EVENT_MASK_PROPERTY_CHANGE,
                       reinterpret_cast<const char*>(&event));
    }
}

// The window manager decides on activation by the time of the user's action: the launch's,
// which is newer than any input this process has seen.
void requestActivationAt(xcb_connection_t* connection, xcb_window_t window, std::uint32_t time)
{
    const xcb_atom_t activeWindow = internAtom(connection, "_NET_ACTIVE_WINDOW");
    if (activeWindow == XCB_ATOM_NONE)
        return;
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = activeWindow;
    event.data.data32[0] = 1; // from an application
    event.data.data32[1] = time;
    xcb_send_event(connection, 0, rootWindow(connection),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&event));
}

void bringToFrontOnX11(xcb_connection_t* connection, QWidget* window,
                       const LaunchActivation& launch)
{
    const auto windowId = xcb_window_t(window->winId());
    if (!launch.startupId.isEmpty()) {
        // Names the launch on the window, so the window manager ties its startup sequence (and
        // that sequence's time) to this window.
        const QByteArray id = launch.startupId.toUtf8();
        xcb_change_property(
            connection, XCB_PROP_MODE_REPLACE, windowId, internAtom(connection, "_NET_STARTUP_ID"),
            internAtom(connection, "UTF8_STRING"), 8, std::uint32_t(id.size()), id.constData());
    }
    window->raise();
    window->activateWindow();
    if (const auto time = launchTime(launch.startupId))
        requestActivationAt(connection, windowId, *time);
    xcb_flush(connection);
}

void bringToFrontOnWayland(QWidget* window, const LaunchActivation& launch)
{
    QWindow* handle = window->windowHandle();
    if (!handle)
        return;
    // The Wayland platform plugin activates with the token it finds in XDG_ACTIVATION_TOKEN and
    // takes it out of the environment when the compositor offers activation. Where it does not,
    // the token goes here, so no process started later inherits it.
    if (!launch.activationToken.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", launch.activationToken.toUtf8());
    handle->requestActivate();
    qunsetenv("XDG_ACTIVATION_TOKEN");
}

} // namespace

bool windowSystemPlacesWindows()
{
    return !onWayland();
}

void bringWindowToFront(QWidget* window, const LaunchActivation& launch)
{
    if (!window || !window->isVisible()) {
        endLaunchFeedback(launch);
        return;
    }
    qCInfo(lcActivation).noquote()
        << "bringing" << window->windowTitle() << "to the front"
        << "with activation token"
        << (launch.activationToken.isEmpty() ? QStringLiteral("(none)") : launch.activationToken)
        << "and startup id"
        << (launch.startupId.isEmpty() ? QStringLiteral("(none)") : launch.startupId);
    if (onWayland()) {
        bringToFrontOnWayland(window, launch);
    } else if (auto* connection = x11Connection()) {
        bringToFrontOnX11(connection, window, launch);
    } else {
        window->raise();
        window->activateWindow();
    }
    endLaunchFeedback(launch);
}

void endLaunchFeedback(const LaunchActivation& launch)
{
    // On Wayland the launcher's feedback ends with the token's use (or expiry); on X11 it waits
    // for a "remove" message naming the launch.
    if (launch.startupId.isEmpty())
        return;
    if (auto* connection = x11Connection()) {
        sendStartupMessage(connection, "remove: ID=" + startupMessageValue(launch.startupId));
        xcb_flush(connection);
    }
}

} // namespace lexmira
