// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/AlertPresenter.h"

#include <cstddef>
#include <deque>
#include <memory>
#include <optional>

namespace lexmira {

// Shows alerts one after another through another presenter, never one inside another. An alert
// asked for while one is on screen (from inside that alert's modal loop) waits, and is shown
// once the one before it is dismissed; an alert equal to the one on screen or to one waiting is
// not queued again. Main thread only.
class AlertQueue final : public AlertPresenter {
public:
    // The most alerts that wait behind the one on screen; further different ones are dropped.
    static constexpr std::size_t maxWaitingAlerts = 8;

    explicit AlertQueue(std::unique_ptr<AlertPresenter> presenter);
    ~AlertQueue() override;

    // When nothing is on screen: shows alert, then every alert queued meanwhile, and returns the
    // answer to alert. Otherwise returns -1 at once, having queued alert or found it queued.
    int runModal(const Alert& alert) override;

    // Whether an alert is on screen, and how many wait behind it.
    bool showing() const { return showing_.has_value(); }
    std::size_t waiting() const { return waiting_.size(); }

private:
    bool isQueued(const Alert& alert) const;

    std::unique_ptr<AlertPresenter> presenter_;
    std::optional<Alert> showing_;
    std::deque<Alert> waiting_;
};

} // namespace lexmira
