// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/BrokerLink.h"

#include <QPointer>
#include <QTimer>

#include <optional>
#include <vector>

namespace lexmira {

// A broker that attaches from the event loop (or fails to, when told), records attach and
// detach, and lets a test send messages as the broker would.
class FakeBrokerLink final : public BrokerLink {
public:
    std::optional<QString> attachError;
    std::vector<Peer> attached;
    int detachCount = 0;

    void attach(const Peer& peer, QObject* context,
                std::function<void(std::optional<QString> error)> completion) override
    {
        attached.push_back(peer);
        QTimer::singleShot(0, context,
                           [this, completion = std::move(completion)] { completion(attachError); });
    }

    void detach() override { ++detachCount; }

    void setDispatchHandler(DispatchHandler handler) override { handler_ = std::move(handler); }

    // Sends a message as the broker; the reply lands in the returned slot once it arrives.
    std::shared_ptr<std::optional<std::optional<QString>>> dispatch(const QString& name,
                                                                    const QString& userInfo)
    {
        auto answer = std::make_shared<std::optional<std::optional<QString>>>();
        handler_(name, userInfo, [answer](std::optional<QString> error) { *answer = error; });
        return answer;
    }

private:
    DispatchHandler handler_;
};

} // namespace lexmira
