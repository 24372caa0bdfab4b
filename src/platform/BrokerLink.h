// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/BrokerBus.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace lexmira {

// A native-messaging host's line to the broker on the session bus (which the bus starts when it
// does not run). Main thread only.
class BrokerLink {
public:
    struct Peer {
        QString browser;     // the browser's key: "chromium", "firefox", ...
        QString browserName; // its display name
        QString extensionId;
    };
    // error none: delivered; else the extension's error text.
    using Reply = std::function<void(std::optional<QString> error)>;
    // A message the companion sent to this connection's extension: answer it through reply,
    // exactly once.
    using DispatchHandler =
        std::function<void(const QString& name, const QString& userInfo, Reply reply)>;

    virtual ~BrokerLink() = default;

    // Counts this connection as an enabled extension until detach or the end of the process.
    // completion runs on context's thread (the main thread, where context lives), never inside
    // the call and not at all once context is gone, with none, or why the broker could not be
    // reached. When the broker goes away and comes back, the link attaches again by itself.
    virtual void attach(const Peer& peer, QObject* context,
                        std::function<void(std::optional<QString> error)> completion) = 0;
    virtual void detach() = 0;
    // Messages arrive only from the broker, on the main thread.
    virtual void setDispatchHandler(DispatchHandler handler) = 0;

    static std::unique_ptr<BrokerLink> create(const QString& serviceName);

    // The connections the broker serves now, asked without starting it; none when it does not
    // run or cannot be asked. Blocks for at most a few seconds: for command-line use only.
    static std::optional<std::vector<HostPeer>> connectedHosts(const QString& serviceName);
};

} // namespace lexmira
