// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <nlohmann/json.hpp>

#include <QObject>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace lexmira {

// Why a call to the extension failed, as its side (or the bus) described it.
struct ExtensionError {
    QString name;                 // e.g. "org.freedesktop.DBus.Error.ServiceUnknown"
    QString localizedDescription; // the error message, shown to the user and logged

    bool operator==(const ExtensionError&) const = default;
};

// The browser extension, reached by its bundle identifier: its state, its settings page and the
// messages it understands. Every call returns at once and calls its completion exactly once,
// later, never from inside the call. The completion runs on context's thread, queued, and not at
// all once context is gone (context must be alive at the call, which may be made from any thread
// whose event loop runs). A null context leaves the thread to the bridge: the completion then
// runs wherever the answer arrives, which callers must not assume is the main thread. A call that
// gets no answer within the bridge's time-out completes with an error. A bridge destroyed with
// calls in flight still completes them.
class ExtensionBridge {
public:
    using Completion = std::function<void(std::optional<ExtensionError> error)>;
    // enabled is none when the extension answered nothing usable (error none) or failed (error
    // set).
    using StateCompletion =
        std::function<void(std::optional<bool> enabled, std::optional<ExtensionError> error)>;
    // name is empty when the extension's side reports none, fails, or takes too long.
    using BrowserNameCompletion = std::function<void(QString name)>;

    virtual ~ExtensionBridge() = default;

    // userInfo none sends the message with no user info at all (not an empty object).
    virtual void dispatchMessage(const QString& name, const QString& extensionIdentifier,
                                 const std::optional<nlohmann::ordered_json>& userInfo,
                                 QObject* context, Completion completion) = 0;
    virtual void getState(const QString& extensionIdentifier, QObject* context,
                          StateCompletion completion) = 0;
    virtual void showPreferences(const QString& extensionIdentifier, QObject* context,
                                 Completion completion) = 0;
    // The display name of the browser the extension runs in ("Chromium", "Firefox", ...). Asked
    // before a text that names the browser is shown, so it answers within browserNameTimeout
    // at the latest, whatever the bridge's own time-out.
    virtual void getBrowserName(const QString& extensionIdentifier, QObject* context,
                                BrowserNameCompletion completion) = 0;

    static constexpr std::chrono::milliseconds defaultTimeout{5'000};
    static constexpr std::chrono::milliseconds browserNameTimeout{1'000};

    // The extension's native side on the session bus.
    static std::unique_ptr<ExtensionBridge>
    create(std::chrono::milliseconds timeout = defaultTimeout);
};

} // namespace lexmira
