// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "util/AlertQueue.h"

#include "util/UtilLog.h"

#include <algorithm>
#include <utility>

namespace lexmira {

AlertQueue::AlertQueue(std::unique_ptr<AlertPresenter> presenter)
    : presenter_(std::move(presenter))
{
}

AlertQueue::~AlertQueue() = default;

bool AlertQueue::isQueued(const Alert& alert) const
{
    return showing_ == alert ||
           std::find(waiting_.begin(), waiting_.end(), alert) != waiting_.end();
}

int AlertQueue::runModal(const Alert& alert)
{
    if (showing_) {
        if (isQueued(alert))
            return -1;
        if (waiting_.size() >= maxWaitingAlerts) {
            qCWarning(lcUtil) << "Too many alerts waiting; dropped:" << alert.messageText;
            return -1;
        }
        waiting_.push_back(alert);
        return -1;
    }
    showing_ = alert;
    const int answer = presenter_->runModal(alert);
    while (!waiting_.empty()) {
        showing_ = std::move(waiting_.front());
        waiting_.pop_front();
        presenter_->runModal(*showing_);
    }
    showing_.reset();
    return answer;
}

} // namespace lexmira
