// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "extensionhost/BrowserRegistry.h"
#include "platform/BrokerBus.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <optional>
#include <vector>

namespace lexmira {

// The extension's native side as the companion sees it: enabled while a browser connection has
// said hello, messages relayed to the most recent connection, the settings page opened in the
// browser it was installed for. Says idle once no connection and no call has been seen for the
// idle time. Main thread only.
class Broker final : public QObject, public BrokerBus::Handler {
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds defaultIdleTimeout{30'000};

    // registry must outlive the broker. The bus is set once it is published.
    Broker(const BrowserRegistry& registry, std::chrono::milliseconds idleTimeout,
           std::chrono::milliseconds replyTimeout, QObject* parent = nullptr);

    void setBus(BrokerBus* bus) { bus_ = bus; }

    bool enabled() const override;
    QString browserName() const override;
    void dispatchMessage(const QString& name, const QString& userInfo,
                         Completion completion) override;
    std::optional<ExtensionError> showPreferences() override;
    void hostAttached(const HostPeer& peer) override;
    void hostDetached(const QString& connection) override;
    std::vector<HostPeer> hosts() const override { return hosts_; }

    static const QString notConnectedError;
    static const QString noReplyError;
    static const QString failedError;

Q_SIGNALS:
    void idle();

private:
    // The browser of the newest connection, of the last one seen, or installed last.
    std::optional<BrowserRegistry::Browser> currentBrowser() const;
    void touch() const;

    const BrowserRegistry& registry_;
    std::chrono::milliseconds replyTimeout_;
    BrokerBus* bus_ = nullptr;
    // Oldest first; the last one receives messages.
    std::vector<HostPeer> hosts_;
    std::optional<HostPeer> lastHost_;
    int dispatchesInFlight_ = 0;
    mutable QTimer idleTimer_;
};

} // namespace lexmira
