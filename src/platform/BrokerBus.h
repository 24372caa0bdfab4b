// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/ExtensionBridge.h"

#include <QObject>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace lexmira {

// One native-messaging host attached to the broker: a browser connection that said hello.
struct HostPeer {
    QString connection;  // the host's unique bus name
    QString browser;     // the browser's key: "chromium", "firefox", ...
    QString browserName; // its display name: "Chromium", "Firefox", ...
    QString extensionId; // the extension's identifier in that browser
    qint64 attachedAtMs = 0;

    bool operator==(const HostPeer&) const = default;
};

// The broker's place on the session bus: it owns the extension's name and serves the
// companion's interface (com.lexmira.Extension1) and the hosts' interface
// (com.lexmira.ExtensionHost1) on one object, and reaches each attached host. Main thread only.
class BrokerBus {
public:
    // What the bus asks of the broker. Called on the main thread.
    class Handler {
    public:
        using Completion = std::function<void(std::optional<ExtensionError> error)>;

        virtual ~Handler() = default;
        virtual bool enabled() const = 0;
        virtual QString browserName() const = 0;
        // Answers through completion, exactly once, later or at once.
        virtual void dispatchMessage(const QString& name, const QString& userInfo,
                                     Completion completion) = 0;
        virtual std::optional<ExtensionError> showPreferences() = 0;
        // peer.attachedAtMs is left for the handler to set.
        virtual void hostAttached(const HostPeer& peer) = 0;
        // The host detached, or its process left the bus.
        virtual void hostDetached(const QString& connection) = 0;
        virtual std::vector<HostPeer> hosts() const = 0;
    };

    virtual ~BrokerBus() = default;

    // Relays a message to an attached host; completion runs on context's thread (the main
    // thread: context lives there, with the call's own timer and watcher) once the host answered
    // or the time-out passed, never inside the call, and not at all once context is gone.
    virtual void dispatchToHost(const QString& connection, const QString& name,
                                const QString& userInfo, std::chrono::milliseconds timeout,
                                QObject* context, Handler::Completion completion) = 0;

    // Claims serviceName on the session bus for handler, which must outlive the result. None,
    // with the reason in error, when there is no bus or the name is taken.
    static std::unique_ptr<BrokerBus> publish(const QString& serviceName, Handler& handler,
                                              QString& error);
};

} // namespace lexmira
